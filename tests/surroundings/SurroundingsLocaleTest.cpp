// A host that speaks another language than C: nothing that the library does depends on it, and the library leaves it
// as it is.
#include "support/ScopedLocale.h"
#include "support/TemporaryFolder.h"
#include "surroundings/SurroundingsWorkload.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>

namespace {

std::vector<std::string> WorkloadInItsOwnFolder()
{
    const TTemporaryFolder folder;
    return Surroundings::Workload(folder.Path());
}

TEST(SurroundingsLocale, ADecimalCommaChangesNothing)
{
    const std::vector<std::string> expected = WorkloadInItsOwnFolder();
    const TScopedCommaLocale locale;
    if (!locale.IsSet()) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    char text[16];
    std::snprintf(text, sizeof text, "%.1f", 0.5);
    ASSERT_STREQ(text, "0,5");
    EXPECT_EQ(WorkloadInItsOwnFolder(), expected);
}

// Bytes above 127 are letters in an 8-bit locale, with a lower and an upper case. Keys differ in them all the same.
TEST(SurroundingsLocale, LettersBeyondAsciiChangeNothing)
{
    const std::vector<std::string> expected = WorkloadInItsOwnFolder();
    const std::string before = std::setlocale(LC_ALL, nullptr);
    if (std::setlocale(LC_ALL, "de_DE.ISO-8859-1") == nullptr) {
        GTEST_SKIP() << "no 8-bit locale is installed";
    }
    const std::vector<std::string> actual = WorkloadInItsOwnFolder();
    std::setlocale(LC_ALL, before.c_str());
    EXPECT_EQ(actual, expected);
}

TEST(SurroundingsLocale, IsLeftAsItWas)
{
    const TScopedCommaLocale locale;
    const std::string before = std::setlocale(LC_ALL, nullptr);
    WorkloadInItsOwnFolder();
    EXPECT_EQ(std::setlocale(LC_ALL, nullptr), before);
}

} // namespace
