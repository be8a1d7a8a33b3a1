// ApplyCorrection with a delegate.
#include "support/RandomImages.h"
#include "support/RecordingDelegate.h"
#include "support/TestObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class Delegate : public testing::Test {
protected:
    Delegate()
    {
        object.Store("k", {4, 2, {9, 10, 20, 30, 9, 40, 50, 60}});
        object->SetActiveCorrection("k");
        object->SetRegion(1, 0, 3, 2);
        object->SetCorrectionLevel(50);
        delegate.result = 0xDEADBEEFu;
    }
    ~Delegate() override { EXPECT_EQ(delegate.reservedCalls, 0); }

    unsigned int Apply(unsigned short* toCorrect, unsigned short* into, bool useDelegate, bool processing, bool option)
    {
        delegate.calls.clear();
        return object->ApplyCorrection(toCorrect, 6, into, into != nullptr ? 6 : 0, &delegate, useDelegate, processing,
                                       option);
    }

    TTestObject object;
    TRecordingDelegate delegate;
    std::vector<unsigned short> image = {100, 100, 100, 100, 100, 100};
    std::vector<unsigned short> output = {1, 2, 3, 4, 5, 6};
};

TEST_F(Delegate, SubtractsInPlaceWithoutAnOutput)
{
    for (const bool processing : {false, true}) {
        for (const bool option : {false, true}) {
            EXPECT_EQ(Apply(image.data(), nullptr, true, processing, option), 0xDEADBEEFu);
            EXPECT_THAT(delegate.calls,
                        ElementsAre(TDelegateCall{"SubtractInPlace", nullptr, image.data(), 3, 2, processing, option}));
            EXPECT_THAT(delegate.lastBackground, ElementsAre(5, 10, 15, 20, 25, 30));
        }
    }
    EXPECT_THAT(image, Each(100)) << "the library itself subtracted";
}

TEST_F(Delegate, SubtractsIntoTheOutput)
{
    for (const bool processing : {false, true}) {
        for (const bool option : {false, true}) {
            EXPECT_EQ(Apply(image.data(), output.data(), true, processing, option), 0xDEADBEEFu);
            EXPECT_THAT(delegate.calls, ElementsAre(TDelegateCall{"SubtractInto", output.data(), image.data(), 3, 2,
                                                                  processing, option}));
            EXPECT_THAT(delegate.lastBackground, ElementsAre(5, 10, 15, 20, 25, 30));
        }
    }
    EXPECT_THAT(output, ElementsAre(1, 2, 3, 4, 5, 6)) << "the library itself wrote";
    EXPECT_EQ(Apply(image.data(), image.data(), true, false, false), 0xDEADBEEFu);
    EXPECT_EQ(delegate.calls.at(0).operation, "SubtractInto") << "an output equal to the image is an output";
}

// Allocators put large images at the beginning of a page, and the cache may not hold two such lines at a time.
TEST_F(Delegate, IsGivenALargeBackgroundAwayFromTheBeginningOfAPage)
{
    constexpr int kSize = 256;
    constexpr std::uintptr_t kPage = 4096;
    struct TWhere : TRecordingDelegate {
        unsigned int SubtractInPlace(unsigned short*, const unsigned short* given, int, int, bool, bool) override
        {
            background = given;
            return QX_KRLSDK::kSuccess;
        }
        const unsigned short* background = nullptr;
    } where;
    std::vector<unsigned short> large(std::size_t{kSize} * kSize, 100);
    object.Store("large", {kSize, kSize, std::vector<std::uint16_t>(large.size(), 14)}); // at 50 %: 7
    object->SetActiveCorrection("large");
    for (int time = 0; time < 3; ++time) { // which may get its memory from different places
        object->SetRegion(0, 0, 1, 1);
        object->SetRegion(0, 0, kSize, kSize);
        object->ApplyCorrection(large.data(), kSize * kSize, nullptr, 0, &where, true, false, false);
        ASSERT_NE(where.background, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(where.background) % kPage, 2064u);
        EXPECT_EQ(where.background[0], 7);
        EXPECT_EQ(where.background[large.size() - 1], 7);
        where.background = nullptr;
    }
}

TEST_F(Delegate, IsNotCalledUnlessItIsToBeUsed)
{
    for (const bool processing : {false, true}) {
        std::vector<unsigned short> copy = image;
        EXPECT_EQ(Apply(copy.data(), nullptr, false, processing, true), 0u);
        EXPECT_THAT(copy, ElementsAre(95, 90, 85, 80, 75, 70));
        EXPECT_EQ(Apply(image.data(), output.data(), false, processing, true), 0u);
        EXPECT_THAT(output, ElementsAre(95, 90, 85, 80, 75, 70));
        EXPECT_THAT(delegate.calls, IsEmpty());
    }
}

TEST_F(Delegate, ProcessesTheImageWhenNothingIsActive)
{
    object->SetActiveCorrection(nullptr);
    for (const bool option : {false, true}) {
        EXPECT_EQ(Apply(image.data(), nullptr, true, true, option), 0xDEADBEEFu);
        EXPECT_THAT(delegate.calls,
                    ElementsAre(TDelegateCall{"ProcessInPlace", nullptr, image.data(), 3, 2, false, false}));
        output.assign(6, 4711);
        EXPECT_EQ(Apply(image.data(), output.data(), true, true, option), 0xDEADBEEFu);
        EXPECT_THAT(delegate.calls,
                    ElementsAre(TDelegateCall{"ProcessInPlace", nullptr, image.data(), 3, 2, false, false}))
            << "the image, not the output";
        EXPECT_THAT(output, Each(100)) << "copied before";
    }
}

TEST_F(Delegate, ProcessesAfterTheCopy)
{
    object->SetActiveCorrection(nullptr);
    unsigned short seen = 0;
    delegate.action = [this, &seen] { seen = output[3]; };
    Apply(image.data(), output.data(), true, true, false);
    EXPECT_EQ(seen, 100);
}

TEST_F(Delegate, IsNotCalledWithNothingActiveAndNothingToProcess)
{
    object->SetActiveCorrection(nullptr);
    const bool combinations[][2] = {{false, false}, {false, true}, {true, false}};
    for (const auto& flags : combinations) {
        output.assign(6, 4711);
        EXPECT_EQ(Apply(image.data(), nullptr, flags[0], flags[1], true), 0u);
        EXPECT_EQ(Apply(image.data(), output.data(), flags[0], flags[1], true), 0u);
        EXPECT_THAT(output, Each(100));
        EXPECT_THAT(delegate.calls, IsEmpty());
    }
    EXPECT_THAT(image, Each(100));
}

TEST_F(Delegate, GetsANullImageWhenItSubtractsWithoutProcessing)
{
    EXPECT_EQ(Apply(nullptr, nullptr, true, false, true), 0xDEADBEEFu);
    EXPECT_THAT(delegate.calls, ElementsAre(TDelegateCall{"SubtractInPlace", nullptr, nullptr, 3, 2, false, true}));
    EXPECT_EQ(Apply(nullptr, output.data(), true, false, false), 0xDEADBEEFu);
    EXPECT_THAT(delegate.calls, ElementsAre(TDelegateCall{"SubtractInto", output.data(), nullptr, 3, 2, false, false}));
}

TEST_F(Delegate, DoesNotGetANullImageOtherwise)
{
    const bool combinations[][2] = {{false, false}, {false, true}, {true, true}};
    for (const bool isActive : {true, false}) {
        object->SetActiveCorrection(isActive ? "k" : nullptr);
        for (const auto& flags : combinations) {
            EXPECT_EQ(object.Outcome(Apply(nullptr, output.data(), flags[0], flags[1], false)),
                      (TOutcome{513, "The input image is NULL."}));
        }
    }
    EXPECT_THAT(delegate.calls, IsEmpty());
    EXPECT_THAT(output, ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(Delegate, ANullImageWithNothingActiveIsNotCopied)
{
    object->SetActiveCorrection(nullptr);
    EXPECT_EQ(Apply(nullptr, output.data(), true, false, false), 0u);
    EXPECT_THAT(output, ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(Apply(nullptr, nullptr, true, false, false), 0u);
    EXPECT_THAT(delegate.calls, IsEmpty());
}

TEST_F(Delegate, ThatIsNullLeavesNothingToDoWithANullImage)
{
    for (const bool isActive : {true, false}) {
        object->SetActiveCorrection(isActive ? "k" : nullptr);
        const std::vector<int> region = object.Region();
        const int length = region[2] * region[3];
        for (unsigned short* const into : {static_cast<unsigned short*>(nullptr), output.data()}) {
            EXPECT_EQ(object->ApplyCorrection(nullptr, length, into, length, nullptr, true, false, false), 0u);
            EXPECT_EQ(object->ApplyCorrection(nullptr, length, into, length, nullptr, true, true, false), 513u);
        }
    }
    EXPECT_THAT(output, ElementsAre(1, 2, 3, 4, 5, 6));
}

TEST_F(Delegate, IsNotAskedWhenTheLengthsAreWrong)
{
    delegate.calls.clear();
    EXPECT_EQ(object->ApplyCorrection(nullptr, 6, output.data(), 3, &delegate, true, false, false), 516u);
    EXPECT_EQ(object->ApplyCorrection(nullptr, 3, output.data(), 3, &delegate, true, false, false), 514u);
    EXPECT_EQ(object->ApplyCorrection(image.data(), 3, nullptr, 0, &delegate, true, true, false), 514u);
    EXPECT_THAT(delegate.calls, IsEmpty());
}

TEST_F(Delegate, ResultIsReturnedAsItIsAndLeavesNoText)
{
    for (const bool isActive : {true, false}) {
        if (!isActive) {
            object->SetActiveCorrection(nullptr);
        }
        for (const unsigned int result : {0u, 513u, 770u, 0xFFFFFFFFu}) {
            delegate.result = result;
            EXPECT_EQ(object.Outcome(Apply(image.data(), nullptr, true, true, false)), (TOutcome{result, ""}));
            EXPECT_EQ(object.Outcome(Apply(image.data(), output.data(), true, true, false)), (TOutcome{result, ""}));
            EXPECT_EQ(delegate.calls.size(), 1u);
        }
    }
}

TEST_F(Delegate, MayCallTheSameObjectFromTheSameThread)
{
    std::string key;
    int width = 0;
    delegate.action = [this, &key, &width] {
        int other = 0;
        key = object->GetActiveCorrectionKey();
        object->GetRegion(&other, &other, &width, &other);
        object->DeleteCorrection(nullptr);
    };
    delegate.result = 7;
    EXPECT_EQ(object.Outcome(Apply(image.data(), nullptr, true, false, false)), (TOutcome{7, "Supplied key is NULL."}));
    EXPECT_EQ(key, "k");
    EXPECT_EQ(width, 3);
}

} // namespace
