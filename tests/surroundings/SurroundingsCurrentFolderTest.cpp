// A host that changes its current folder: a relative path means what it means at the moment of the call, and a store
// keeps the base name as it was given.
#include "support/TemporaryFolder.h"
#include "surroundings/SurroundingsWorkload.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;
using namespace Surroundings;

namespace {

class SurroundingsCurrentFolder : public testing::Test {
protected:
    SurroundingsCurrentFolder() { Enter(first); }
    ~SurroundingsCurrentFolder() override { fs::current_path(before); }

    static void Enter(const TTemporaryFolder& folder) { fs::current_path(folder.Path()); }

    const fs::path before = fs::current_path();
    const TTemporaryFolder first;
    const TTemporaryFolder second;
};

TEST_F(SurroundingsCurrentFolder, EachCallTakesThePathFromWhereTheHostIs)
{
    const TObject processor = MakeProcessor();
    ASSERT_EQ(AddFlat(*processor, "dark", 1), 0u);
    EXPECT_EQ(processor->SaveFile("file"), 0u);
    EXPECT_TRUE(fs::exists(first.File("file")));
    Enter(second);
    EXPECT_EQ(processor->LoadFile("file"), 769u);
    EXPECT_EQ(processor->GetNumberOfCorrections(), 1u);
    EXPECT_EQ(processor->SaveFile("file"), 0u);
    EXPECT_TRUE(fs::exists(second.File("file")));
    Enter(first);
    EXPECT_EQ(processor->LoadFile("file"), 0u);
}

TEST_F(SurroundingsCurrentFolder, AStoreWithARelativeNameGoesWhereTheHostGoes)
{
    const TObject store = MakeStore({"A"});
    ASSERT_EQ(AddFlat(*store, "A,1", 100), 0u);
    ASSERT_EQ(AddFlat(*store, "A,2", 200), 0u);
    ASSERT_EQ(store->SaveFile("s"), 0u);
    EXPECT_EQ(store->SetActiveCorrection("A,1"), 0u);

    Enter(second); // there the other group has no file, and is empty
    EXPECT_EQ(FlatBackground(*store), 100);
    EXPECT_EQ(store->SetActiveCorrection("A,2"), 513u);
    EXPECT_EQ(store->GetNumberOfCorrections(), 2u);
    EXPECT_EQ(AddFlat(*store, "A,2", 222), 0u);
    EXPECT_EQ(store->SetActiveCorrection("A,1"), 513u); // and what was added went to a file there
    EXPECT_TRUE(fs::exists(second.File("s_A_2")));

    Enter(first);
    EXPECT_EQ(store->SetActiveCorrection("A,2"), 0u);
    EXPECT_EQ(FlatBackground(*store), 200);
    EXPECT_EQ(store->SetActiveCorrection("A,1"), 0u);
    EXPECT_EQ(FlatBackground(*store), 100);
}

TEST_F(SurroundingsCurrentFolder, AStoreWithAnAbsoluteNameStaysWhereItIs)
{
    const TObject store = MakeStore({"A"});
    ASSERT_EQ(AddFlat(*store, "A,1", 100), 0u);
    ASSERT_EQ(AddFlat(*store, "A,2", 200), 0u);
    ASSERT_EQ(store->SaveFile(first.File("s").c_str()), 0u);
    Enter(second);
    EXPECT_EQ(store->SetActiveCorrection("A,1"), 0u);
    EXPECT_EQ(FlatBackground(*store), 100);
    EXPECT_EQ(AddFlat(*store, "A,1,more", 150), 0u);
    EXPECT_EQ(store->SetActiveCorrection("A,2"), 0u);
    EXPECT_EQ(FlatBackground(*store), 200);
    EXPECT_EQ(store->SetActiveCorrection("A,1,more"), 0u);
    EXPECT_TRUE(fs::is_empty(second.Path()));
}

// A folder that the host is in may have been removed under it.
TEST_F(SurroundingsCurrentFolder, ThatIsGoneHoldsNothingAndTakesNothing)
{
#ifdef _WIN32
    GTEST_SKIP() << "this system does not let a current folder go";
#endif
    const fs::path gone = fs::path(first.Path()) / "gone";
    fs::create_directory(gone);
    fs::current_path(gone);
    fs::remove(gone);
    const TObject processor = MakeProcessor();
    EXPECT_EQ(processor->SaveFile("file"), 769u);
    EXPECT_EQ(processor->LoadFile("file"), 769u);
    const TObject store = MakeStore({"A"});
    EXPECT_EQ(store->LoadFile("s"), 771u);
    ASSERT_EQ(AddFlat(*store, "A,1", 100), 0u);
    EXPECT_EQ(store->SaveFile("s"), 769u);
    EXPECT_EQ(store->GetNumberOfCorrections(), 1u);
}

} // namespace
