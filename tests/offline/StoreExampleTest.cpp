// The worked example of docs/offline-store.md: what is on disk after each step.
#include "offline/StoreSupport.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

namespace {

using TSizes = std::map<std::string, std::size_t>;

unsigned int Add(const TTestStore& store, const char* key, float exposureSeconds)
{
    const Literal::TImage frame{4, 3, std::vector<std::uint16_t>(12, 300)};
    return store.AddFrames(key, {frame, frame}, exposureSeconds, 100.0f);
}

TSizes FilesIn(const TStoreFolder& folder, const std::string& name)
{
    TSizes sizes;
    for (const auto& file : folder.Files()) {
        if (file.first.compare(0, name.size() + 1, name + "/") == 0) {
            sizes[file.first.substr(name.size() + 1)] = file.second.size();
        }
    }
    return sizes;
}

TEST(StoreExampleTest, TheWorkedExampleIsAsDocumented)
{
    const TStoreFolder folder;
    folder.MakeFolder("cal");
    folder.MakeFolder("backup");
    {
        const TTestStore store({"Gain", "Temperature"}); // 1
        EXPECT_EQ(Add(store, "Gain,1,Temperature,-20,Exposure,0.1", 0.1f), 0u);
        EXPECT_EQ(Add(store, "Gain,1,Temperature,-20,Exposure,1", 1.0f), 0u);
        EXPECT_EQ(Add(store, "Gain,4,Temperature,-20,Exposure,1", 1.0f), 0u);
        EXPECT_EQ(FilesIn(folder, "cal"), TSizes{});

        EXPECT_EQ(store.Save("cal\\night"), 0u); // 2
        EXPECT_EQ(FilesIn(folder, "cal"),
                  (TSizes{{"night_Gain_1_Temperature_-20", 1390}, {"night_Gain_4_Temperature_-20", 754}}));
        EXPECT_EQ(store->GetNumberOfCorrections(), 3u);
        EXPECT_FALSE(store.HasGroup());

        EXPECT_EQ(store.Select("Gain,1,Temperature,-20,Exposure,0.1"), 0u); // 3
        EXPECT_EQ(Add(store, "Exposure,10,Temperature,-20,Gain,1", 10.0f), 0u);
        EXPECT_EQ(FilesIn(folder, "cal"),
                  (TSizes{{"night_Gain_1_Temperature_-20", 1390}, {"night_Gain_4_Temperature_-20", 754}}));

        EXPECT_EQ(store.Select("Gain,4,Temperature,-20,Exposure,1"), 0u); // 4
        EXPECT_EQ(FilesIn(folder, "cal"),
                  (TSizes{{"night_Gain_1_Temperature_-20", 2026}, {"night_Gain_4_Temperature_-20", 754}}));

        EXPECT_EQ(Add(store, "Gain,8,Temperature,0,Exposure,1", 1.0f), 0u); // 5
        EXPECT_EQ(store->GetNumberOfCorrections(), 5u);
    } // 6
    EXPECT_EQ(FilesIn(folder, "cal"),
              (TSizes{{"night_Gain_1_Temperature_-20", 2026}, {"night_Gain_4_Temperature_-20", 754}}));

    const TTestStore reopened({"Gain", "Temperature"}); // 7
    EXPECT_EQ(reopened.Load("cal\\night_Gain_4_Temperature_-20"), 0u);
    EXPECT_EQ(reopened->GetNumberOfCorrections(), 4u);
    EXPECT_EQ(reopened.Save("backup\\night"), 0u); // 8
    EXPECT_EQ(FilesIn(folder, "backup"),
              (TSizes{{"night_Gain_1_Temperature_-20", 2026}, {"night_Gain_4_Temperature_-20", 754}}));
    EXPECT_EQ(folder.Read("backup/night_Gain_1_Temperature_-20"), folder.Read("cal/night_Gain_1_Temperature_-20"));

    EXPECT_EQ(reopened.Select("Gain,8,Temperature,0,Exposure,1"), 513u); // 9
    EXPECT_EQ(reopened.Save("cal\\night"), 0u);
    EXPECT_EQ(FilesIn(folder, "cal"), (TSizes{{"night_Gain_1_Temperature_-20", 2026},
                                              {"night_Gain_4_Temperature_-20", 754},
                                              {"night_Gain_8_Temperature_0", 118}}));
}

} // namespace
