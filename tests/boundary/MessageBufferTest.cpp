#include "boundary/TMessageBuffer.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(MessageBuffer, IsEmptyAtFirst)
{
    const TObjectMessageBuffer buffer;
    EXPECT_TRUE(buffer.IsEmpty());
    EXPECT_STREQ(buffer.Text(), "");
}

TEST(MessageBuffer, HoldsAtMost256CharactersAndATerminator)
{
    TObjectMessageBuffer buffer;
    const std::string text(300, 'k');
    for (const std::size_t length : {255u, 256u, 257u, 300u}) {
        buffer.Format("%s", text.substr(0, length).c_str());
        EXPECT_EQ(std::string(buffer.Text()).size(), length < 256 ? length : 256);
    }
}

TEST(MessageBuffer, OfTheLibraryHolds512Characters)
{
    TLibraryMessageBuffer buffer;
    buffer.Format("%s", std::string(600, 'k').c_str());
    EXPECT_EQ(buffer.Text(), std::string(512, 'k'));
}

TEST(MessageBuffer, AShorterTextReplacesALongerOne)
{
    TObjectMessageBuffer buffer;
    buffer.Format("%s", "a longer text");
    buffer.Format("%d", 7);
    EXPECT_STREQ(buffer.Text(), "7");
}

TEST(MessageBuffer, AcceptsItsOwnTextAsArgument)
{
    TObjectMessageBuffer buffer;
    buffer.Format("dark");
    buffer.Format("'%s' and '%s'", buffer.Text(), buffer.Text() + 1);
    EXPECT_STREQ(buffer.Text(), "'dark' and 'ark'");
}

TEST(MessageBuffer, ClearsToAnEmptyText)
{
    TObjectMessageBuffer buffer;
    buffer.Format("dark");
    buffer.Clear();
    EXPECT_TRUE(buffer.IsEmpty());
    EXPECT_STREQ(buffer.Text() + 1, "");
}

} // namespace
