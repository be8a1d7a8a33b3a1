// The processor when memory runs out.
#include "data/EntryBuilding.h"
#include "support/AllocationFaults.h"
#include "support/RandomImages.h"
#include "support/RecordingDelegate.h"
#include "support/TestObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <exception>
#include <functional>
#include <future>
#include <set>
#include <string>
#include <vector>

namespace {

using testing::Each;
using testing::ElementsAre;

constexpr char kNoBackground[] = "Error allocating correction memory.";
constexpr TFaultRepeat kRepeats[] = {TFaultRepeat::kOnce, TFaultRepeat::kForGood};

TEST(ProcessorMemory, AddCorrectionQuotesTheStepThatFailedAndChangesNothing)
{
    TRandomImages random(90);
    const auto frames = random.Stack(2, 19, 23);
    const unsigned short* pointers[] = {frames[0].pixels.data(), frames[1].pixels.data()};
    for (const TFaultRepeat repeat : kRepeats) {
        std::set<std::string> texts;
        for (std::size_t failAt = 1;; ++failAt) {
            ASSERT_LT(failAt, 100u) << "no end";
            const TTestObject object;
            TAllocationFaults faults(failAt, repeat);
            const unsigned int code = object->AddCorrection("new", pointers, 2, 19, 23, 1.0f, 1.0f);
            faults.Disarm();
            if (!faults.Fired()) {
                EXPECT_EQ(object.Outcome(code), (TOutcome{0, ""}));
                break;
            }
            EXPECT_EQ(code, 513u);
            texts.insert(object.Message());
            EXPECT_EQ(object->GetNumberOfCorrections(), 0u);
            EXPECT_FALSE(object.Processor().IsModified());
            EXPECT_EQ(object.AddFrames("new", frames), 0u) << "still usable";
            object->SetActiveCorrection("new");
            EXPECT_EQ(object.Background(), Literal::Correction(frames).pixels);
        }
        const std::string before = "Could not add background correction - '";
        EXPECT_EQ(texts, (std::set<std::string>{before + kConstructionMemoryText + "'",
                                                before + kCreationMemoryText + "'", before + kAddingMemoryText + "'"}));
    }
}

TEST(ProcessorMemory, AddEntryCopyQuotesTheStepThatFailed)
{
    const TBackgroundCorrectionEntry entry = RowEntry("new", {1, 2, 3});
    std::set<std::string> texts;
    for (std::size_t failAt = 1;; ++failAt) {
        ASSERT_LT(failAt, 100u) << "no end";
        const TTestObject object;
        TAllocationFaults faults(failAt);
        const unsigned int code = object.Processor().AddEntryCopy(entry);
        faults.Disarm();
        if (!faults.Fired()) {
            EXPECT_EQ(code, 0u);
            break;
        }
        EXPECT_EQ(code, 1024u);
        texts.insert(object.Message());
        EXPECT_EQ(object->GetNumberOfCorrections(), 0u);
        EXPECT_FALSE(object.Processor().IsModified());
    }
    const std::string before = "Couldn't create new background entry - '";
    EXPECT_EQ(texts, (std::set<std::string>{before + kConstructionMemoryText + "'", before + kAddingMemoryText + "'"}));
}

struct TSetting {
    const char* name;
    std::function<unsigned int(QX_KRLSDK::QX_IBackgroundCorrection&)> call;
};

const TSetting kSettings[] = {
    {"SetActiveCorrection", [](auto& object) { return object.SetActiveCorrection("k"); }},
    {"SetRegion", [](auto& object) { return object.SetRegion(0, 0, 2, 1); }},
    {"SetExposureAndIntensity", [](auto& object) { return object.SetExposureAndIntensity(2.0f, 1.0f); }},
    {"SetCorrectionLevel", [](auto& object) { return object.SetCorrectionLevel(50); }},
};

// Makes a setting while there is no memory at all.
TOutcome SetWithoutMemory(const TTestObject& object, const TSetting& setting)
{
    object->DeleteCorrection(nullptr); // another text
    TAllocationFaults faults(1, TFaultRepeat::kForGood);
    const unsigned int code = setting.call(*object.Get());
    faults.Disarm();
    EXPECT_TRUE(faults.Fired()) << setting.name;
    return object.Outcome(code);
}

// An active correction whose background does not exist, because there was no memory for a region of another size, nor
// for `setting` after it.
void LoseBackground(const TTestObject& object, const TSetting& setting)
{
    object.Store("k", {3, 2, {10, 20, 30, 40, 50, 60}});
    object->SetActiveCorrection("k");
    const TSetting otherSize = {"SetRegion", [](auto& processor) { return processor.SetRegion(0, 0, 1, 2); }};
    EXPECT_EQ(SetWithoutMemory(object, otherSize), (TOutcome{0, kNoBackground}));
    EXPECT_THAT(object.Region(), ElementsAre(0, 0, 1, 2)) << "the setting is stored";
    EXPECT_EQ(SetWithoutMemory(object, setting), (TOutcome{0, kNoBackground})) << setting.name;
}

TEST(ProcessorMemory, AnActivationSucceedsWithoutMemoryForTheBackground)
{
    const TTestObject object;
    object.Store("k", {3, 2, {10, 20, 30, 40, 50, 60}});
    EXPECT_EQ(SetWithoutMemory(object, kSettings[0]), (TOutcome{0, kNoBackground}));
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "k");
    EXPECT_THAT(object.Region(), ElementsAre(0, 0, 3, 2));
}

TEST(ProcessorMemory, WithoutABackgroundItsStatisticsLeaveTheOutputsAlone)
{
    for (const TSetting& setting : kSettings) {
        const TTestObject object;
        LoseBackground(object, setting);
        EXPECT_STREQ(object->GetActiveCorrectionKey(), "k");
        unsigned short statistics[3] = {9, 9, 9};
        EXPECT_EQ(object->GetScaledCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]), 0u);
        EXPECT_THAT(statistics, Each(9));
        EXPECT_EQ(object->GetCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]), 0u);
        EXPECT_THAT(statistics, ElementsAre(10, 60, 35)) << "the stored image is there";
    }
}

TEST(ProcessorMemory, ApplyWithoutABackgroundFailsAndTouchesNothing)
{
    for (const TSetting& setting : kSettings) {
        const TTestObject object;
        LoseBackground(object, setting);
        const std::vector<int> region = object.Region();
        const int length = region[2] * region[3];
        std::vector<unsigned short> image(6, 100);
        std::vector<unsigned short> output(6, 4711);
        TRecordingDelegate delegate;
        for (unsigned short* const into : {static_cast<unsigned short*>(nullptr), output.data()}) {
            for (unsigned int flags = 0; flags < 4; ++flags) {
                object->DeleteCorrection(nullptr); // another text
                EXPECT_EQ(object.Outcome(object->ApplyCorrection(image.data(), length, into, length, &delegate,
                                                                 (flags & 1u) != 0, (flags & 2u) != 0, false)),
                          (TOutcome{1024, kNoBackground}));
            }
        }
        EXPECT_THAT(image, Each(100));
        EXPECT_THAT(output, Each(4711));
        EXPECT_THAT(delegate.calls, testing::IsEmpty());
        // The arguments are looked at first.
        EXPECT_EQ(object->ApplyCorrection(nullptr, length, nullptr, 0, nullptr, false, false, false), 513u);
        EXPECT_EQ(
            object->ApplyCorrection(image.data(), length, output.data(), length + 1, nullptr, false, false, false),
            516u);
        EXPECT_EQ(object->ApplyCorrection(image.data(), length + 1, nullptr, 0, nullptr, false, false, false), 514u);
    }
}

TEST(ProcessorMemory, TheBackgroundComesBackWithTheNextSetting)
{
    const std::vector<std::uint16_t> expected[] = {{10, 20, 30, 40, 50, 60}, {10, 20}, {20, 80}, {5, 20}};
    for (std::size_t i = 0; i < 4; ++i) {
        const TTestObject object;
        LoseBackground(object, {"SetRegion", [](auto& processor) { return processor.SetRegion(0, 0, 1, 2); }});
        EXPECT_EQ(kSettings[i].call(*object.Get()), 0u);
        EXPECT_EQ(object.Background(), expected[i]) << kSettings[i].name;
    }
}

TEST(ProcessorMemory, WithNothingActiveALostBackgroundDoesNotMatter)
{
    const TTestObject object;
    LoseBackground(object, kSettings[0]);
    object->SetActiveCorrection(nullptr);
    std::vector<unsigned short> image(6, 100);
    EXPECT_EQ(object->ApplyCorrection(image.data(), 6, nullptr, 0, nullptr, false, false, false), 0u);
}

TEST(ProcessorMemory, ABackgroundBeyond32BitsIsAnAllocationFailure)
{
    const std::uint32_t sizes[][2] = {{46341, 46341}, {65536, 65536}, {65536, 32768}, {2147483647, 2147483647}};
    for (const auto& size : sizes) {
        const TTestObject object;
        object.StoreDescription("k", size[0], size[1]);
        EXPECT_EQ(object.Outcome(object->SetActiveCorrection("k")), (TOutcome{0, kNoBackground}));
        EXPECT_STREQ(object->GetActiveCorrectionKey(), "k");
        EXPECT_THAT(object.Region(), ElementsAre(0, 0, static_cast<int>(size[0]), static_cast<int>(size[1])));
        unsigned short pixel = 1;
        EXPECT_EQ(object->ApplyCorrection(&pixel, 0, nullptr, 0, nullptr, false, false, false), 514u);
        EXPECT_EQ(object->SetRegion(5, 5, 1, 1), 0u) << "a small region of it is fine";
        EXPECT_THAT(object.Background(), ElementsAre(0));
    }
}

// Counts the allocations of a call.
template <typename TCall> std::size_t AllocationsOf(TCall call)
{
    TAllocationFaults faults(0);
    call();
    faults.Disarm();
    return faults.Count();
}

TEST(ProcessorMemory, ApplyAllocatesNothing)
{
    const TTestObject object;
    object.Store("k", FlatImage(64, 64, 5));
    std::vector<unsigned short> image(4096, 100);
    std::vector<unsigned short> output(4096, 100);
    for (const bool isActive : {true, false}) {
        object->SetActiveCorrection("k");
        if (!isActive) {
            object->SetActiveCorrection(nullptr);
        }
        EXPECT_EQ(AllocationsOf(
                      [&] { object->ApplyCorrection(image.data(), 4096, nullptr, 0, nullptr, false, false, false); }),
                  0u);
        EXPECT_EQ(AllocationsOf([&] {
                      object->ApplyCorrection(image.data(), 4096, output.data(), 4096, nullptr, false, false, false);
                  }),
                  0u);
    }
}

TEST(ProcessorMemory, RefusingNeedsNoMemory)
{
    const TTestObject object;
    object.Store("k", {1, 1, {1}});
    const std::string longKey(600, 'x');
    EXPECT_EQ(AllocationsOf([&] {
                  object->SetActiveCorrection(longKey.c_str());
                  object->DeleteCorrection(longKey.c_str());
                  object->SetRegion(-1, 0, 0, 0);
                  object->ApplyCorrection(nullptr, 0, nullptr, 0, nullptr, false, false, false);
                  object->AddCorrection("k", nullptr, 0, 0, 0, 0.0f, 0.0f);
              }),
              0u);
}

TEST(ProcessorMemory, AnImportThatRunsOutThrowsKeepsWhatItHasAndGivesBothLocksBack)
{
    const TTestObject source;
    source.Store("first", {3, 1, {1, 2, 3}});
    source.Store("second", {3, 1, {4, 5, 6}});
    std::set<std::string> texts;
    std::set<unsigned int> counts;
    for (std::size_t failAt = 1;; ++failAt) {
        ASSERT_LT(failAt, 100u) << "no end";
        const TTestObject target;
        std::string text(600, '\0'); // room that needs no allocation later
        TAllocationFaults faults(failAt);
        unsigned int code = 4711;
        try {
            code = target->ImportCorrections(source.Get(), false);
        } catch (const std::exception& caught) {
            faults.Disarm();
            text = caught.what();
        }
        faults.Disarm();
        if (!faults.Fired()) {
            EXPECT_EQ(code, 0u);
            break;
        }
        EXPECT_EQ(code, 4711u) << "no exception";
        texts.insert(text);
        counts.insert(target->GetNumberOfCorrections());
        EXPECT_FALSE(target.Processor().IsModified());
        EXPECT_EQ(target.Message(), "");
        for (const TTestObject* const object : {&source, &target}) {
            std::future<void> other = std::async(std::launch::async, [object] { (*object)->GetLastErrorMessage(); });
            ASSERT_EQ(other.wait_for(std::chrono::seconds(20)), std::future_status::ready) << "a lock is still held";
        }
    }
    EXPECT_EQ(texts, (std::set<std::string>{kConstructionMemoryText, "Could not allocate memory during import."}));
    EXPECT_EQ(counts, (std::set<unsigned int>{0, 1}));
}

} // namespace
