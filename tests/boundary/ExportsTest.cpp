#include "QX_BackgroundCorrection.h"

#include "contract/ForeignObject.h"
#include "processor/TBackgroundCorrectionProcessorUINT16.h"
#include "support/AllocationFaults.h"
#include "support/TestObject.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace {

using QX_KRLSDK::QX_IBackgroundCorrection;

struct TThisTest;
using TForeign = TForeignObject<TThisTest>;

constexpr char kNotAnInstance[] = "Cannot delete object as it is not a valid QX_IBackgroundCorrection instance.";

// Taken before any test can have caused a failure.
const char* const libraryErrorAtLoad = GetLastBackgroundCorrectionDLLError();
const std::string libraryErrorTextAtLoad = libraryErrorAtLoad != nullptr ? libraryErrorAtLoad : "(null)";

TEST(Exports, LibraryErrorIsEmptyBeforeAnyFailure)
{
    EXPECT_EQ(libraryErrorTextAtLoad, "");
}

TEST(Exports, LibraryErrorNeverMoves)
{
    EXPECT_EQ(GetLastBackgroundCorrectionDLLError(), libraryErrorAtLoad);
}

TEST(Exports, CreateMakesALiveProcessor)
{
    QX_IBackgroundCorrection* const object = CreateBackgroundCorrection();
    ASSERT_NE(object, nullptr);
    EXPECT_NE(dynamic_cast<TBackgroundCorrectionProcessorUINT16*>(object), nullptr);
    EXPECT_EQ(DeleteBackgroundCorrection(object), 0u);
}

TEST(Exports, DeletingNullDoesNothing)
{
    const std::string before = GetLastBackgroundCorrectionDLLError();
    EXPECT_EQ(DeleteBackgroundCorrection(nullptr), 0u);
    EXPECT_EQ(GetLastBackgroundCorrectionDLLError(), before);
}

TEST(Exports, DeletingAForeignObjectIsRefusedAndLeavesItAlive)
{
    bool isDestroyed = false;
    {
        TForeign foreign(&isDestroyed);
        EXPECT_EQ(DeleteBackgroundCorrection(&foreign), 513u);
        EXPECT_FALSE(isDestroyed);
        EXPECT_EQ(foreign.GetNumberOfCorrections(), 4711u);
    }
    EXPECT_TRUE(isDestroyed) << "the foreign object cannot tell its end";
    EXPECT_STREQ(GetLastBackgroundCorrectionDLLError(), kNotAnInstance);
}

TEST(Exports, LibraryErrorSurvivesLaterSuccesses)
{
    bool isDestroyed = false;
    TForeign foreign(&isDestroyed);
    DeleteBackgroundCorrection(&foreign);
    EXPECT_EQ(DeleteBackgroundCorrection(CreateBackgroundCorrection()), 0u);
    EXPECT_EQ(DeleteBackgroundCorrection(nullptr), 0u);
    EXPECT_STREQ(GetLastBackgroundCorrectionDLLError(), kNotAnInstance);
}

TEST(Exports, DeletionFreesTheCorrectionsAndTheScaledBackground)
{
    const std::size_t before = TAllocationFaults::LiveBlocks();
    {
        QX_IBackgroundCorrection* const object = CreateBackgroundCorrection();
        const unsigned short pixels[6] = {1, 2, 3, 4, 5, 6};
        const unsigned short* frames[1] = {pixels};
        ASSERT_EQ(object->AddCorrection("a", frames, 1, 3, 2, 1.0f, 1.0f), 0u);
        ASSERT_EQ(object->AddCorrection("b", frames, 1, 2, 3, 1.0f, 1.0f), 0u);
        ASSERT_EQ(object->SetActiveCorrection("b"), 0u);
        ASSERT_EQ(object->DeleteCorrection("a"), 0u);
        ASSERT_EQ(DeleteBackgroundCorrection(object), 0u);
    }
    EXPECT_EQ(TAllocationFaults::LiveBlocks(), before);
}

TEST(Exports, DeletingThroughTheInterfaceDestroysTheWholeObject)
{
    const std::size_t before = TAllocationFaults::LiveBlocks();
    delete CreateBackgroundCorrection();
    EXPECT_EQ(TAllocationFaults::LiveBlocks(), before);
}

TEST(Exports, CreateWithoutMemoryGivesNullOrBadAllocAndLeaksNothing)
{
    for (std::size_t failAt = 1;; ++failAt) {
        const std::size_t before = TAllocationFaults::LiveBlocks();
        QX_IBackgroundCorrection* object = nullptr;
        bool isThrown = false;
        TAllocationFaults faults(failAt);
        try {
            object = CreateBackgroundCorrection();
        } catch (const std::bad_alloc&) {
            isThrown = true;
        }
        faults.Disarm();
        if (!faults.Fired()) {
            EXPECT_GT(failAt, 1u) << "an object without memory";
            EXPECT_NE(object, nullptr);
            DeleteBackgroundCorrection(object);
            break;
        }
        EXPECT_TRUE(isThrown || object == nullptr) << "allocation " << failAt;
        EXPECT_EQ(TAllocationFaults::LiveBlocks(), before) << "allocation " << failAt;
    }
}

} // namespace
