#include "offline/TextHelpers.h"

#include "offline/TDirectoryListing.h"
#include "offline/TDualString.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

using namespace TextHelpers;

namespace {

// A reference that Wide() gave shows the twin as it stands, without making it anew.
TEST(TDualStringTest, IsMadeFromANarrowText)
{
    EXPECT_EQ(TDualString("cal").Narrow(), "cal");
    EXPECT_EQ(TDualString(std::string("cal")).Narrow(), "cal");
    EXPECT_STREQ(TDualString("cal").Text(), "cal");
    EXPECT_TRUE(TDualString().IsEmpty());
    EXPECT_FALSE(TDualString("c").IsEmpty());
}

TEST(TDualStringTest, WideExtendsTheSignOfEveryByte)
{
    TDualString text(std::string("a\x7F\x80\xE9\xFF"));
    const std::u16string expected = {u'a', 0x007F, 0xFF80, 0xFFE9, 0xFFFF};
    EXPECT_EQ(text.Wide(), expected);
    EXPECT_EQ(TDualString().Wide(), u"");
}

TEST(TDualStringTest, TwinIsStaleUntilWideIsCalled)
{
    TDualString text("old");
    const std::u16string& twin = text.Wide();
    EXPECT_EQ(twin, u"old");
    TDualString other("new");
    text = other; // takes the other's twin, which is empty
    EXPECT_EQ(twin, u"");
    EXPECT_EQ(text.Wide(), u"new");
    EXPECT_EQ(twin, u"new");
}

TEST(TDualStringTest, CopiesTakeBothTexts)
{
    TDualString text("both");
    text.Wide();
    TDualString copy("x");
    const std::u16string& twin = copy.Wide();
    copy = text;
    EXPECT_EQ(copy.Narrow(), "both");
    EXPECT_EQ(twin, u"both");
}

TEST(TDualStringTest, EqualityLooksAtTheNarrowTextsByteByByte)
{
    TDualString withTwin("Dark");
    withTwin.Wide();
    EXPECT_TRUE(withTwin == TDualString("Dark"));
    EXPECT_FALSE(withTwin != TDualString("Dark"));
    EXPECT_TRUE(TDualString("Dark") != TDualString("dark"));
    EXPECT_FALSE(TDualString("Dark") == TDualString("Dark "));
}

TEST(TDualStringTest, ConcatenationJoinsTheNarrowTexts)
{
    EXPECT_EQ((TDualString("a") + TDualString("b\xE9")).Narrow(), "ab\xE9");
    EXPECT_EQ((TDualString() + TDualString()).Narrow(), "");
}

TEST(TDualStringTest, WideNamesKeepTheLowByteOfEachCharacter)
{
    const char16_t name[] = {u'a', 0x01E9, 0x0142, 0};
    TDualString text = TDualString::FromWide(name);
    EXPECT_EQ(text.Narrow(), "a\xE9\x42");
}

TEST(TDualStringTest, WideNamesEndAtACharacterWithoutLowByte)
{
    const char16_t name[] = {u'a', 0x0100, u'b', 0};
    EXPECT_EQ(TDualString::FromWide(name).Narrow(), "a");
    const char16_t nothing[] = {0x0200, u'b', 0};
    EXPECT_EQ(TDualString::FromWide(nothing).Narrow(), "");
    EXPECT_EQ(TDualString::FromWide(u"").Narrow(), "");
}

TEST(TextHelpersTest, FindTextCountsFromOne)
{
    EXPECT_EQ(FindText("abcabc", "abc"), 1);
    EXPECT_EQ(FindText("abcabc", "bc"), 2);
    EXPECT_EQ(FindText("abcabc", "d"), 0);
    EXPECT_EQ(FindText("abc", "abcd"), 0);
    EXPECT_EQ(FindText("aBc", "b"), 0);
}

TEST(TextHelpersTest, FindTextFindsTheEmptyTextAtOne)
{
    EXPECT_EQ(FindText("abc", ""), 1);
    EXPECT_EQ(FindText("", ""), 1);
    EXPECT_EQ(FindText("", "a"), 0);
}

TEST(TextHelpersTest, FindLastOfCountsFromOne)
{
    EXPECT_EQ(FindLastOf("a\\b\\c", "\\"), 4);
    EXPECT_EQ(FindLastOf("abc", "cb"), 3);
    EXPECT_EQ(FindLastOf("abcx", "ab"), 2);
    EXPECT_EQ(FindLastOf("abc", "a"), 1);
    EXPECT_EQ(FindLastOf("abc", "x"), 0);
    EXPECT_EQ(FindLastOf("", "x"), 0);
    EXPECT_EQ(FindLastOf("abc", ""), 0);
}

TEST(TextHelpersTest, MidTextCountsFromOne)
{
    EXPECT_EQ(MidText("abcdef", 1, 2), TDualString("ab"));
    EXPECT_EQ(MidText("abcdef", 3, 2), TDualString("cd"));
    EXPECT_EQ(MidText("abcdef", 6, 5), TDualString("f"));
    EXPECT_EQ(MidText("abcdef", 7, 1), TDualString("")); // just behind the end
    EXPECT_EQ(MidText("abcdef", 2, 0), TDualString(""));
}

TEST(TextHelpersTest, MidTextBelowOneIsEmpty)
{
    EXPECT_EQ(MidText("abc", 0, 2), TDualString(""));
    EXPECT_EQ(MidText("abc", -5, 2), TDualString(""));
}

TEST(TextHelpersTest, MidTextPastTheEndIsAnError)
{
    EXPECT_THROW(MidText("abc", 5, 1), std::out_of_range);
    EXPECT_THROW(MidText("", 2, 1), std::out_of_range);
}

struct TSplit {
    const char* path;
    const char* folder;
    const char* file;
    int position;
};

TEST(TextHelpersTest, SplitPathCutsBehindTheLastBackslash)
{
    for (const TSplit& split :
         {TSplit{"C:\\cal\\store_A_1", "C:\\cal\\", "store_A_1", 7}, TSplit{"store_A_1", "", "store_A_1", 0},
          TSplit{"\\store", "\\", "store", 1}, TSplit{"C:\\cal\\", "C:\\cal\\", "", 7}, TSplit{"", "", "", 0},
          TSplit{"C:/cal/store", "", "C:/cal/store", 0}, TSplit{"C:\\cal/store", "C:\\", "cal/store", 3}}) {
        TDualString part("before");
        EXPECT_EQ(SplitPath(split.path, true, part), split.position) << split.path;
        EXPECT_EQ(part.Narrow(), split.folder) << split.path;
        part = TDualString("before");
        EXPECT_EQ(SplitPath(split.path, false, part), split.position) << split.path;
        EXPECT_EQ(part.Narrow(), split.file) << split.path;
    }
}

TEST(TWidePathTest, KeepsBothSpellings)
{
    const TWidePath path(u"C:\\cal/store\\x");
    EXPECT_EQ(path.ForwardForm(), u"C:/cal/store/x");
    EXPECT_EQ(path.BackslashForm(), u"C:\\cal\\store\\x");
}

TEST(TWidePathTest, ConcatenationMakesBothSpellingsAnew)
{
    const TWidePath path = TWidePath(u"C:\\cal") + u"\\a/b";
    EXPECT_EQ(path.ForwardForm(), u"C:/cal/a/b");
    EXPECT_EQ(path.BackslashForm(), u"C:\\cal\\a\\b");
}

TEST(TWidePathTest, ATrailingSeparatorIsAddedOnce)
{
    for (const char16_t* const text : {u"C:\\cal", u"C:\\cal\\", u"C:/cal/"}) {
        TWidePath path(text);
        path.EnsureTrailingSeparator();
        EXPECT_EQ(path.ForwardForm(), u"C:/cal/");
        EXPECT_EQ(path.BackslashForm(), u"C:\\cal\\");
    }
}

TEST(TWidePathTest, AnEmptyPathGetsNoSeparator)
{
    TWidePath path(u"");
    path.EnsureTrailingSeparator();
    EXPECT_EQ(path.ForwardForm(), u"");
    EXPECT_EQ(path.BackslashForm(), u"");
}

TEST(TWidePathTest, CopiesAreIndependent)
{
    TWidePath path(u"a");
    TWidePath copy = path;
    copy.EnsureTrailingSeparator();
    EXPECT_EQ(path.ForwardForm(), u"a");
    EXPECT_EQ(copy.ForwardForm(), u"a/");
}

} // namespace
