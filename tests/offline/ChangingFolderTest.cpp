// What a listing makes of a folder that changes between its two passes, and what it asks the system for.
#include "offline/MemoryDisk.h"
#include "offline/TDirectoryListing.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using TWideNames = std::vector<std::u16string>;

class ChangingFolderTest : public testing::Test {
protected:
    ChangingFolderTest() { MemoryDisk().Restart(); }
    ~ChangingFolderTest() override { EXPECT_EQ(MemoryDisk().openSearches, 0); }

    TDirectoryListing List(const TWideNames& firstPass, const TWideNames& secondPass)
    {
        MemoryDisk().scriptedSearches = {firstPass, secondPass};
        TDirectoryListing listing;
        listing.folder = TWidePath(u"C:\\cal");
        ListDirectory(listing);
        EXPECT_EQ(static_cast<std::size_t>(listing.count), listing.names.size());
        return listing;
    }
};

TEST_F(ChangingFolderTest, NamesKeepTheOrderOfTheSystem)
{
    EXPECT_EQ(List({u"b", u".", u"a"}, {u"b", u".", u"a"}).names, (TWideNames{u"b", u".", u"a"}));
}

TEST_F(ChangingFolderTest, AFolderThatGrowsGivesTheNewNamesAndNoneOfTheOldIsLeftOut)
{
    EXPECT_EQ(List({u"a", u"b"}, {u"new", u"a", u"b", u"newer"}).names, (TWideNames{u"new", u"a", u"b", u"newer"}));
}

TEST_F(ChangingFolderTest, AFolderThatShrinksGivesWhatIsLeft)
{
    EXPECT_EQ(List({u"a", u"b", u"c"}, {u"b"}).names, (TWideNames{u"b"}));
    EXPECT_EQ(List({u"a", u"b", u"c"}, {}).names, TWideNames{});
}

TEST_F(ChangingFolderTest, AnEmptyFolderIsNotGoneThroughTwice)
{
    EXPECT_EQ(List({}, {u"late"}).names, TWideNames{});
    EXPECT_EQ(MemoryDisk().listings, 1);
}

TEST_F(ChangingFolderTest, LongNamesAreTakenWhole)
{
    const std::u16string name(259, u'n');
    EXPECT_EQ(List({name}, {name}).names, (TWideNames{name}));
}

TEST_F(ChangingFolderTest, AskForTheFolderInBackslashForm)
{
    for (const char16_t* const folder : {u"C:\\cal", u"C:\\cal\\", u"C:/cal/", u"C:/cal"}) {
        TDirectoryListing listing;
        listing.folder = TWidePath(folder);
        ListDirectory(listing);
        EXPECT_EQ(MemoryDisk().specifications.back(), u"C:\\cal\\*");
        EXPECT_EQ(listing.folder.ForwardForm(), TWidePath(folder).ForwardForm()); // a copy got the separator
    }
    TDirectoryListing listing;
    ListDirectory(listing);
    EXPECT_EQ(MemoryDisk().specifications.back(), u"*");
}

} // namespace
