#include "boundary/TZRException.h"

#include "support/AllocationFaults.h"
#include "support/ScopedLocale.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

TEST(TZRException, FormatsLikePrintf)
{
    const TZRException exception("Index %d is out of range - Size = %d, '%s'", -3, 7, "key");
    EXPECT_STREQ(exception.what(), "Index -3 is out of range - Size = 7, 'key'");
}

TEST(TZRException, CutsTextsAt512Characters)
{
    const std::string longText(600, 'x');
    EXPECT_EQ(TZRException("%s", longText.c_str()).what(), std::string(512, 'x'));
    EXPECT_EQ(TZRException("%s", longText.substr(0, 512).c_str()).what(), std::string(512, 'x'));
    EXPECT_EQ(TZRException("%s", longText.substr(0, 511).c_str()).what(), std::string(511, 'x'));
    EXPECT_EQ(TZRException("<%s>", longText.c_str()).what(), "<" + std::string(511, 'x'));
}

TEST(TZRException, CopyOutlivesTheOriginal)
{
    auto original = std::make_unique<TZRException>("first %d", 1);
    const TZRException copy(*original);
    original.reset();
    EXPECT_STREQ(copy.what(), "first 1");
}

TEST(TZRException, IsCaughtAsStandardException)
{
    try {
        throw TZRException("text");
    } catch (const std::exception& caught) {
        EXPECT_STREQ(caught.what(), "text");
        return;
    }
    FAIL() << "not a std::exception";
}

TEST(TZRException, NeedsNoMemory)
{
    TAllocationFaults faults(1, TFaultRepeat::kForGood);
    bool isComplete = false;
    try {
        throw TZRException("%s [ %f ]", "The key is not valid", 0.5);
    } catch (const TZRException& caught) {
        isComplete = std::char_traits<char>::compare(caught.what(), "The key is not valid [ 0.500000 ]", 34) == 0;
    }
    faults.Disarm();
    EXPECT_TRUE(isComplete);
    EXPECT_FALSE(faults.Fired());
}

TEST(TZRException, WritesNumbersWithSixDecimals)
{
    EXPECT_STREQ(TZRException("[ %f ] * [ %f ]", 0.5, 0.0).what(), "[ 0.500000 ] * [ 0.000000 ]");
    EXPECT_STREQ(TZRException("%f %f", -1234567.125, 1e15).what(), "-1234567.125000 1000000000000000.000000");
}

TEST(TZRException, WritesADecimalPointWhateverTheHostHasSet)
{
    const TScopedCommaLocale comma;
    if (!comma.IsSet()) {
        GTEST_SKIP() << "this system has no locale with a decimal comma installed";
    }
    EXPECT_STREQ(TZRException("[ %f ] * [ %f ]", 0.5, 1.25).what(), "[ 0.500000 ] * [ 1.250000 ]");
    EXPECT_EQ(std::localeconv()->decimal_point[0], ',') << "the host's setting was changed";
}

} // namespace
