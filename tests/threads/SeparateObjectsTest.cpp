// Different objects are independent: what they share must not be felt.
#include "support/TemporaryFolder.h"
#include "threads/ThreadHost.h"

#include "kernels/Dispatch.h"

#include <gtest/gtest.h>

using namespace ThreadHost;

namespace {

TEST(SeparateObjects, MayBeUsedAtTheSameTime)
{
    const TTemporaryFolder folder;
    RunTogether(kThreads, [&](int number) {
        const TObject processor;
        const TObject store({"A", "B"});
        const std::string own = std::to_string(number);
        TMixer withProcessor(*processor.Get(), static_cast<unsigned int>(number), {folder.File("p" + own)});
        TMixer withStore(*store.Get(), static_cast<unsigned int>(number),
                         {folder.File("s" + own), folder.File("t" + own)});
        withProcessor.sources = {processor.Get(), store.Get()};
        withStore.sources = {processor.Get()};
        for (int i = 0; i < 40; ++i) {
            withProcessor.Do(15);
            withStore.Do(5);
        }
    });
}

TEST(SeparateObjects, MayBeMadeAndDestroyedAtTheSameTime)
{
    RunTogether(kThreads, [](int) {
        for (int i = 0; i < 200; ++i) {
            const TObject processor;
            const TObject store({"A"});
            EXPECT_EQ(AddFlat(*processor.Get(), "dark", 1), 0u);
            EXPECT_EQ(AddFlat(*store.Get(), "A,1", 1), 0u);
        }
    });
}

// The kernels for the processor at hand are chosen at the first call; that may be in several threads at once.
TEST(SeparateObjects, ChooseTheSameKernelsAtTheSameTime)
{
    for (int round = 0; round < 20; ++round) {
        Kernels::chosenTable.store(nullptr);
        std::vector<const Kernels::TKernelTable*> tables(kThreads, nullptr);
        RunTogether(kThreads, [&tables](int number) {
            const TObject processor;
            EXPECT_EQ(AddFlat(*processor.Get(), "dark", 100), 0u);
            EXPECT_EQ(processor->SetActiveCorrection("dark"), 0u);
            EXPECT_EQ(ApplyToFlat(*processor.Get(), 1000, 0), 0u);
            tables[static_cast<std::size_t>(number)] = Kernels::chosenTable.load();
        });
        EXPECT_NE(tables[0], nullptr);
        EXPECT_EQ(tables, std::vector<const Kernels::TKernelTable*>(kThreads, tables[0]));
    }
}

// Each thread leaves texts in its own object and reads them there.
TEST(SeparateObjects, KeepTheirTextsApart)
{
    RunTogether(kThreads, [](int number) {
        const TObject processor;
        const std::string key = "nobody" + std::to_string(number);
        for (int i = 0; i < 300; ++i) {
            EXPECT_EQ(processor->SetActiveCorrection(key.c_str()), 513u);
            EXPECT_EQ(processor->GetLastErrorMessage(), "Background correction key not found - '" + key + "'");
        }
    });
}

} // namespace
