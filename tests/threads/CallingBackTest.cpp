// A host's delegate may call the object that called it, on the same thread: the lock is recursive.
#include "support/RecordingDelegate.h"
#include "support/TemporaryFolder.h"
#include "threads/ThreadHost.h"

#include <gtest/gtest.h>

using namespace ThreadHost;

namespace {

TEST(CallingBack, ADelegateMayUseAProcessorInEveryWay)
{
    const TTemporaryFolder folder;
    const TObject processor;
    const TObject source;
    ASSERT_EQ(AddFlat(*source.Get(), "imported", 100), 0u);
    RunTogether(3, [&](int number) {
        TMixer mixer(*processor.Get(), static_cast<unsigned int>(number), {folder.File(std::to_string(number))});
        mixer.sources = {source.Get()};
        TRecordingDelegate delegate;
        delegate.result = 4711;
        delegate.action = [&mixer] { mixer.Do(10); };
        for (int i = 0; i < 60; ++i) {
            unsigned short image[kPixels] = {};
            AddFlat(*processor.Get(), "dark", 100);
            const unsigned int code =
                processor->ApplyCorrection(image, kPixels, nullptr, 0, &delegate, true, i % 2 == 0, false);
            EXPECT_TRUE(code == 4711 || code == 0 || code == 514 || code == 770 || code == 1024) << code;
            mixer.Do(3);
        }
    });
}

TEST(CallingBack, ADelegateMayUseAStoreInEveryWay)
{
    const TTemporaryFolder folder;
    const TObject store({"A", "B"});
    RunTogether(3, [&](int number) {
        TMixer mixer(*store.Get(), static_cast<unsigned int>(number), {folder.File("s"), folder.File("t")});
        TRecordingDelegate delegate;
        delegate.action = [&mixer] { mixer.Do(5); };
        for (int i = 0; i < 30; ++i) {
            unsigned short image[kPixels] = {};
            store->ApplyCorrection(image, kPixels, nullptr, 0, &delegate, true, i % 2 == 0, false);
            mixer.Do(3);
        }
    });
}

// The processor of a group once went away under the call that was being made on it.
TEST(CallingBack, ADelegateMayUnloadTheGroupThatIsBeingCorrected)
{
    const TTemporaryFolder folder;
    for (const bool switches : {false, true}) {
        const TObject store({"A"});
        ASSERT_EQ(AddFlat(*store.Get(), "A,1", 100), 0u);
        ASSERT_EQ(AddFlat(*store.Get(), "A,2", 200), 0u);
        ASSERT_EQ(store->SaveFile(folder.File("s").c_str()), 0u);
        ASSERT_EQ(store->SetActiveCorrection("A,1"), 0u);
        TRecordingDelegate delegate;
        delegate.result = 4711;
        delegate.action = [&] {
            EXPECT_EQ(switches ? store->SetActiveCorrection("A,2") : store->ClearCorrections(), 0u);
        };
        unsigned short image[kPixels] = {};
        EXPECT_EQ(store->ApplyCorrection(image, kPixels, nullptr, 0, &delegate, true, false, false), 4711u);
        EXPECT_EQ(delegate.calls.size(), 1u);
        const char* const active = store->GetActiveCorrectionKey();
        EXPECT_STREQ(active, switches ? "A,2" : nullptr);
    }
}

} // namespace
