#include "support/RandomImages.h"
#include "support/RecordingDelegate.h"
#include "support/TestObject.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace {

using VelmorUtility::TAutoVelmorCriticalSection;
using TCall = std::function<void(TBackgroundCorrectionProcessorUINT16&)>;

struct TNamedCall {
    const char* name;
    TCall call;
};

void LoadGrouped(TBackgroundCorrectionProcessorUINT16& object, bool headerOnly)
{
    std::vector<std::string> names;
    std::uint32_t version = 0;
    if (headerOnly) {
        object.LoadGroupedFileHeaderOnly(TTestObject::kMissingFile, names, version);
    } else {
        object.LoadGroupedFileFull(TTestObject::kMissingFile, names, version);
    }
}

const TNamedCall kCallsThatTakeTheLock[] = {
    {"AddCorrection", [](auto& object) { object.AddCorrection(nullptr, nullptr, 0, 0, 0, 0.0f, 0.0f); }},
    {"SetActiveCorrection", [](auto& object) { object.SetActiveCorrection(nullptr); }},
    {"GetActiveCorrectionKey", [](auto& object) { object.GetActiveCorrectionKey(); }},
    {"GetCorrectionKey", [](auto& object) { object.GetCorrectionKey(0); }},
    {"GetNumberOfCorrections", [](auto& object) { object.GetNumberOfCorrections(); }},
    {"ClearCorrections", [](auto& object) { object.ClearCorrections(); }},
    {"DeleteCorrection", [](auto& object) { object.DeleteCorrection(nullptr); }},
    {"SetCorrectionLevel", [](auto& object) { object.SetCorrectionLevel(50); }},
    {"SetExposureAndIntensity", [](auto& object) { object.SetExposureAndIntensity(1.0f, 1.0f); }},
    {"GetExposureAndIntensity", [](auto& object) { object.GetExposureAndIntensity(nullptr, nullptr); }},
    {"GetReferenceExposureAndIntensity",
     [](auto& object) { object.GetReferenceExposureAndIntensity(nullptr, nullptr); }},
    {"GetCorrectionStatistics", [](auto& object) { object.GetCorrectionStatistics(nullptr, nullptr, nullptr); }},
    {"GetScaledCorrectionStatistics",
     [](auto& object) { object.GetScaledCorrectionStatistics(nullptr, nullptr, nullptr); }},
    {"ApplyCorrection",
     [](auto& object) { object.ApplyCorrection(nullptr, 0, nullptr, 0, nullptr, false, false, false); }},
    {"SetRegion", [](auto& object) { object.SetRegion(0, 0, 1, 1); }},
    {"GetRegion", [](auto& object) { object.GetRegion(nullptr, nullptr, nullptr, nullptr); }},
    {"ImportCorrections", [](auto& object) { object.ImportCorrections(nullptr, false); }},
    {"LoadFileHeaderOnly", [](auto& object) { object.LoadFileHeaderOnly(TTestObject::kMissingFile); }},
    {"LoadFile", [](auto& object) { object.LoadFile(TTestObject::kMissingFile); }},
    {"SaveFile", [](auto& object) { object.SaveFile(TTestObject::kMissingFile); }},
    {"GetLastErrorMessage", [](auto& object) { object.GetLastErrorMessage(); }},
    // What only the store calls.
    {"GetEntryAt", [](auto& object) { object.GetEntryAt(0); }},
    {"FindEntrySpelled", [](auto& object) { object.FindEntrySpelled("k"); }},
    {"AddEntryCopy", [](auto& object) { object.AddEntryCopy(TBackgroundCorrectionEntry()); }},
    {"SaveGroupedFile", [](auto& object) { object.SaveGroupedFile(TTestObject::kMissingFile, {}); }},
    {"SaveGroupedFileOf", [](auto& object) { object.SaveGroupedFileOf(TTestObject::kMissingFile, {}, {}); }},
    {"LoadGroupedFileHeaderOnly", [](auto& object) { LoadGrouped(object, true); }},
    {"LoadGroupedFileFull", [](auto& object) { LoadGrouped(object, false); }},
};

std::future<void> Start(const TCall& call, TBackgroundCorrectionProcessorUINT16& processor)
{
    return std::async(std::launch::async, [&call, &processor] { call(processor); });
}

bool IsBlocked(const std::future<void>& running)
{
    return running.wait_for(std::chrono::milliseconds(30)) == std::future_status::timeout;
}

TEST(Locking, EveryOperationWaitsForTheObjectsLock)
{
    for (const TNamedCall& named : kCallsThatTakeTheLock) {
        const TTestObject object;
        std::future<void> running;
        {
            const TAutoVelmorCriticalSection guard(object.Processor().Lock());
            running = Start(named.call, object.Processor());
            EXPECT_TRUE(IsBlocked(running)) << named.name;
        }
        running.get();
    }
}

TEST(Locking, EveryOperationGivesTheLockBack)
{
    for (const TNamedCall& named : kCallsThatTakeTheLock) {
        const TTestObject object;
        named.call(object.Processor());
        const TCall take = [](auto& processor) { const TAutoVelmorCriticalSection guard(processor.Lock()); };
        std::future<void> running = Start(take, object.Processor());
        ASSERT_EQ(running.wait_for(std::chrono::seconds(20)), std::future_status::ready) << named.name;
    }
}

TEST(Locking, TheOwnerOfTheLockMayCallEverything)
{
    for (const TNamedCall& named : kCallsThatTakeTheLock) {
        const TTestObject object;
        const TAutoVelmorCriticalSection guard(object.Processor().Lock());
        named.call(object.Processor());
    }
}

TEST(Locking, ReadingTheLevelTakesNoLock)
{
    const TTestObject object;
    object->SetCorrectionLevel(50);
    const TAutoVelmorCriticalSection guard(object.Processor().Lock());
    std::future<int> level = std::async(std::launch::async, [&object] { return object->GetCorrectionLevel(); });
    ASSERT_EQ(level.wait_for(std::chrono::seconds(20)), std::future_status::ready);
    EXPECT_EQ(level.get(), 50);
}

TEST(Locking, IsHeldWhileADelegateWorks)
{
    const TTestObject object;
    TRecordingDelegate delegate;
    const TCall read = [](auto& processor) { processor.GetLastErrorMessage(); };
    std::future<void> running;
    bool isBlocked = false;
    delegate.action = [&] {
        running = Start(read, object.Processor());
        isBlocked = IsBlocked(running);
    };
    unsigned short pixel = 1;
    EXPECT_EQ(object->ApplyCorrection(&pixel, 1, nullptr, 0, &delegate, true, true, false), 0u);
    running.get();
    EXPECT_TRUE(isBlocked);
}

TEST(Locking, AnImportHoldsItsOwnLockAndWaitsForTheSources)
{
    const TTestObject source;
    source.Store("k", {1, 1, {1}});
    const TTestObject target;
    const TCall import = [&source](auto& processor) { processor.ImportCorrections(source.Get(), false); };
    const TCall read = [](auto& processor) { processor.GetLastErrorMessage(); };
    std::future<void> importing;
    std::future<void> reading;
    {
        const TAutoVelmorCriticalSection guard(source.Processor().Lock());
        importing = Start(import, target.Processor());
        EXPECT_TRUE(IsBlocked(importing));
        reading = Start(read, target.Processor());
        EXPECT_TRUE(IsBlocked(reading));
    }
    importing.get();
    reading.get();
    EXPECT_EQ(target->GetNumberOfCorrections(), 1u);
}

TEST(Locking, ManyThreadsMayUseOneObject)
{
    const TTestObject object;
    const Literal::TImage background = FlatImage(16, 16, 100);
    object.Store("k", background);
    object->SetActiveCorrection("k");
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (int& errors : wrong) {
        threads.emplace_back([&object, &errors] {
            for (int round = 0; round < 200; ++round) {
                object->SetCorrectionLevel(round % 2 == 0 ? 100 : 0);
                std::vector<unsigned short> image(256, 1000);
                object->ApplyCorrection(image.data(), 256, nullptr, 0, nullptr, false, false, false);
                for (const unsigned short pixel : image) {
                    // All of it corrected with one and the same background.
                    errors += pixel == image[0] && (pixel == 900 || pixel == 1000) ? 0 : 1;
                }
                const int level = object->GetCorrectionLevel();
                errors += level == 0 || level == 100 ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

} // namespace
