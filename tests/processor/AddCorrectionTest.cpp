#include "support/RandomImages.h"
#include "support/ScopedLocale.h"
#include "support/TestObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

namespace {

using testing::ElementsAre;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

struct TArguments {
    const char* key;
    bool hasFrames;
    int frameCount;
    int width;
    int height;
    float exposureSeconds;
    float lightIntensityPercent;
};

constexpr TArguments kGood = {"new", true, 1, 1, 1, 1.0f, 1.0f};
constexpr TArguments kBad = {nullptr, false, 0, 0, -1, 0.0f, -5.0f};

TOutcome Add(const TTestObject& object, const TArguments& arguments)
{
    const unsigned short pixels[4] = {1, 2, 3, 4};
    const unsigned short* frames[2] = {pixels, pixels};
    return object.Outcome(object->AddCorrection(arguments.key, arguments.hasFrames ? frames : nullptr,
                                                arguments.frameCount, arguments.width, arguments.height,
                                                arguments.exposureSeconds, arguments.lightIntensityPercent));
}

const TOutcome kRefusals[] = {
    {513, "Input key is NULL."},
    {514, "Input images are NULL."},
    {515, "Invalid number of images."},
    {516, "Invalid input width."},
    {517, "Invalid input height."},
    {518, "Exposure time must be greater than zero."},
    {519, "Light intensity must be greater than zero."},
};

// kGood up to argument `count`, kBad from there on.
TArguments GoodUpTo(int count)
{
    TArguments arguments = kBad;
    arguments.key = count > 0 ? kGood.key : kBad.key;
    arguments.hasFrames = count > 1 ? kGood.hasFrames : kBad.hasFrames;
    arguments.frameCount = count > 2 ? kGood.frameCount : kBad.frameCount;
    arguments.width = count > 3 ? kGood.width : kBad.width;
    arguments.height = count > 4 ? kGood.height : kBad.height;
    arguments.exposureSeconds = count > 5 ? kGood.exposureSeconds : kBad.exposureSeconds;
    return arguments;
}

TEST(AddCorrection, ReportsTheFirstBadArgumentWhenAllLaterOnesAreBadToo)
{
    const TTestObject object;
    for (int first = 0; first < 7; ++first) {
        EXPECT_EQ(Add(object, GoodUpTo(first)), kRefusals[first]) << "argument " << first + 1;
    }
    EXPECT_EQ(object->GetNumberOfCorrections(), 0u);
    EXPECT_FALSE(object.Processor().IsModified());
}

TEST(AddCorrection, RefusesEachBadArgumentOnItsOwn)
{
    const struct {
        TArguments arguments;
        const TOutcome& refusal;
    } rows[] = {
        {{nullptr, true, 1, 1, 1, 1.0f, 1.0f}, kRefusals[0]}, {{"k", false, 1, 1, 1, 1.0f, 1.0f}, kRefusals[1]},
        {{"k", true, 0, 1, 1, 1.0f, 1.0f}, kRefusals[2]},     {{"k", true, -1, 1, 1, 1.0f, 1.0f}, kRefusals[2]},
        {{"k", true, 1, 0, 1, 1.0f, 1.0f}, kRefusals[3]},     {{"k", true, 1, -7, 1, 1.0f, 1.0f}, kRefusals[3]},
        {{"k", true, 1, 1, 0, 1.0f, 1.0f}, kRefusals[4]},     {{"k", true, 1, 1, -1, 1.0f, 1.0f}, kRefusals[4]},
        {{"k", true, 1, 1, 1, 0.0f, 1.0f}, kRefusals[5]},     {{"k", true, 1, 1, 1, -0.0f, 1.0f}, kRefusals[5]},
        {{"k", true, 1, 1, 1, -1.0f, 1.0f}, kRefusals[5]},    {{"k", true, 1, 1, 1, -kInfinity, 1.0f}, kRefusals[5]},
        {{"k", true, 1, 1, 1, 1.0f, 0.0f}, kRefusals[6]},     {{"k", true, 1, 1, 1, 1.0f, -0.0f}, kRefusals[6]},
        {{"k", true, 1, 1, 1, 1.0f, -5.0f}, kRefusals[6]},    {{"k", true, 1, 1, 1, kNaN, -1.0f}, kRefusals[6]},
    };
    for (const auto& row : rows) {
        const TTestObject object;
        EXPECT_EQ(Add(object, row.arguments), row.refusal);
        EXPECT_EQ(object->GetNumberOfCorrections(), 0u);
        EXPECT_FALSE(object.Processor().IsModified());
    }
}

TEST(AddCorrection, AcceptsWhatIsNotBelowOrEqualToZero)
{
    const struct {
        float exposureSeconds;
        float lightIntensityPercent;
    } rows[] = {{kNaN, 1.0f}, {1.0f, kNaN}, {kNaN, kNaN}, {kInfinity, 1.0f}, {1e-38f, 1.0f}, {1e-30f, 1e10f}};
    for (const auto& row : rows) {
        const TTestObject object;
        EXPECT_EQ(Add(object, {"k", true, 1, 1, 1, row.exposureSeconds, row.lightIntensityPercent}).code, 0u);
        object->SetActiveCorrection("k");
        float exposure = -1.0f;
        float intensity = -1.0f;
        object->GetReferenceExposureAndIntensity(&exposure, &intensity);
        EXPECT_TRUE(exposure == row.exposureSeconds || (std::isnan(exposure) && std::isnan(row.exposureSeconds)));
        EXPECT_TRUE(intensity == row.lightIntensityPercent ||
                    (std::isnan(intensity) && std::isnan(row.lightIntensityPercent)));
    }
}

TEST(AddCorrection, QuotesWhatTheDataLayerRefuses)
{
    const TTestObject object;
    ASSERT_EQ(Add(object, {"dark", true, 1, 1, 1, 1.0f, 1.0f}).code, 0u);
    EXPECT_EQ(Add(object, {"", true, 1, 1, 1, 1.0f, 1.0f}),
              (TOutcome{513, "Could not add background correction - 'The key is not valid - ''.'"}));
    EXPECT_EQ(Add(object, {"Dark", true, 1, 1, 1, 1.0f, 1.0f}),
              (TOutcome{513, "Could not add background correction - 'Supplied Key is not unique - 'Dark''"}));
    EXPECT_EQ(Add(object, {"k", true, 1, 1, 1, 1e-30f, 1e-30f}),
              (TOutcome{513, "Could not add background correction - 'Reference exposure and light intensity product is "
                             "zero [ 0.000000 ] * [ 0.000000 ].'"}));
    EXPECT_EQ(Add(object, {"k", true, 1, 46341, 46341, 1.0f, 1.0f}),
              (TOutcome{513, "Could not add background correction - 'Ran out of memory in Background correction "
                             "construction.\nTry restarting the application if the problem persists.'"}));
    EXPECT_EQ(Add(object, {"k", true, 2, 65536, 65536, 1.0f, 1.0f}).code, 513u);
    EXPECT_THAT(object.Keys(), ElementsAre("dark"));
}

TEST(AddCorrection, WritesADecimalPointWhateverTheHostHasSet)
{
    const TScopedCommaLocale comma;
    if (!comma.IsSet()) {
        GTEST_SKIP() << "this system has no locale with a decimal comma installed";
    }
    const TTestObject object;
    EXPECT_THAT(Add(object, {"k", true, 1, 1, 1, 1e-30f, 1e-30f}).text,
                testing::HasSubstr("zero [ 0.000000 ] * [ 0.000000 ]."));
}

TEST(AddCorrection, LeavesTheModifiedFlagAsItWasOnFailureAndSetsItOnSuccess)
{
    const TTestObject object;
    Add(object, {"", true, 1, 1, 1, 1.0f, 1.0f});
    EXPECT_FALSE(object.Processor().IsModified());
    Add(object, kGood);
    EXPECT_TRUE(object.Processor().IsModified());
    Add(object, kGood);
    EXPECT_TRUE(object.Processor().IsModified());
}

TEST(AddCorrection, DoesNotChangeTheActiveCorrection)
{
    const TTestObject object;
    Add(object, {"a", true, 1, 2, 1, 1.0f, 1.0f});
    EXPECT_EQ(object->GetActiveCorrectionKey(), nullptr);
    object->SetActiveCorrection("a");
    Add(object, {"b", true, 1, 1, 2, 1.0f, 1.0f});
    EXPECT_STREQ(object->GetActiveCorrectionKey(), "a");
    EXPECT_THAT(object.Region(), ElementsAre(0, 0, 2, 1));
    EXPECT_THAT(object.Keys(), ElementsAre("a", "b"));
}

// The stored image, read back through an activation that scales by one.
std::vector<std::uint16_t> Stored(const std::vector<Literal::TImage>& frames)
{
    const TTestObject object;
    EXPECT_EQ(object.AddFrames("k", frames), 0u);
    EXPECT_EQ(object->SetActiveCorrection("k"), 0u);
    return object.Background();
}

TEST(AddCorrection, AveragesAndFiltersLikeTheLiteralArithmetic)
{
    TRandomImages random(50);
    for (const TImageSize size : kAwkwardSizes) {
        for (const int frameCount : {1, 2, 10}) {
            const auto frames = random.Stack(frameCount, size.width, size.height);
            ASSERT_EQ(Stored(frames), Literal::Correction(frames).pixels)
                << frameCount << " frames of " << size.width << " x " << size.height;
        }
    }
}

TEST(AddCorrection, AveragesManyBrightFramesLikeTheLiteralArithmetic)
{
    TRandomImages random(51);
    const auto frames = random.Stack(300, 17, 5, 65500, 65535);
    EXPECT_EQ(Stored(frames), Literal::Correction(frames).pixels);
}

TEST(AddCorrection, RoundsTheAverageHalfUp)
{
    EXPECT_THAT(Stored({{1, 1, {1}}, {1, 1, {2}}}), ElementsAre(2));
    EXPECT_THAT(Stored({{1, 1, {1}}, {1, 1, {1}}}), ElementsAre(1));
    EXPECT_THAT(Stored({{1, 1, {0}}, {1, 1, {0}}, {1, 1, {1}}}), ElementsAre(0));
}

TEST(AddCorrection, FiltersASingleFrameToo)
{
    Literal::TImage frame = FlatImage(7, 5, 100);
    frame.pixels[17] = 65535;
    EXPECT_THAT(Stored({frame}), testing::Each(100));
    EXPECT_THAT(Stored({{1, 3, {1, 5, 9}}}), ElementsAre(5, 5, 9));
}

TEST(AddCorrection, AcceptsKeysOf512CharactersAndCutsLongerOnes)
{
    const TTestObject object;
    const std::string exact(512, 'k');
    const std::string longer(600, 'x');
    ASSERT_EQ(object.AddFrames(exact.c_str(), {{1, 1, {1}}}), 0u);
    ASSERT_EQ(object.AddFrames(longer.c_str(), {{1, 1, {1}}}), 0u);
    EXPECT_THAT(object.Keys(), ElementsAre(exact, longer.substr(0, 512)));
    EXPECT_EQ(object.AddFrames(longer.c_str(), {{1, 1, {1}}}), 513u) << "the same key once it is cut";
    EXPECT_EQ(object->SetActiveCorrection(longer.c_str()), 513u) << "a search does not cut";
    EXPECT_EQ(object->SetActiveCorrection(longer.substr(0, 512).c_str()), 0u);
}

} // namespace
