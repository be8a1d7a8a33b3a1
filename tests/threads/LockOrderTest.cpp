// Locks nest in one order: a store, its processor, an import source. Imports go one way here; threads that import in
// opposite directions at the same time may wait for each other for ever, which hosts must not let happen.
#include "support/TemporaryFolder.h"
#include "threads/ThreadHost.h"

#include <gtest/gtest.h>

using namespace ThreadHost;

namespace {

TEST(LockOrder, AProcessorImportsWhileOthersUseItAndItsSource)
{
    const TTemporaryFolder folder;
    const TObject target;
    const TObject source;
    RunTogether(4, [&](int number) {
        const bool usesTarget = number % 2 == 0;
        TMixer mixer(usesTarget ? *target.Get() : *source.Get(), static_cast<unsigned int>(number),
                     {folder.File(std::to_string(number))});
        if (usesTarget) {
            mixer.sources = {source.Get()};
        }
        mixer.Do(800);
    });
}

TEST(LockOrder, AChainOfImportsHasNoCircle)
{
    const TObject first;
    const TObject second;
    const TObject third;
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(AddFlat(*third.Get(), "k" + std::to_string(i), 100), 0u);
    }
    RunTogether(4, [&](int number) {
        for (int i = 0; i < 150; ++i) {
            const TObject& target = number % 2 == 0 ? first : second;
            const TObject& source = number % 2 == 0 ? second : third;
            EXPECT_EQ(target->ImportCorrections(source.Get(), i % 2 == 0), 0u);
        }
    });
    EXPECT_EQ(second->GetNumberOfCorrections(), 5u);
    EXPECT_EQ(first->ImportCorrections(second.Get(), false), 0u);
    EXPECT_EQ(first->GetNumberOfCorrections(), 5u);
}

TEST(LockOrder, AProcessorMayImportItselfWhileOthersUseIt)
{
    const TObject processor;
    RunTogether(3, [&](int number) {
        TMixer mixer(*processor.Get(), static_cast<unsigned int>(number), {"no-such-folder/none"});
        mixer.sources = {processor.Get()};
        mixer.Do(500);
    });
}

TEST(LockOrder, AStoreImportsFromStoresAndProcessorsWhileOthersUseThem)
{
    const TTemporaryFolder folder;
    const TObject target({"A", "B"});
    const TObject store({"A", "B"});
    const TObject processor;
    RunTogether(4, [&](int number) {
        const TObject& used = number < 2 ? target : number == 2 ? store : processor;
        TMixer mixer(*used.Get(), static_cast<unsigned int>(number),
                     {folder.File("s" + std::to_string(number)), folder.File("t" + std::to_string(number))});
        if (number < 2) {
            mixer.sources = {store.Get(), processor.Get(), target.Get()};
        } else if (number == 2) {
            mixer.sources = {processor.Get()};
        }
        mixer.Do(200);
    });
}

} // namespace
