// The texts that failures leave: how long they live, how long they get, what may be handed back in.
#include "support/TestObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Message, StaysAfterASuccess)
{
    const TTestObject object;
    EXPECT_EQ(object->DeleteCorrection(nullptr), 513u);
    EXPECT_EQ(object.AddFrames("k", {kPixel}), 0u);
    EXPECT_EQ(object->SetActiveCorrection("k"), 0u);
    EXPECT_EQ(object->SetCorrectionLevel(50), 0u);
    EXPECT_EQ(object->ClearCorrections(), 0u);
    EXPECT_EQ(object.Message(), "Supplied key is NULL.");
}

TEST(Message, IsReplacedByTheNextFailure)
{
    const TTestObject object;
    object->SetActiveCorrection("a rather long key, longer than what follows");
    EXPECT_EQ(object.Outcome(object->DeleteCorrection(nullptr)), (TOutcome{513, "Supplied key is NULL."}));
}

TEST(Message, NeverMoves)
{
    const TTestObject object;
    const char* const text = object->GetLastErrorMessage();
    object->DeleteCorrection(nullptr);
    object.Store("k", kPixel);
    object->ClearCorrections();
    EXPECT_EQ(object->GetLastErrorMessage(), text);
}

TEST(Message, IsCutAt256Characters)
{
    const struct {
        std::string before;
        unsigned int (*call)(const TTestObject& object, const char* key);
    } rows[] = {
        {"Background correction key not found - '",
         [](const TTestObject& object, const char* key) { return object->SetActiveCorrection(key); }},
        {"The supplied key was not found - '",
         [](const TTestObject& object, const char* key) { return object->DeleteCorrection(key); }},
        {"Could not add background correction - 'Supplied Key is not unique - '",
         [](const TTestObject& object, const char* key) {
             object.Store(key, kPixel);
             return object.AddFrames(key, {kPixel});
         }},
        {"Couldn't create new background entry - 'Supplied Key is not unique - '",
         [](const TTestObject& object, const char* key) {
             object.Store(key, kPixel);
             return object.Store(key, kPixel);
         }},
    };
    for (const auto& row : rows) {
        const std::size_t room = 256 - row.before.size();
        for (const std::size_t length :
             {room - 3, room - 2, room - 1, room, room + 1, std::size_t{300}, std::size_t{512}}) {
            const TTestObject object;
            const std::string key(length, 'k');
            EXPECT_NE(row.call(object, key.c_str()), 0u);
            const std::string quotes = row.before.find(" - 'S") != std::string::npos ? "''" : "'";
            EXPECT_EQ(object.Message(), (row.before + key + quotes).substr(0, 256)) << length;
        }
    }
}

TEST(Message, TakesKeysLiterally)
{
    const TTestObject object;
    EXPECT_EQ(object.Outcome(object->SetActiveCorrection("%s%n%d")),
              (TOutcome{513, "Background correction key not found - '%s%n%d'"}));
    EXPECT_EQ(object.Outcome(object->DeleteCorrection("100 % 'dark'")),
              (TOutcome{513, "The supplied key was not found - '100 % 'dark''"}));
    ASSERT_EQ(object.AddFrames("%s", {kPixel}), 0u);
    EXPECT_EQ(object.Outcome(object.AddFrames("%S", {kPixel})),
              (TOutcome{513, "Could not add background correction - 'Supplied Key is not unique - '%S''"}));
    EXPECT_EQ(object.Outcome(object->SetActiveCorrection("\xE9\xFF")),
              (TOutcome{513, "Background correction key not found - '\xE9\xFF'"}));
}

TEST(Message, MayBeHandedBackInAsAKey)
{
    const TTestObject object;
    object->DeleteCorrection(nullptr);
    EXPECT_EQ(object.Outcome(object->SetActiveCorrection(object->GetLastErrorMessage())),
              (TOutcome{513, "Background correction key not found - 'Supplied key is NULL.'"}));
    object->DeleteCorrection(nullptr);
    EXPECT_EQ(object.Outcome(object->DeleteCorrection(object->GetLastErrorMessage())),
              (TOutcome{513, "The supplied key was not found - 'Supplied key is NULL.'"}));
    object->DeleteCorrection(nullptr);
    EXPECT_EQ(object.AddFrames(object->GetLastErrorMessage(), {kPixel}), 0u);
    EXPECT_STREQ(object->GetCorrectionKey(0), "Supplied key is NULL.");
    EXPECT_EQ(object.Outcome(object.AddFrames(object->GetLastErrorMessage(), {kPixel})),
              (TOutcome{513, "Could not add background correction - 'Supplied Key is not unique - 'Supplied key is "
                             "NULL.''"}));
    object->DeleteCorrection(nullptr);
    EXPECT_EQ(object.Outcome(object->LoadFile(object->GetLastErrorMessage())),
              (TOutcome{769, "Could not open file - 'Supplied key is NULL.'"}));
}

TEST(Message, CutOneMayBeHandedBackInAgainAndAgain)
{
    const TTestObject object;
    object->SetActiveCorrection(std::string(300, 'k').c_str());
    std::string expected = object.Message();
    for (int round = 0; round < 10; ++round) {
        expected = ("Background correction key not found - '" + expected + "'").substr(0, 256);
        EXPECT_EQ(object.Outcome(object->SetActiveCorrection(object->GetLastErrorMessage())),
                  (TOutcome{513, expected}));
    }
}

TEST(Message, KeysThatTheLibraryHandedOutMayBeHandedBackIn)
{
    const TTestObject object;
    object.Store("first", kPixel);
    object.Store("second", kPixel);
    EXPECT_EQ(object->SetActiveCorrection(object->GetCorrectionKey(1)), 0u);
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "second");
    EXPECT_EQ(object->SetActiveCorrection(object->GetActiveCorrectionKey()), 0u);
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "second");
    EXPECT_EQ(object.AddFrames(object->GetCorrectionKey(0), {kPixel}), 513u);
    EXPECT_EQ(object.Message(), "Could not add background correction - 'Supplied Key is not unique - 'first''");
    EXPECT_EQ(object->DeleteCorrection(object->GetCorrectionKey(0)), 0u);
    EXPECT_THAT(object.Keys(), testing::ElementsAre("second"));
}

} // namespace
