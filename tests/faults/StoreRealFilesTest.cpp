// The offline store on disks that are full or read-only, with folders and empty files in the place of its own. The same
// for the live processor is in file/PosixFilesTest.cpp and file/FileFailuresTest.cpp.
#include "faults/FileFaults.h"
#include "faults/Snapshot.h"
#include "faults/Worlds.h"

#include "offline/StoreSupport.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace {

class StoreRealFiles : public testing::Test {
protected:
    StoreRealFiles()
    {
        Worlds::FillStoreFolder();
        descriptors = Snapshots::OpenDescriptors();
    }
    ~StoreRealFiles() override
    {
        EXPECT_EQ(TFileFaults::OpenStreams(), 0u);
        EXPECT_EQ(Snapshots::OpenDescriptors(), descriptors);
    }

    static void AddTwoGroups(const TTestStore& store)
    {
        ASSERT_EQ(store.Add("A,7,B,7", 70), 0u);
        ASSERT_EQ(store.Add("A,8,B,8", 80), 0u);
    }

    const TStoreFolder folder;
    TTestStore store;

private:
    std::size_t descriptors = 0;
};

TEST_F(StoreRealFiles, AFullDeviceFailsASaveAndLosesNothing)
{
    if (!fs::exists("/dev/full")) {
        GTEST_SKIP() << "this system has no device that is always full";
    }
    AddTwoGroups(store);
    fs::create_symlink("/dev/full", "full_A_8_B_8");
    fs::remove("full_A_7_B_7");
    // What is listed under the target's base and is no calibration file stops the save before anything is written.
    EXPECT_EQ(store.Save("full"), 769u);
    EXPECT_EQ(store.SortedKeys(), (std::vector<std::string>{"A,7,B,7", "A,8,B,8"}));
    EXPECT_EQ(store.Save("elsewhere"), 0u);
    // A group whose file leads to a full device: the write is refused, and the group stays loaded.
    ASSERT_EQ(store.Add("A,8,B,8,more", 81), 0u);
    fs::remove("elsewhere_A_8_B_8");
    fs::create_symlink("/dev/full", "elsewhere_A_8_B_8");
    EXPECT_EQ(store.Save("elsewhere"), 4294967295u);
    EXPECT_EQ(store.Select("A,8,B,8,more"), 0u);
    EXPECT_EQ(store.Corrected(), 919);
    fs::remove("elsewhere_A_8_B_8");
    EXPECT_EQ(store.Save("elsewhere"), 0u) << "with room again";
}

TEST_F(StoreRealFiles, AFolderThatCannotBeWrittenFailsTheSave)
{
    AddTwoGroups(store);
    fs::create_directory("locked");
    fs::permissions("locked", fs::perms::owner_read | fs::perms::owner_exec);
    std::error_code ignored;
    if (fs::create_directory("locked/writable", ignored)) {
        GTEST_SKIP() << "the superuser may write anywhere";
    }
    const std::string path = folder.BackslashPath("locked") + "\\st";
    EXPECT_EQ(store.Save(path), 769u);
    EXPECT_EQ(store.SortedKeys(), (std::vector<std::string>{"A,7,B,7", "A,8,B,8"}));
    fs::permissions("locked", fs::perms::owner_all);
    EXPECT_EQ(store.Save(path), 0u);
}

TEST_F(StoreRealFiles, AFolderInThePlaceOfAGroupFileIsAGroupThatCannotBeRead)
{
    folder.Remove("st_A_2_B_2");
    folder.MakeFolder("st_A_2_B_2");
    EXPECT_EQ(store.Load("st"), 769u);
    EXPECT_EQ(store.SortedKeys(), std::vector<std::string>());
    folder.Remove("st_A_2_B_2");
    ASSERT_EQ(store.Load("st"), 0u);
    folder.MakeFolder("st_A_2_B_2");
    ASSERT_EQ(store.Add("A,2,B,2,new", 5), 0u) << "a group begins where no file can be opened";
    EXPECT_EQ(store.Save("st"), 769u);
    EXPECT_TRUE(fs::is_directory("st_A_2_B_2"));
}

TEST_F(StoreRealFiles, AFileOfNoLengthIsShort)
{
    folder.Write("st_A_2_B_2", {});
    EXPECT_EQ(store.Load("st"), 4294967295u);
    folder.Remove("st_A_2_B_2");
    ASSERT_EQ(store.Load("st"), 0u);
    folder.Write("st_A_2_B_2", {});
    ASSERT_EQ(store.Select("A,1,B,1,a"), 0u);
    EXPECT_EQ(store.Select("A,2,B,2"), 4294967295u);
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1,a") << "the old group stays";
    EXPECT_EQ(folder.Read("st_A_2_B_2").size(), 0u);
}

} // namespace
