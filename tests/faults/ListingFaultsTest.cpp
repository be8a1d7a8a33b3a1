// Folders that change while a store lists them: each listing goes through its folder twice, to count and to fetch.
#include "faults/ListingFaults.h"
#include "faults/FileFaults.h"
#include "faults/Snapshot.h"
#include "faults/Worlds.h"

#include "offline/StoreSupport.h"
#include "offline/TDirectoryListing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

class ListingFaults : public testing::Test {
protected:
    ListingFaults() { Worlds::FillStoreFolder(); }
    ~ListingFaults() override
    {
        EXPECT_EQ(TListingFaults::OpenSearches(), 0u);
        EXPECT_EQ(TFileFaults::OpenStreams(), 0u);
    }

    // The current folder listed while `before` changes it.
    static TDirectoryListing Listed(const std::function<bool(std::size_t)>& before)
    {
        const TListingFaults faults(before);
        TDirectoryListing listing;
        ListDirectory(listing);
        return listing;
    }

    void AddFiles(int count) const
    {
        for (int i = 0; i < count; ++i) {
            folder.Write("st_A_" + std::to_string(1000 + i) + "_B_1", folder.Read("st_A_1_B_1"));
        }
    }

    void CheckUsable(TTestStore& store) const
    {
        EXPECT_TRUE(Snapshots::LockIsFree(store.Get()));
        EXPECT_EQ(store.Load("st"), 0u);
        EXPECT_EQ(store.Select("A,2,B,2"), 0u);
        EXPECT_EQ(store->SetExposureAndIntensity(1.0f, 1.0f), 0u);
        EXPECT_EQ(store.Corrected(), 800);
    }

    const TStoreFolder folder;
};

constexpr std::size_t kStartCount = 6 + 2; // with "." and ".."

TEST_F(ListingFaults, AFolderThatGrowsBetweenThePassesGivesTheNewNamesToo)
{
    for (const int added : {1, 2, 50}) {
        const TDirectoryListing listing = Listed([&](std::size_t number) {
            AddFiles(number == 2 ? added : 0);
            return true;
        });
        EXPECT_EQ(static_cast<std::size_t>(listing.count), listing.names.size());
        EXPECT_EQ(TListingFaults::Searches(), 2u);
        for (const std::u16string& name : listing.names) {
            EXPECT_FALSE(name.empty());
        }
        for (int i = 0; i < added; ++i) {
            folder.Remove("st_A_" + std::to_string(1000 + i) + "_B_1");
        }
        EXPECT_EQ(listing.names.size(), kStartCount + static_cast<std::size_t>(added));
    }
}

TEST_F(ListingFaults, AFolderThatShrinksOrVanishesBetweenThePassesGivesWhatIsLeft)
{
    const TDirectoryListing shrunk = Listed([&](std::size_t number) {
        if (number == 2) {
            folder.Remove("st_A_1_B_1");
            folder.Remove("ungrouped");
        }
        return true;
    });
    EXPECT_EQ(shrunk.names.size(), kStartCount - 2);
    EXPECT_EQ(shrunk.count, static_cast<int>(kStartCount) - 2);
    const TDirectoryListing vanished = Listed([](std::size_t number) { return number != 2; });
    EXPECT_EQ(vanished.count, 0);
    EXPECT_TRUE(vanished.names.empty());
    const TDirectoryListing neverThere = Listed([](std::size_t) { return false; });
    EXPECT_EQ(neverThere.count, 0);
    EXPECT_EQ(TListingFaults::Searches(), 1u) << "nothing to fetch";
}

TEST_F(ListingFaults, AListingThatFailsIsAStoreThatIsNotThere)
{
    TTestStore store;
    EXPECT_EQ(store.Load("old"), 0u);
    const std::vector<std::string> keys = store.SortedKeys();
    for (const std::size_t failed : {std::size_t{1}, std::size_t{2}}) {
        const TListingFaults faults([failed](std::size_t number) { return number != failed; });
        EXPECT_EQ(store.Load("st"), 771u);
        EXPECT_EQ(store.SortedKeys(), keys) << "a failed load changes nothing";
    }
    CheckUsable(store);
}

TEST_F(ListingFaults, AFileThatVanishesAfterItWasListedFailsTheLoad)
{
    TTestStore store;
    EXPECT_EQ(store.Load("old"), 0u);
    const std::vector<std::string> keys = store.SortedKeys();
    {
        const TFileFaults faults({TFileOperation::kOpenForReading, 1, TFileFaultRepeat::kFromThenOn});
        EXPECT_EQ(store.Load("st"), 769u);
        EXPECT_TRUE(faults.Fired());
    }
    EXPECT_EQ(store.SortedKeys(), keys);
    CheckUsable(store);
}

TEST_F(ListingFaults, FilesThatComeOrGoWhileAStoreIsCopiedDoNotCostOthers)
{
    for (std::size_t changed = 1; changed <= 6; ++changed) {
        for (const bool added : {true, false}) {
            Snapshots::RestoreFiles({});
            Worlds::FillStoreFolder();
            TTestStore store;
            ASSERT_EQ(store.Load("st"), 0u);
            unsigned int code = 0;
            {
                const TListingFaults faults([&](std::size_t number) {
                    if (number == changed && added) {
                        folder.Write("st_A_7_B_7", StoreFiles::Grouped({"A", "B"}, {StoreFiles::Flat("A,7,B,7")}));
                    } else if (number == changed) {
                        folder.Remove("st_A_3_B_3");
                    }
                    return true;
                });
                code = store.Save("copy");
            }
            EXPECT_EQ(code, 0u) << changed;
            const std::vector<std::string> names = folder.Names();
            for (const char* const name : {"copy_A_1_B_1", "copy_A_2_B_2"}) {
                EXPECT_EQ(std::count(names.begin(), names.end(), name), 1) << name;
            }
            EXPECT_EQ(folder.Read("copy_A_2_B_2"), folder.Read("st_A_2_B_2"));
            CheckUsable(store);
        }
    }
}

TEST_F(ListingFaults, AFileThatVanishesBetweenProbeAndOpenFailsTheSwitch)
{
    TTestStore store;
    ASSERT_EQ(store.Load("st"), 0u);
    ASSERT_EQ(store.Select("A,1,B,1,a"), 0u);
    const std::vector<std::string> keys = store.SortedKeys();
    {
        const TFileFaults faults({TFileOperation::kOpenForReading, 2}); // the probe was the first
        EXPECT_EQ(store.Select("A,2,B,2"), 769u);
        EXPECT_TRUE(faults.Fired());
    }
    EXPECT_EQ(store.ActiveKey(), "A,1,B,1,a") << "the old group stays";
    EXPECT_EQ(store.SortedKeys(), keys);
    CheckUsable(store);
}

} // namespace
