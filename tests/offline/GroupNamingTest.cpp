#include "offline/GroupNaming.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace GroupNaming;

namespace {

using TTexts = std::vector<std::string>;

TTextList Dual(const TTexts& texts)
{
    return TTextList(texts.begin(), texts.end());
}

TTexts Narrow(const TTextList& texts)
{
    TTexts narrow;
    for (const TDualString& text : texts) {
        narrow.push_back(text.Narrow());
    }
    return narrow;
}

std::string Find(const char* list, const char* name, const char* delimiters = ",")
{
    return FindValueForName(list, name, delimiters).Narrow();
}

TEST(FindValueForNameTest, GivesTheSecondTokenOfThePair)
{
    EXPECT_EQ(Find("A,1,B,2", "A"), "1");
    EXPECT_EQ(Find("A,1,B,2", "B"), "2");
    EXPECT_EQ(Find("A,1,B,2", "C"), "");
    EXPECT_EQ(Find("", "A"), "");
    EXPECT_EQ(Find(",,,", "A"), "");
}

TEST(FindValueForNameTest, LooksAtTheFirstTokenOfPairsOnly)
{
    EXPECT_EQ(Find("A,B,B,2", "B"), "2");
    EXPECT_EQ(Find("A,B,C", "B"), "");
    EXPECT_EQ(Find("1,A,2", "A"), "");
}

TEST(FindValueForNameTest, ComparesExactly)
{
    EXPECT_EQ(Find("a,1", "A"), "");
    EXPECT_EQ(Find("AA,1", "A"), "");
    EXPECT_EQ(Find("A ,1", "A"), "");
    EXPECT_EQ(Find("A, 1", "A"), " 1");
}

TEST(FindValueForNameTest, TheFirstMatchingPairWins)
{
    EXPECT_EQ(Find("A,1,A,2", "A"), "1");
    EXPECT_EQ(Find("A,1,A", "A"), "1");
}

TEST(FindValueForNameTest, IsEmptyWhenTheListEndsBehindTheName)
{
    EXPECT_EQ(Find("A", "A"), "");
    EXPECT_EQ(Find("B,1,A", "A"), "");
    EXPECT_EQ(Find("A,", "A"), "");
}

TEST(FindValueForNameTest, RunsOfDelimitersCountAsOne)
{
    EXPECT_EQ(Find(",,A,,,1,,B,2,", "B"), "2");
    EXPECT_EQ(Find("A,,B,2", "A"), "B"); // the tokens are A, B, 2
    EXPECT_EQ(Find("A,,B,2", "B"), "");
}

TEST(FindValueForNameTest, EveryDelimiterSeparates)
{
    EXPECT_EQ(Find("A_1;B_2", "B", "_;"), "2");
    EXPECT_EQ(Find("A_1", "A", "_"), "1");
    EXPECT_EQ(Find("A_1", "A", ","), "");
}

unsigned int Extract(const char* key, const TTexts& names, TTexts& values)
{
    TTextList found;
    const unsigned int result = ExtractGroupValues(key, Dual(names), found);
    values = Narrow(found);
    return result;
}

TEST(ExtractGroupValuesTest, GivesTheValuesInTheOrderOfTheNames)
{
    TTexts values;
    EXPECT_EQ(Extract("B,2,A,1", {"A", "B"}, values), 0u);
    EXPECT_EQ(values, (TTexts{"1", "2"}));
    EXPECT_EQ(Extract("A,1,Exposure,3,B,2", {"A", "B"}, values), 0u);
    EXPECT_EQ(values, (TTexts{"1", "2"}));
}

TEST(ExtractGroupValuesTest, StopsAtTheFirstNameWithoutValue)
{
    TTexts values;
    EXPECT_EQ(Extract("A,1", {"A", "B", "C"}, values), 513u);
    EXPECT_EQ(values, (TTexts{"1"}));
    EXPECT_EQ(Extract("B,2", {"A", "B"}, values), 513u);
    EXPECT_EQ(values, TTexts{});
    EXPECT_EQ(Extract("A,,B,2", {"A", "B"}, values), 513u);
    EXPECT_EQ(values, (TTexts{"B"}));
}

TEST(ExtractGroupValuesTest, WithoutNamesEveryKeyHasNoValues)
{
    TTexts values;
    EXPECT_EQ(Extract("A,1", {}, values), 0u);
    EXPECT_EQ(values, TTexts{});
    EXPECT_EQ(Extract("", {}, values), 0u);
}

TEST(ExtractGroupValuesTest, ANameGivenTwiceHasItsValueTwice)
{
    TTexts values;
    EXPECT_EQ(Extract("A,1", {"A", "A"}, values), 0u);
    EXPECT_EQ(values, (TTexts{"1", "1"}));
}

unsigned int Build(const char* base, const TTexts& names, const TTexts& values, std::string& path)
{
    TDualString built("before");
    const unsigned int result = BuildGroupFileName(base, Dual(names), Dual(values), built);
    path = built.Narrow();
    return result;
}

TEST(BuildGroupFileNameTest, AppendsEveryNameAndValue)
{
    std::string path;
    EXPECT_EQ(Build("C:\\cal\\store", {"A", "B"}, {"1", "2"}, path), 0u);
    EXPECT_EQ(path, "C:\\cal\\store_A_1_B_2");
    EXPECT_EQ(Build("C:\\cal\\dark.dat", {"Gain"}, {"1"}, path), 0u);
    EXPECT_EQ(path, "C:\\cal\\dark.dat_Gain_1"); // the base is kept exactly, no suffix is added
    EXPECT_EQ(Build("", {"A"}, {"xX"}, path), 0u);
    EXPECT_EQ(path, "_A_xX"); // no case is changed
}

TEST(BuildGroupFileNameTest, WithoutNamesIsTheBase)
{
    std::string path;
    EXPECT_EQ(Build("C:\\cal\\store", {}, {}, path), 0u);
    EXPECT_EQ(path, "C:\\cal\\store");
}

TEST(BuildGroupFileNameTest, WantsOneValueAName)
{
    std::string path;
    EXPECT_EQ(Build("store", {"A", "B"}, {"1"}, path), 513u);
    EXPECT_EQ(path, "");
    EXPECT_EQ(Build("store", {"A"}, {"1", "2"}, path), 513u);
    EXPECT_EQ(path, "");
}

TEST(BuildGroupFileNameTest, NamesAreNotCut)
{
    std::string path;
    EXPECT_EQ(Build("s", {"SensorTemperature"}, {"20"}, path), 0u);
    EXPECT_EQ(path, "s_SensorTemperature_20");
}

unsigned int Parse(const char* path, const char* base, const TTexts& names, TTexts& values)
{
    TTextList found = Dual({"before"});
    const unsigned int result = ParseGroupValuesFromFileName(path, base, Dual(names), found);
    values = Narrow(found);
    return result;
}

TEST(ParseGroupValuesTest, ReadsWhatBuildingWrote)
{
    TTexts values;
    EXPECT_EQ(Parse("C:\\cal\\store_A_1_B_2", "C:\\cal\\store", {"A", "B"}, values), 0u);
    EXPECT_EQ(values, (TTexts{"1", "2"}));
}

TEST(ParseGroupValuesTest, LooksForTheNamesWhateverTheirOrder)
{
    TTexts values;
    EXPECT_EQ(Parse("s_B_2_A_1", "s", {"A", "B"}, values), 0u);
    EXPECT_EQ(values, (TTexts{"1", "2"}));
}

TEST(ParseGroupValuesTest, CutsThroughTheFirstOccurrenceOfTheBase)
{
    TTexts values;
    EXPECT_EQ(Parse("s_A_s_A_1", "s", {"A"}, values), 0u);
    EXPECT_EQ(values, (TTexts{"s"}));
    EXPECT_EQ(Parse("xs_A_1", "s", {"A"}, values), 0u); // also when it does not stand at the beginning
    EXPECT_EQ(values, (TTexts{"1"}));
}

TEST(ParseGroupValuesTest, KeepsWhatFollowsTheLastBackslash)
{
    TTexts values;
    EXPECT_EQ(Parse("C:\\x_A_9\\_A_1", "", {"A"}, values), 0u);
    EXPECT_EQ(values, (TTexts{"1"}));
    EXPECT_EQ(Parse("C:\\A_1", "D:\\other", {"A"}, values), 0u); // a base that does not occur cuts nothing
    EXPECT_EQ(values, (TTexts{"1"}));
    EXPECT_EQ(Parse("C:\\cal\\_A_1", "C:", {"A"}, values), 0u);
    EXPECT_EQ(values, (TTexts{"1"}));
}

TEST(ParseGroupValuesTest, StopsAtTheFirstNameWithoutValue)
{
    TTexts values;
    EXPECT_EQ(Parse("s_A_1", "s", {"A", "B"}, values), 513u);
    EXPECT_EQ(values, (TTexts{"1"}));
    EXPECT_EQ(Parse("store_A_1", "s", {"A"}, values), 513u); // the tokens are tore, A, 1
    EXPECT_EQ(values, TTexts{});
}

TEST(ParseGroupValuesTest, CannotReadBackUnderscoresAndCommas)
{
    TTexts values;
    EXPECT_EQ(Parse("s_A_1_2_B_3", "s", {"A", "B"}, values), 513u);
    EXPECT_EQ(values, (TTexts{"1"}));
    EXPECT_EQ(Parse("s_A_B_1", "s", {"A_B"}, values), 513u);
}

bool Is(const char* candidate, const TTexts& names, const char* base)
{
    return IsGroupFileOf(candidate, Dual(names), base);
}

TEST(IsGroupFileOfTest, AcceptsOnePairANameInOrder)
{
    EXPECT_TRUE(Is("C:\\cal\\store_A_1_B_2", {"A", "B"}, "C:\\cal\\store"));
    EXPECT_FALSE(Is("C:\\cal\\store_A_1_B_2_x", {"A", "B"}, "C:\\cal\\store"));
    EXPECT_FALSE(Is("C:\\cal\\store_B_2_A_1", {"A", "B"}, "C:\\cal\\store"));
    EXPECT_FALSE(Is("C:\\cal\\store_A_1", {"A", "B"}, "C:\\cal\\store"));
    EXPECT_FALSE(Is("C:\\cal\\store_A_1_B", {"A", "B"}, "C:\\cal\\store"));
    EXPECT_FALSE(Is("C:\\cal\\store_A_1_C_2", {"A", "B"}, "C:\\cal\\store"));
}

TEST(IsGroupFileOfTest, AcceptsTheBaseItself)
{
    EXPECT_TRUE(Is("store", {"A"}, "store"));
    EXPECT_TRUE(Is("a_b", {}, "a_b"));
    EXPECT_TRUE(Is("", {"A"}, ""));
}

TEST(IsGroupFileOfTest, WantsTheBaseAtTheBeginning)
{
    EXPECT_FALSE(Is("xstore_A_1", {"A"}, "store"));
    EXPECT_FALSE(Is("stor", {"A"}, "store"));
    EXPECT_FALSE(Is("Store_A_1", {"A"}, "store"));
    EXPECT_TRUE(Is("_A_1", {"A"}, ""));
}

TEST(IsGroupFileOfTest, AcceptsAnythingBetweenBaseAndFirstUnderscore)
{
    EXPECT_TRUE(Is("C:\\cal\\store_A_1_B_2", {"A", "B"}, "C:\\cal\\s"));
    EXPECT_FALSE(Is("C:\\cal\\s_x_A_1_B_2", {"A", "B"}, "C:\\cal\\s"));
}

TEST(IsGroupFileOfTest, AcceptsEmptyValues)
{
    EXPECT_TRUE(Is("s_A__B_2", {"A", "B"}, "s"));
    EXPECT_TRUE(Is("s_A_1_B_", {"A", "B"}, "s"));
    EXPECT_TRUE(Is("s_A_", {"A"}, "s"));
    EXPECT_FALSE(Is("s_A", {"A"}, "s"));
}

TEST(IsGroupFileOfTest, RefusesUnderscoresInTheLastValue)
{
    EXPECT_FALSE(Is("s_A_1_2", {"A"}, "s"));
    EXPECT_FALSE(Is("s_A_1_", {"A"}, "s"));
}

TEST(IsGroupFileOfTest, WithoutNamesAcceptsWhateverBeginsWithTheBaseAndHasNoUnderscoreBehind)
{
    EXPECT_TRUE(Is("cal\\store", {}, "cal\\s"));
    EXPECT_TRUE(Is("cal\\..", {}, "cal\\"));
    EXPECT_FALSE(Is("cal\\store_A_1", {}, "cal\\s"));
}

TEST(BaseOfGroupFileNameTest, IsWhatStandsBeforeTheFirstName)
{
    TDualString base;
    ASSERT_TRUE(BaseOfGroupFileName("C:\\cal\\store_A_1_B_2", Dual({"A", "B"}), base));
    EXPECT_EQ(base.Narrow(), "C:\\cal\\store");
}

TEST(BaseOfGroupFileNameTest, TakesTheFirstOccurrenceEvenInTheFolder)
{
    TDualString base;
    ASSERT_TRUE(BaseOfGroupFileName("C:\\x_A_y\\store_A_1", Dual({"A"}), base));
    EXPECT_EQ(base.Narrow(), "C:\\x");
    ASSERT_TRUE(BaseOfGroupFileName("_A_A_A_1", Dual({"A"}), base));
    EXPECT_EQ(base.Narrow(), "");
}

TEST(BaseOfGroupFileNameTest, IsMissingWithoutThatName)
{
    TDualString base;
    EXPECT_FALSE(BaseOfGroupFileName("C:\\cal\\store.dat", Dual({"A", "B"}), base));
    EXPECT_FALSE(BaseOfGroupFileName("store_a_1", Dual({"A"}), base));
    EXPECT_FALSE(BaseOfGroupFileName("store_A", Dual({"A"}), base));
    EXPECT_FALSE(BaseOfGroupFileName("store_B_1", Dual({"A", "B"}), base));
}

TEST(BucketsTest, SortKeysByGroupInTheOrderOfFirstAppearance)
{
    TBuckets buckets;
    const TTextList names = Dual({"A", "B"});
    for (const char* const key : {"A,2,B,1,x", "A,1,B,1", "B,1,A,2,y", "A,1,B,1,z", "A,2,B,1,x"}) {
        EXPECT_EQ(buckets.BucketKeysByGroup(key, names), 0u);
    }
    ASSERT_EQ(buckets.All().size(), 2u);
    EXPECT_EQ(Narrow(buckets.All()[0].values), (TTexts{"2", "1"}));
    EXPECT_EQ(Narrow(buckets.All()[0].keys), (TTexts{"A,2,B,1,x", "B,1,A,2,y", "A,2,B,1,x"}));
    EXPECT_EQ(Narrow(buckets.All()[1].values), (TTexts{"1", "1"}));
    EXPECT_EQ(Narrow(buckets.All()[1].keys), (TTexts{"A,1,B,1", "A,1,B,1,z"}));
}

TEST(BucketsTest, RefuseAKeyWithoutValue)
{
    TBuckets buckets;
    EXPECT_EQ(buckets.BucketKeysByGroup("A,1", Dual({"A", "B"})), 513u);
    EXPECT_TRUE(buckets.All().empty());
}

TEST(BucketsTest, TellValuesApartByLetterCase)
{
    TBuckets buckets;
    buckets.BucketKeysByGroup("A,x", Dual({"A"}));
    buckets.BucketKeysByGroup("A,X", Dual({"A"}));
    EXPECT_EQ(buckets.All().size(), 2u);
}

TEST(BucketsTest, TellValuesApartWhoseTextsJoinToTheSame)
{
    TBuckets buckets;
    buckets.BucketKeysByGroup("A,1,B,12", Dual({"A", "B"}));
    buckets.BucketKeysByGroup("A,11,B,2", Dual({"A", "B"}));
    EXPECT_EQ(buckets.All().size(), 2u);
}

TEST(BucketsTest, WithoutNamesThereIsOne)
{
    TBuckets buckets;
    EXPECT_EQ(buckets.BucketKeysByGroup("a", {}), 0u);
    EXPECT_EQ(buckets.BucketKeysByGroup("b", {}), 0u);
    ASSERT_EQ(buckets.All().size(), 1u);
    EXPECT_TRUE(buckets.All()[0].values.empty());
    EXPECT_EQ(buckets.All()[0].keys.size(), 2u);
}

} // namespace
