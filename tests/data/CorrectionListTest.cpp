#include "data/TCorrectionList.h"

#include "data/EntryBuilding.h"
#include "support/RandomImages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Keys(const TCorrectionList& list)
{
    std::vector<std::string> keys;
    for (std::size_t i = 0; i < list.Count(); ++i) {
        keys.push_back(list.EntryAt(i).Key());
    }
    return keys;
}

void Fill(TCorrectionList& list, const std::vector<std::string>& keys, std::uint16_t value)
{
    for (const std::string& key : keys) {
        list.AddEntry(RowEntry(key.c_str(), {value}));
    }
}

TEST(CorrectionList, IsEmptyAtFirst)
{
    const TCorrectionList list;
    EXPECT_EQ(list.Count(), 0u);
    EXPECT_EQ(list.FindEntry("dark"), nullptr);
}

TEST(CorrectionList, KeepsTheOrderOfAdding)
{
    TCorrectionList list;
    Fill(list, {"b", "a", "C", "0"}, 1);
    EXPECT_THAT(Keys(list), ElementsAre("b", "a", "C", "0"));
}

TEST(CorrectionList, RefusesATakenKeyIgnoringCaseAndNamesTheNewOne)
{
    TCorrectionList list;
    Fill(list, {"dark", "other"}, 1);
    const TBackgroundCorrectionEntry taken = RowEntry("Dark", {9});
    EXPECT_EQ(ThrownText([&] { list.AddEntry(taken); }), "Supplied Key is not unique - 'Dark'");
    EXPECT_EQ(ThrownText([&] { list.AddEntry(RowEntry("OTHER", {9})); }), "Supplied Key is not unique - 'OTHER'");
    EXPECT_THAT(Keys(list), ElementsAre("dark", "other"));
    EXPECT_THAT(PixelsOf(list.EntryAt(0)), ElementsAre(1));
}

TEST(CorrectionList, DistinguishesKeysThatDifferBeyondAsciiLetters)
{
    TCorrectionList list;
    Fill(list, {"k[", "k{", "k@", "k`", "k\xC9", "k\xE9", "k", "k "}, 1);
    EXPECT_EQ(list.Count(), 8u);
    EXPECT_EQ(list.FindEntry("K\xE9"), &list.EntryAt(5));
}

TEST(CorrectionList, CutsTheTextAboutALongTakenKeyAt512Characters)
{
    TCorrectionList list;
    const std::string key(512, 'k');
    Fill(list, {key}, 1);
    EXPECT_EQ(ThrownText([&] { list.AddEntry(RowEntry(key.c_str(), {9})); }),
              ("Supplied Key is not unique - '" + key).substr(0, 512));
}

TEST(CorrectionList, StoresACopyOfTheEntry)
{
    TCorrectionList list;
    TBackgroundCorrectionEntry entry = RowEntry("dark", {1, 2});
    list.AddEntry(entry);
    entry.MutablePixels()[0] = 99;
    EXPECT_THAT(PixelsOf(list.EntryAt(0)), ElementsAre(1, 2));
}

TEST(CorrectionList, CreatesFilteredEntries)
{
    TRandomImages random(30);
    const auto frames = random.Stack(3, 17, 5);
    const std::uint16_t* const pointers[] = {frames[0].pixels.data(), frames[1].pixels.data(), frames[2].pixels.data()};
    TCorrectionList list;
    list.CreateAndAddEntry("dark", pointers, 3, 17, 5, 0.5f, 4.0f);
    ASSERT_EQ(list.Count(), 1u);
    EXPECT_EQ(PixelsOf(list.EntryAt(0)), Literal::Correction(frames).pixels);
    EXPECT_EQ(list.EntryAt(0).ReferenceExposureSeconds(), 0.5f);
    EXPECT_EQ(list.EntryAt(0).ReferenceIntensityPercent(), 4.0f);
}

TEST(CorrectionList, PassesOnWhatBuildRefuses)
{
    const std::uint16_t pixel = 1;
    const std::uint16_t* const frames[] = {&pixel};
    TCorrectionList list;
    Fill(list, {"dark"}, 1);
    const auto create = [&](const char* key, float intensity) {
        return ThrownText([&] { list.CreateAndAddEntry(key, frames, 1, 1, 1, 1.0f, intensity); });
    };
    EXPECT_EQ(create("", 1.0f), "The key is not valid - ''.");
    EXPECT_EQ(create("new", 0.0f),
              "Reference exposure and light intensity product is zero [ 1.000000 ] * [ 0.000000 ].");
    EXPECT_EQ(create("DARK", 0.0f),
              "Reference exposure and light intensity product is zero [ 1.000000 ] * [ 0.000000 ].")
        << "the entry is built before its key is looked for";
    EXPECT_EQ(create("DARK", 1.0f), "Supplied Key is not unique - 'DARK'");
    EXPECT_THAT(Keys(list), ElementsAre("dark"));
}

TEST(CorrectionList, FindsAndRemovesIgnoringCase)
{
    TCorrectionList list;
    Fill(list, {"first", "dark", "last"}, 1);
    EXPECT_EQ(list.FindEntry("DARK"), &list.EntryAt(1));
    EXPECT_EQ(list.FindEntry("dar"), nullptr);
    EXPECT_EQ(list.FindEntry("darkk"), nullptr);
    EXPECT_EQ(list.RemoveEntry("Dark"), 0);
    EXPECT_EQ(list.RemoveEntry("Dark"), -1);
    EXPECT_THAT(Keys(list), ElementsAre("first", "last"));
    EXPECT_STREQ(list.EntryAt(1).Key(), "last") << "removal closes the gap";
}

TEST(CorrectionList, ComparesWholeKeysOfTheGreatestLength)
{
    TCorrectionList list;
    const std::string key(512, 'k');
    Fill(list, {key}, 1);
    EXPECT_NE(list.FindEntry(std::string(512, 'K').c_str()), nullptr);
    EXPECT_EQ(list.FindEntry(std::string(600, 'k').c_str()), nullptr);
    EXPECT_EQ(list.FindEntry(std::string(511, 'k').c_str()), nullptr);
}

TEST(CorrectionList, ReadingBeyondTheEndThrowsIndexAndSize)
{
    TCorrectionList list;
    EXPECT_EQ(ThrownText([&] { list.EntryAt(0); }), "Index 0 is out of range - Size = 0");
    Fill(list, {"a", "b"}, 1);
    EXPECT_EQ(ThrownText([&] { list.EntryAt(2); }), "Index 2 is out of range - Size = 2");
    EXPECT_EQ(ThrownText([&] { list.EntryAt(7); }), "Index 7 is out of range - Size = 2");
}

TEST(CorrectionList, EntriesDoNotMoveWhileStored)
{
    TCorrectionList list;
    Fill(list, {"kept"}, 1);
    const TBackgroundCorrectionEntry* const kept = list.FindEntry("kept");
    for (int i = 0; i < 200; ++i) {
        Fill(list, {"other" + std::to_string(i)}, 1);
    }
    for (int i = 0; i < 200; i += 2) {
        list.RemoveEntry(("other" + std::to_string(i)).c_str());
    }
    EXPECT_EQ(list.FindEntry("kept"), kept);
    EXPECT_EQ(&list.EntryAt(0), kept);
}

TEST(CorrectionList, ClearsToEmptyAlsoWhenEmpty)
{
    TCorrectionList list;
    list.ClearEntries();
    EXPECT_EQ(list.Count(), 0u);
    Fill(list, {"a", "b"}, 1);
    list.ClearEntries();
    EXPECT_EQ(list.Count(), 0u);
    EXPECT_EQ(list.FindEntry("a"), nullptr);
    Fill(list, {"A"}, 1);
    EXPECT_THAT(Keys(list), ElementsAre("A"));
}

TEST(CorrectionList, BehavesLikeAPlainSequenceUnderManyChanges)
{
    TRandomImages random(31);
    TCorrectionList list;
    std::vector<std::string> expected;
    for (int step = 0; step < 3000; ++step) {
        const std::string key = "Key" + std::to_string(random.Number(0, 120));
        const auto found = std::find(expected.begin(), expected.end(), key);
        std::string shouted = key;
        shouted[1] = 'E';
        if (random.Number(0, 99) == 0) {
            list.ClearEntries();
            expected.clear();
        } else if (random.Number(0, 2) > 0) {
            if (found == expected.end()) {
                Fill(list, {key}, 1);
                expected.push_back(key);
            } else {
                ASSERT_NE(ThrownText([&] { Fill(list, {shouted}, 1); }), "(nothing thrown)");
            }
        } else {
            ASSERT_EQ(list.RemoveEntry(shouted.c_str()), found == expected.end() ? -1 : 0);
            if (found != expected.end()) {
                expected.erase(found);
            }
        }
        ASSERT_EQ(Keys(list), expected) << "step " << step;
    }
}

TEST(CorrectionListImport, WithoutOverwriteSkipsKeysThatAreThere)
{
    TCorrectionList source;
    Fill(source, {"a", "b"}, 2);
    TCorrectionList target;
    Fill(target, {"B"}, 1);
    EXPECT_EQ(target.ImportEntries(source, false), 0);
    EXPECT_THAT(Keys(target), ElementsAre("B", "a"));
    EXPECT_THAT(PixelsOf(target.EntryAt(0)), ElementsAre(1));
    EXPECT_THAT(PixelsOf(target.EntryAt(1)), ElementsAre(2));
    EXPECT_NE(target.EntryAt(1).Pixels(), source.EntryAt(0).Pixels());
    EXPECT_THAT(Keys(source), ElementsAre("a", "b"));
}

TEST(CorrectionListImport, WithOverwriteReplacesInPlace)
{
    TCorrectionList source;
    Fill(source, {"a", "b"}, 2);
    source.EntryAt(1).Statistics();
    TCorrectionList target;
    Fill(target, {"B", "c"}, 1);
    TBackgroundCorrectionEntry* const replaced = target.FindEntry("b");
    EXPECT_EQ(target.ImportEntries(source, true), 0);
    EXPECT_THAT(Keys(target), ElementsAre("b", "c", "a"));
    EXPECT_EQ(target.FindEntry("B"), replaced) << "the entry is assigned, not exchanged";
    EXPECT_THAT(PixelsOf(*replaced), ElementsAre(2));
    replaced->MutablePixels()[0] = 7;
    EXPECT_EQ(replaced->Statistics().maximum, 2) << "the source's statistics come along";
    EXPECT_THAT(PixelsOf(source.EntryAt(1)), ElementsAre(2));
}

TEST(CorrectionListImport, FromAnEmptyListChangesNothing)
{
    const TCorrectionList source;
    TCorrectionList target;
    Fill(target, {"a"}, 1);
    EXPECT_EQ(target.ImportEntries(source, true), 0);
    EXPECT_THAT(Keys(target), ElementsAre("a"));
}

TEST(CorrectionListImport, FromItselfKeepsEverythingOrWithOverwriteLosesThePixels)
{
    TCorrectionList list;
    Fill(list, {"a", "b"}, 1);
    EXPECT_EQ(list.ImportEntries(list, false), 0);
    EXPECT_THAT(PixelsOf(list.EntryAt(1)), ElementsAre(1));
    EXPECT_EQ(list.ImportEntries(list, true), 0);
    EXPECT_THAT(Keys(list), ElementsAre("a", "b"));
    EXPECT_THAT(PixelsOf(list.EntryAt(0)), IsEmpty());
    EXPECT_THAT(PixelsOf(list.EntryAt(1)), IsEmpty());
}

} // namespace
