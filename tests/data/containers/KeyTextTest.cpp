// The text of a key, on both sides of the length that lies within the object.
#include "data/containers/TKeyText.h"

#include "support/AllocationFaults.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <utility>

namespace {

const std::string kShort(TKeyText::kShortLength, 's');
const std::string kLong(TKeyText::kShortLength + 1, 'l');
const std::string kLonger(200, 'm');

std::string Repeated(const std::string& text, char letter)
{
    return std::string(text.size(), letter);
}

TEST(KeyText, HoldsTextsOfAnyLength)
{
    EXPECT_STREQ(TKeyText().Text(), "");
    for (const std::string& text : {std::string(), std::string("k"), kShort, kLong, kLonger}) {
        EXPECT_EQ(TKeyText(text.c_str()).Text(), text);
    }
}

TEST(KeyText, ChangesFromAnyLengthToAnyOther)
{
    for (const std::string& before : {std::string("k"), kShort, kLong, kLonger}) {
        for (const std::string& after :
             {std::string(), std::string("n"), Repeated(kShort, 'n'), Repeated(kLong, 'n'), Repeated(kLonger, 'n')}) {
            TKeyText key(before.c_str());
            key.Assign(after.data(), after.size());
            EXPECT_EQ(key.Text(), after) << before;
        }
    }
}

TEST(KeyText, TakesPartOfItself)
{
    TKeyText key(kLonger.c_str());
    key.Assign(key.Text() + 190, 10);
    EXPECT_EQ(key.Text(), std::string(10, 'm'));
    key.Assign(key.Text() + 8, 2);
    EXPECT_STREQ(key.Text(), "mm");
}

TEST(KeyText, StaysWhereItIsForATextAsLong)
{
    for (const std::string& text : {kShort, kLong, kLonger}) {
        const std::string other = Repeated(text, 'o');
        TKeyText key(text.c_str());
        const char* const place = key.Text();
        TAllocationFaults noMemory(1, TFaultRepeat::kForGood);
        key.Assign(other.data(), other.size());
        noMemory.Disarm();
        EXPECT_EQ(key.Text(), place);
        EXPECT_EQ(key.Text(), other);
    }
}

TEST(KeyText, StaysAsItWasWithoutMemory)
{
    TKeyText key("before");
    bool hasFailed = false;
    TAllocationFaults noMemory(1);
    try {
        key.Assign(kLong.data(), kLong.size());
    } catch (const std::bad_alloc&) {
        hasFailed = true;
    }
    noMemory.Disarm();
    EXPECT_TRUE(hasFailed);
    EXPECT_STREQ(key.Text(), "before");
}

TEST(KeyText, MovesAndLeavesNothing)
{
    for (const std::string& text : {std::string("k"), kShort, kLonger}) {
        TKeyText key(text.c_str());
        const TKeyText moved(std::move(key));
        EXPECT_EQ(moved.Text(), text);
        EXPECT_STREQ(key.Text(), ""); // NOLINT: looked at on purpose
    }
}

} // namespace
