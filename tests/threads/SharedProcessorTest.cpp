// One live processor and many threads.
#include "support/TemporaryFolder.h"
#include "threads/ThreadHost.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>

using namespace ThreadHost;

namespace {

TEST(SharedProcessor, TakesEveryOperationFromEveryThread)
{
    const TTemporaryFolder folder;
    const TObject processor;
    RunTogether(kThreads, [&](int number) {
        // Threads that write one file at the same time would spoil it, which is the host's affair.
        TMixer mixer(*processor.Get(), static_cast<unsigned int>(number),
                     {folder.File("own" + std::to_string(number)), folder.File("none")});
        mixer.Do(1500);
    });
    std::set<std::string> keys;
    for (unsigned int i = 0; i < processor->GetNumberOfCorrections(); ++i) {
        EXPECT_TRUE(keys.insert(processor->GetCorrectionKey(i)).second);
    }
    processor->ClearCorrections();
    EXPECT_EQ(AddFlat(*processor.Get(), "dark", 7), 0u);
    EXPECT_EQ(processor->SetActiveCorrection("dark"), 0u);
}

TEST(SharedProcessor, KeepsEveryCorrectionThatWasAdded)
{
    const TObject processor;
    RunTogether(kThreads, [&](int number) {
        for (int i = 0; i < 50; ++i) {
            EXPECT_EQ(AddFlat(*processor.Get(), std::to_string(number) + "/" + std::to_string(i), 1), 0u);
        }
    });
    EXPECT_EQ(processor->GetNumberOfCorrections(), 50u * kThreads);
}

TEST(SharedProcessor, GivesAKeyToOneThreadOnly)
{
    const TObject processor;
    std::vector<int> added(kThreads, 0);
    RunTogether(kThreads, [&](int number) {
        for (int i = 0; i < 50; ++i) {
            added[static_cast<std::size_t>(number)] +=
                AddFlat(*processor.Get(), "key" + std::to_string(i), 1) == 0 ? 1 : 0;
        }
    });
    EXPECT_EQ(processor->GetNumberOfCorrections(), 50u);
    EXPECT_EQ(added[0] + added[1] + added[2] + added[3], 50);
}

// A thread's pixels are corrected with the settings of one moment: values and results go together.
TEST(SharedProcessor, ScalesAndSubtractsInOnePiece)
{
    const TObject processor;
    ASSERT_EQ(AddFlat(*processor.Get(), "low", 100), 0u);
    ASSERT_EQ(AddFlat(*processor.Get(), "high", 400), 0u);
    RunTogether(kThreads, [&](int number) {
        for (int i = 0; i < 400; ++i) {
            if (number == 0) {
                EXPECT_EQ(processor->SetActiveCorrection(i % 2 == 0 ? "low" : "high"), 0u);
            } else if (number == 1) {
                EXPECT_EQ(processor->SetCorrectionLevel(i % 2 == 0 ? 50 : 100), 0u);
            } else {
                EXPECT_EQ(processor->SetExposureAndIntensity(1.0f, 100.0f), 0u);
                const unsigned int code = ApplyToFlat(*processor.Get(), 1000, static_cast<unsigned int>(i % 3));
                EXPECT_TRUE(code == 0 || code == 514) << code; // 514: nothing has been active yet
            }
        }
    });
}

// Texts are read by the thread that caused them, while nobody else fails: that is all that is promised, and enough for
// a host that calls one object from one thread at a time.
TEST(SharedProcessor, HandsItsTextFromThreadToThread)
{
    const TObject processor;
    std::string text;
    RunTogether(1, [&](int) { EXPECT_EQ(processor->SetActiveCorrection("nobody"), 513u); });
    RunTogether(1, [&](int) { text = processor->GetLastErrorMessage(); });
    EXPECT_EQ(text, "Background correction key not found - 'nobody'");
}

} // namespace
