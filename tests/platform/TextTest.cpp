#include "platform/Text.h"

#include "support/ScopedLocale.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdarg>
#include <cstring>
#include <string>

namespace {

std::string Format(std::size_t size, const char* format, ...)
{
    std::string buffer(size + 8, '#');
    std::va_list arguments;
    va_start(arguments, format);
    Platform::FormatBounded(&buffer[0], size, format, arguments);
    va_end(arguments);
    EXPECT_EQ(buffer.substr(size), "########") << "written beyond the buffer";
    return buffer.c_str();
}

TEST(FormatBounded, CutsWhatDoesNotFitAndAlwaysTerminates)
{
    EXPECT_EQ(Format(6, "%s", "12345"), "12345");
    EXPECT_EQ(Format(5, "%s", "12345"), "1234");
    EXPECT_EQ(Format(5, "%d%s", 12, "345678"), "1234");
    EXPECT_EQ(Format(1, "%s", "12345"), "");
}

TEST(FormatBounded, WritesEveryFormThatTheLibraryUses)
{
    EXPECT_EQ(Format(99, "'%s' [ %d ] %%", "", -2147483647 - 1), "'' [ -2147483648 ] %");
    EXPECT_EQ(Format(99, "[ %f ]", static_cast<double>(1e-30f)), "[ 0.000000 ]");
    EXPECT_EQ(Format(99, "%f", 3.4028234663852886e38).size(), 46u) << "39 digits, point, 6 decimals";
}

TEST(FormatBounded, WritesANullTextAsNull)
{
    const char* const none = nullptr;
    EXPECT_EQ(Format(99, "'%s'", none), "'(null)'");
}

TEST(FormatBounded, IgnoresTheHostsDecimalComma)
{
    const TScopedCommaLocale comma;
    if (!comma.IsSet()) {
        GTEST_SKIP() << "this system has no locale with a decimal comma installed";
    }
    EXPECT_EQ(Format(99, "%f|%s|%d", 1234567.5, "1,5", 7), "1234567.500000|1,5|7");
}

int Sign(int value)
{
    return (value > 0) - (value < 0);
}

// The rule for single bytes: A to Z count as a to z, everything else as itself.
int FoldedDifference(int left, int right)
{
    const auto fold = [](int byte) { return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte; };
    return Sign(fold(left) - fold(right));
}

void ExpectAsciiRuleForAllPairsOfBytes()
{
    for (int left = 0; left < 256; ++left) {
        for (int right = 0; right < 256; ++right) {
            const char leftText[] = {'k', static_cast<char>(left), '\0'};
            const char rightText[] = {'K', static_cast<char>(right), '\0'};
            ASSERT_EQ(Sign(Platform::CompareIgnoringCase(leftText, rightText)), FoldedDifference(left, right))
                << left << " and " << right;
        }
    }
}

TEST(CompareIgnoringCase, FoldsOnlyAsciiLetters)
{
    ExpectAsciiRuleForAllPairsOfBytes();
}

TEST(CompareIgnoringCase, DoesNotFollowTheHostsLocale)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    int (*volatile const toLower)(int) = std::tolower; // asked anew each time, not once before the locale is set
    bool isTried = false;
    for (const char* const name : {"de_DE.ISO-8859-1", "de_DE", "tr_TR", "German_Germany.1252", "Turkish"}) {
        if (std::setlocale(LC_ALL, name) != nullptr && toLower(0xC9) == 0xE9) {
            isTried = true;
            ExpectAsciiRuleForAllPairsOfBytes();
        }
        std::setlocale(LC_ALL, before.c_str());
    }
    if (!isTried) {
        GTEST_SKIP() << "this system has no locale installed in which letters beyond ASCII have case";
    }
}

TEST(CompareIgnoringCase, ComparesWholeTexts)
{
    EXPECT_EQ(Platform::CompareIgnoringCase("", ""), 0);
    EXPECT_EQ(Platform::CompareIgnoringCase("Dark 10 S", "dARK 10 s"), 0);
    EXPECT_LT(Platform::CompareIgnoringCase("dark", "Dark2"), 0);
    EXPECT_GT(Platform::CompareIgnoringCase("dark2", "Dark"), 0);
    EXPECT_LT(Platform::CompareIgnoringCase("a_", "B"), 0);
    EXPECT_LT(Platform::CompareIgnoringCase("_", "A"), 0) << "letters count as small ones, which follow the underscore";
}

} // namespace
