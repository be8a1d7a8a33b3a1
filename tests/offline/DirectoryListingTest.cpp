// Listing real folders. What happens when a folder changes under the listing is tested with a folder that does so.
#include "offline/GroupFiles.h"
#include "offline/StoreSupport.h"
#include "offline/TDirectoryListing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

namespace {

std::set<std::u16string> Listed(const std::u16string& folder)
{
    TDirectoryListing listing;
    listing.folder = TWidePath(folder);
    ListDirectory(listing);
    EXPECT_EQ(static_cast<std::size_t>(listing.count), listing.names.size());
    return std::set<std::u16string>(listing.names.begin(), listing.names.end());
}

const std::set<std::u16string> kEverything = {u".", u"..", u"file", u"folder", u".hidden"};

class DirectoryListingTest : public testing::Test {
protected:
    DirectoryListingTest()
    {
        folder.MakeFolder("cal");
        folder.MakeFolder("cal/folder");
        folder.Write("cal/file", {});
        folder.Write("cal/.hidden", {});
    }

    TStoreFolder folder;
};

TEST_F(DirectoryListingTest, GivesFilesFoldersAndDots)
{
    EXPECT_EQ(Listed(u"cal"), kEverything);
}

TEST_F(DirectoryListingTest, TakesEverySpellingOfTheFolder)
{
    EXPECT_EQ(Listed(u"cal\\"), kEverything);
    EXPECT_EQ(Listed(u"cal/"), kEverything);
    EXPECT_EQ(Listed(u"./cal\\"), kEverything);
    const std::string path = folder.BackslashPath("cal");
    EXPECT_EQ(Listed(std::u16string(path.begin(), path.end())), kEverything);
}

TEST_F(DirectoryListingTest, AnEmptyFolderTextIsTheCurrentFolder)
{
    EXPECT_EQ(Listed(u""), (std::set<std::u16string>{u".", u"..", u"cal"}));
}

TEST_F(DirectoryListingTest, AMissingFolderHasNoNames)
{
    EXPECT_TRUE(Listed(u"gone").empty());
    EXPECT_TRUE(Listed(u"cal/file").empty());
    TDirectoryListing listing;
    listing.folder = TWidePath(u"gone");
    ListDirectory(listing);
    FreeDirectoryListing(listing);
    EXPECT_EQ(listing.count, 0);
}

TEST_F(DirectoryListingTest, ASecondListingReplacesTheFirst)
{
    TDirectoryListing listing;
    listing.folder = TWidePath(u"cal");
    ListDirectory(listing);
    ListDirectory(listing);
    EXPECT_EQ(listing.count, 5);
    folder.Remove("cal");
    ListDirectory(listing);
    EXPECT_EQ(listing.count, 0);
    EXPECT_TRUE(listing.names.empty());
}

TEST_F(DirectoryListingTest, FreeingReleasesNamesAndFolder)
{
    TDirectoryListing listing;
    listing.folder = TWidePath(u"cal");
    ListDirectory(listing);
    FreeDirectoryListing(listing);
    EXPECT_EQ(listing.count, 0);
    EXPECT_TRUE(listing.names.empty());
    EXPECT_EQ(listing.folder.ForwardForm(), u"");
}

TEST_F(DirectoryListingTest, GroupFilesAreTheNamesThatPassTheRule)
{
    for (const char* const name : {"cal/s_A_1", "cal/store_A_2", "cal/s", "cal/s_B_1", "cal/s_A_1_2", "cal/x_A_1"}) {
        folder.Write(name, {});
    }
    folder.MakeFolder("cal/s_A_3");
    TTextList paths = {"before"}; // is appended to
    GroupFiles::ListGroupFiles({"A"}, "cal\\s", paths);
    std::vector<std::string> narrow;
    for (const TDualString& path : paths) {
        narrow.push_back(path.Narrow());
    }
    EXPECT_EQ(narrow.front(), "before");
    std::sort(narrow.begin(), narrow.end());
    EXPECT_EQ(narrow, (std::vector<std::string>{"before", "cal\\s", "cal\\s_A_1", "cal\\s_A_3", "cal\\store_A_2"}));
}

TEST_F(DirectoryListingTest, GroupFilesWithoutFolderAreInTheCurrentOne)
{
    folder.Write("s_A_1", {});
    TTextList paths;
    GroupFiles::ListGroupFiles({"A"}, "s", paths);
    ASSERT_EQ(paths.size(), 1u);
    EXPECT_EQ(paths[0].Narrow(), "s_A_1");
}

TEST_F(DirectoryListingTest, AForwardSlashIsNoSeparatorOfABase)
{
    folder.Write("cal/s_A_1", {});
    TTextList paths;
    GroupFiles::ListGroupFiles({"A"}, "cal/s", paths);
    EXPECT_TRUE(paths.empty());
}

TEST_F(DirectoryListingTest, AnEmptyBaseIsFoundAtTheStartOfEveryName)
{
    folder.Write("_A_1", {});
    folder.Write("x_A_2", {});
    TTextList paths;
    GroupFiles::ListGroupFiles({"A"}, "", paths);
    EXPECT_EQ(paths.size(), 2u);
}

// Where file names are bytes, every name comes back as it is.
TEST_F(DirectoryListingTest, NamesOfBytesAbove127AreFound)
{
    if (kBackslashSystem) {
        GTEST_SKIP() << "names are wide text here";
    }
    folder.MakeFolder("c\xE9l");
    folder.Write("c\xE9l/s_A_\xC3\xA9", {});
    TTextList paths;
    GroupFiles::ListGroupFiles({"A"}, "c\xE9l\\s", paths);
    ASSERT_EQ(paths.size(), 1u);
    EXPECT_EQ(paths[0].Narrow(), "c\xE9l\\s_A_\xC3\xA9");
}

// Where they are wide text, the folder is looked for under the sign-extended bytes, which is another name.
TEST_F(DirectoryListingTest, FoldersOfCharactersAbove127AreNotFoundWhereNamesAreWideText)
{
    if (!kBackslashSystem) {
        GTEST_SKIP() << "names are bytes here";
    }
    std::filesystem::create_directory(L"c\x00E9l");
    std::filesystem::create_directory(L"c\x00E9l/s_A_1");
    TTextList paths;
    GroupFiles::ListGroupFiles({"A"}, "c\xE9l\\s", paths);
    EXPECT_TRUE(paths.empty());
}

} // namespace
