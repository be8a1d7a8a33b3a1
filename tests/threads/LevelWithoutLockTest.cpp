// GetCorrectionLevel takes no lock, so that a host may show it at any time.
#include "support/RecordingDelegate.h"
#include "threads/ThreadHost.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace ThreadHost;

namespace {

class LevelWithoutLock : public testing::TestWithParam<bool> {
protected:
    static TObject* Make(bool store) { return store ? new TObject({"A"}) : new TObject; }

    const std::unique_ptr<TObject> object{Make(GetParam())};
    QX_IBackgroundCorrection& Object() { return *object->Get(); }
};

TEST_P(LevelWithoutLock, GivesOneOfTheLevelsThatWereSet)
{
    ASSERT_EQ(AddFlat(Object(), "A,1", 100), 0u);
    ASSERT_EQ(Object().SetActiveCorrection("A,1"), 0u);
    ASSERT_EQ(Object().SetCorrectionLevel(25), 0u);
    RunTogether(4, [this](int number) {
        for (int i = 0; i < 1000; ++i) {
            if (number < 2) {
                Object().SetCorrectionLevel(number == 0 ? 25 : 75);
            } else {
                const int level = Object().GetCorrectionLevel();
                EXPECT_TRUE(level == 25 || level == 75) << level;
            }
        }
    });
}

TEST_P(LevelWithoutLock, DoesNotWaitForWhoHoldsTheLock)
{
    ASSERT_EQ(Object().SetCorrectionLevel(50), 0u);
    TRecordingDelegate delegate;
    int level = 0;
    delegate.action = [&] { // the lock is held here; whoever waited for it would wait for ever
        std::thread([&] { level = Object().GetCorrectionLevel(); }).join();
    };
    unsigned short pixel = 1;
    Object().ApplyCorrection(&pixel, 1, nullptr, 0, &delegate, true, true, false);
    EXPECT_EQ(delegate.calls.size(), 1u);
    EXPECT_EQ(level, 50);
}

// The level that came with a group, while groups come and go.
TEST_P(LevelWithoutLock, MayBeReadWhileEverythingElseHappens)
{
    std::atomic<bool> done{false};
    std::thread reader([this, &done] {
        while (!done.load()) {
            const int level = Object().GetCorrectionLevel();
            EXPECT_TRUE(level >= -1 && level <= 100) << level;
        }
    });
    TMixer(Object(), 1, {"no-such-folder/none"}).Do(500);
    done.store(true);
    reader.join();
}

std::string NameOf(const testing::TestParamInfo<bool>& info)
{
    return info.param ? "Store" : "Processor";
}

INSTANTIATE_TEST_SUITE_P(Objects, LevelWithoutLock, testing::Bool(), NameOf);

} // namespace
