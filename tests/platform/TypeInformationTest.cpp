#include "platform/TypeInformation.h"

#include "boundary/RunTimeType.h"
#include "contract/ForeignObject.h"
#include "support/TestObject.h"

#include <gtest/gtest.h>

namespace {

struct TThisTest;

TEST(TypeInformation, IsThereForObjectsOfThisCompiler)
{
    const TTestObject object;
    bool isDestroyed = false;
    TForeignObject<TThisTest> foreign(&isDestroyed);
    EXPECT_TRUE(Platform::MayHaveTypeInformation(object.Get()));
    EXPECT_TRUE(Platform::MayHaveTypeInformation(static_cast<QX_KRLSDK::QX_IBackgroundCorrection*>(&foreign)));
}

TEST(TypeInformation, TellsTheLibrarysObjectsFromOthers)
{
    const TTestObject object;
    bool isDestroyed = false;
    TForeignObject<TThisTest> foreign(&isDestroyed);
    EXPECT_EQ(RunTimeType::Cast<TBackgroundCorrectionProcessorUINT16>(object.Get()), &object.Processor());
    EXPECT_EQ(RunTimeType::Cast<TBackgroundCorrectionProcessorUINT16>(&foreign), nullptr);
}

} // namespace
