// Files and folders that cannot be written, and files with nothing in them.
#include "file/FileBytes.h"
#include "support/TemporaryFolder.h"
#include "surroundings/SurroundingsWorkload.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <unistd.h>

namespace fs = std::filesystem;
using namespace Surroundings;

namespace {

// Permissions mean nothing to the superuser: tests that run as one become somebody else meanwhile.
class TScopedOrdinaryUser {
public:
    TScopedOrdinaryUser() : wasSuperuser(geteuid() == 0) { SetUser(wasSuperuser ? kNobody : geteuid()); }
    ~TScopedOrdinaryUser() { SetUser(wasSuperuser ? 0 : geteuid()); }
    TScopedOrdinaryUser(const TScopedOrdinaryUser&) = delete;
    TScopedOrdinaryUser& operator=(const TScopedOrdinaryUser&) = delete;

private:
    static constexpr uid_t kNobody = 65534;

    static void SetUser(uid_t user)
    {
        if (seteuid(user) != 0) {
            throw std::runtime_error("the user cannot be changed");
        }
    }

    bool wasSuperuser;
};

class SurroundingsFiles : public testing::Test {
protected:
    SurroundingsFiles() { fs::permissions(folder.Path(), fs::perms::all); }
    ~SurroundingsFiles() override { fs::permissions(folder.Path(), fs::perms::all); }

    // Reading stays allowed to everybody.
    static void Protect(const std::string& path)
    {
        fs::permissions(path, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                        fs::perm_options::remove);
    }

    const TTemporaryFolder folder;
    const TObject processor = MakeProcessor();
    const TObject store = MakeStore({"A"});
};

TEST_F(SurroundingsFiles, AReadOnlyFileIsLoadedAndNotWritten)
{
    const std::string path = folder.File("file");
    ASSERT_EQ(AddFlat(*processor, "dark", 1), 0u);
    ASSERT_EQ(processor->SaveFile(path.c_str()), 0u);
    Protect(path);
    const FileBytes::TBytes before = FileBytes::ReadFile(path);
    ASSERT_EQ(AddFlat(*processor, "more", 1), 0u);
    const TScopedOrdinaryUser user;
    EXPECT_EQ(processor->SaveFile(path.c_str()), 769u);
    EXPECT_EQ(processor->GetLastErrorMessage(), ("Could not create file - '" + path).substr(0, 255) + "'");
    EXPECT_EQ(FileBytes::ReadFile(path), before);
    EXPECT_EQ(processor->GetNumberOfCorrections(), 2u);
    EXPECT_EQ(processor->LoadFile(path.c_str()), 0u);
    EXPECT_EQ(processor->GetNumberOfCorrections(), 1u);
}

TEST_F(SurroundingsFiles, AReadOnlyGroupFailsTheSaveAndIsLostInASwitch)
{
    ASSERT_EQ(AddFlat(*store, "A,1", 100), 0u);
    ASSERT_EQ(AddFlat(*store, "A,2", 200), 0u);
    ASSERT_EQ(store->SaveFile(folder.File("s").c_str()), 0u);
    Protect(folder.File("s_A_1"));
    const FileBytes::TBytes before = FileBytes::ReadFile(folder.File("s_A_1"));
    const TScopedOrdinaryUser user;
    ASSERT_EQ(AddFlat(*store, "A,1,more", 150), 0u);
    EXPECT_EQ(store->SaveFile(folder.File("s").c_str()), 769u);
    EXPECT_EQ(store->SetActiveCorrection("A,2"), 0u); // a write that fails does not stop a switch
    EXPECT_EQ(store->SetActiveCorrection("A,1,more"), 513u);
    EXPECT_EQ(store->SetActiveCorrection("A,1"), 0u);
    EXPECT_EQ(FileBytes::ReadFile(folder.File("s_A_1")), before);
}

TEST_F(SurroundingsFiles, AReadOnlyFolderIsReadAndNotWritten)
{
    ASSERT_EQ(AddFlat(*store, "A,1", 100), 0u);
    ASSERT_EQ(store->SaveFile(folder.File("s").c_str()), 0u);
    Protect(folder.Path());
    const TScopedOrdinaryUser user;
    const TObject reader = MakeStore({"A"});
    EXPECT_EQ(reader->LoadFile(folder.File("s").c_str()), 0u);
    EXPECT_EQ(reader->SetActiveCorrection("A,1"), 0u);
    EXPECT_EQ(FlatBackground(*reader), 100);
    EXPECT_EQ(reader->SaveFile(folder.File("t").c_str()), 769u);
    ASSERT_EQ(AddFlat(*processor, "dark", 1), 0u);
    EXPECT_EQ(processor->SaveFile(folder.File("file").c_str()), 769u);
    EXPECT_EQ(reader->GetNumberOfCorrections(), 1u);
}

// Whether a file may be removed is up to its folder: there, a save does replace a store of read-only files.
TEST_F(SurroundingsFiles, ReadOnlyFilesOfAStoreAreReplacedWhereTheFolderMayBeWritten)
{
    ASSERT_EQ(AddFlat(*store, "A,1", 100), 0u);
    ASSERT_EQ(store->SaveFile(folder.File("s").c_str()), 0u);
    Protect(folder.File("s_A_1"));
    const TScopedOrdinaryUser user;
    const TObject other = MakeStore({"A"});
    ASSERT_EQ(AddFlat(*other, "A,2", 200), 0u);
    EXPECT_EQ(other->SaveFile(folder.File("s").c_str()), 0u);
    EXPECT_FALSE(fs::exists(folder.File("s_A_1")));
    EXPECT_TRUE(fs::exists(folder.File("s_A_2")));
}

TEST_F(SurroundingsFiles, AnEmptyFileIsAFileThatEndsEarly)
{
    const std::string path = folder.File("empty");
    FileBytes::WriteFile(path, {});
    ASSERT_EQ(AddFlat(*processor, "dark", 1), 0u);
    ASSERT_EQ(AddFlat(*store, "A,1", 100), 0u);
    for (const bool headerOnly : {false, true}) {
        EXPECT_EQ(headerOnly ? processor->LoadFileHeaderOnly(path.c_str()) : processor->LoadFile(path.c_str()),
                  QX_KRLSDK::kShortReadOrWrite);
        EXPECT_EQ(processor->GetNumberOfCorrections(), 1u);
        EXPECT_EQ(headerOnly ? store->LoadFileHeaderOnly(path.c_str()) : store->LoadFile(path.c_str()),
                  QX_KRLSDK::kShortReadOrWrite);
        EXPECT_EQ(store->GetNumberOfCorrections(), 1u);
    }
    processor->LoadFile(path.c_str());                // leaves header-only mode
    EXPECT_EQ(processor->SaveFile(path.c_str()), 0u); // a processor writes over it
    EXPECT_EQ(processor->LoadFile(path.c_str()), 0u);
}

// What is no calibration file is not removed for one.
TEST_F(SurroundingsFiles, AnEmptyFileInTheWayOfAStoreStaysAndFailsTheSave)
{
    FileBytes::WriteFile(folder.File("s"), {});
    ASSERT_EQ(AddFlat(*store, "A,1", 100), 0u);
    EXPECT_EQ(store->SaveFile(folder.File("s").c_str()), QX_KRLSDK::kShortReadOrWrite);
    EXPECT_TRUE(fs::exists(folder.File("s")));
    EXPECT_FALSE(fs::exists(folder.File("s_A_1")));
    EXPECT_EQ(store->GetNumberOfCorrections(), 1u);
}

TEST_F(SurroundingsFiles, AnEmptyGroupFileKeepsTheLoadedGroup)
{
    ASSERT_EQ(AddFlat(*store, "A,1", 100), 0u);
    ASSERT_EQ(AddFlat(*store, "A,2", 200), 0u);
    ASSERT_EQ(store->SaveFile(folder.File("s").c_str()), 0u);
    ASSERT_EQ(store->SetActiveCorrection("A,1"), 0u);
    FileBytes::WriteFile(folder.File("s_A_2"), {});
    EXPECT_EQ(store->SetActiveCorrection("A,2"), QX_KRLSDK::kShortReadOrWrite);
    EXPECT_STREQ(store->GetActiveCorrectionKey(), "A,1");
    EXPECT_EQ(FlatBackground(*store), 100);
    const TObject again = MakeStore({"A"});
    EXPECT_EQ(again->LoadFile(folder.File("s").c_str()), QX_KRLSDK::kShortReadOrWrite);
    EXPECT_EQ(again->GetNumberOfCorrections(), 0u);
}

} // namespace
