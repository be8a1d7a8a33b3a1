// What hosts have compiled in: these numbers and types never change.
#include "QX_BackgroundCorrection.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace {

using namespace QX_KRLSDK;

TEST(PublicHeader, CodesHaveTheirPublishedNumbers)
{
    EXPECT_EQ(kSuccess, 0u);
    EXPECT_EQ(kListEndedWhileSaving, 0x10Fu);
    EXPECT_EQ(kFirstArgumentInvalid, 0x201u);
    EXPECT_EQ(kSecondArgumentInvalid, 0x202u);
    EXPECT_EQ(kThirdArgumentInvalid, 0x203u);
    EXPECT_EQ(kFourthArgumentInvalid, 0x204u);
    EXPECT_EQ(kFifthArgumentInvalid, 0x205u);
    EXPECT_EQ(kSixthArgumentInvalid, 0x206u);
    EXPECT_EQ(kSeventhArgumentInvalid, 0x207u);
    EXPECT_EQ(kFileNameInvalid, 0x300u);
    EXPECT_EQ(kFileNotAccessible, 0x301u);
    EXPECT_EQ(kHeaderOnlyMode, 0x302u);
    EXPECT_EQ(kFileNotFound, 0x303u);
    EXPECT_EQ(kStructureVersionWrong, 0x304u);
    EXPECT_EQ(kOperationFailed, 0x400u);
    EXPECT_EQ(kNoCorrectionActive, 0x500u);
    EXPECT_EQ(kShortReadOrWrite, static_cast<unsigned int>(-1));
    EXPECT_EQ(kUnexpectedRecord, static_cast<unsigned int>(-2));
    EXPECT_EQ(kMaximumKeyLength, 512u);
}

TEST(PublicHeader, VersionTextHasTheThreeNumbers)
{
    EXPECT_EQ(QX_BACKGROUNDCORRECTION_VERSION_TEXT, std::to_string(QX_BACKGROUNDCORRECTION_VERSION_MAJOR) + "." +
                                                        std::to_string(QX_BACKGROUNDCORRECTION_VERSION_MINOR) + "." +
                                                        std::to_string(QX_BACKGROUNDCORRECTION_VERSION_PATCH));
}

TEST(PublicHeader, InterfaceIsAbstractAndHasNoData)
{
    EXPECT_TRUE(std::is_abstract_v<QX_IBackgroundCorrection>);
    EXPECT_TRUE(std::has_virtual_destructor_v<QX_IBackgroundCorrection>);
    EXPECT_EQ(sizeof(QX_IBackgroundCorrection), sizeof(void*));
    EXPECT_TRUE(std::is_abstract_v<ICorrectionDelegate>);
    EXPECT_TRUE(std::has_virtual_destructor_v<ICorrectionDelegate>);
    EXPECT_EQ(sizeof(ICorrectionDelegate), sizeof(void*));
}

TEST(PublicHeader, FunctionTypesFitTheExports)
{
    EXPECT_TRUE((std::is_same_v<decltype(&CreateBackgroundCorrection), CreateBackgroundCorrectionFunction>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(&CreateBackgroundCorrectionOffline), CreateBackgroundCorrectionOfflineFunction>));
    EXPECT_TRUE((std::is_same_v<decltype(&DeleteBackgroundCorrection), DeleteBackgroundCorrectionFunction>));
    EXPECT_TRUE(
        (std::is_same_v<decltype(&GetLastBackgroundCorrectionDLLError), GetLastBackgroundCorrectionDLLErrorFunction>));
}

} // namespace
