// The text of a refused deletion is the process's, and has no lock.
#include "threads/ThreadHost.h"

#include "processor/TBackgroundCorrectionProcessorUINT16.h"

#include <gtest/gtest.h>

using namespace ThreadHost;

namespace {

// Of neither class of the library.
class TForeignObject : public QX_IBackgroundCorrection {
public:
    unsigned int AddCorrection(const char*, const unsigned short**, int, int, int, float, float) override { return 0; }
    unsigned int SetActiveCorrection(const char*) override { return 0; }
    const char* GetActiveCorrectionKey() override { return nullptr; }
    const char* GetCorrectionKey(unsigned int) override { return nullptr; }
    unsigned int GetNumberOfCorrections() override { return 0; }
    unsigned int ClearCorrections() override { return 0; }
    unsigned int DeleteCorrection(const char*) override { return 0; }
    unsigned int SetCorrectionLevel(int) override { return 0; }
    int GetCorrectionLevel() override { return 0; }
    unsigned int SetExposureAndIntensity(float, float) override { return 0; }
    unsigned int GetExposureAndIntensity(float*, float*) override { return 0; }
    unsigned int GetReferenceExposureAndIntensity(float*, float*) override { return 0; }
    unsigned int GetCorrectionStatistics(unsigned short*, unsigned short*, unsigned short*) override { return 0; }
    unsigned int GetScaledCorrectionStatistics(unsigned short*, unsigned short*, unsigned short*) override { return 0; }
    unsigned int ApplyCorrection(unsigned short*, int, unsigned short*, int, QX_KRLSDK::ICorrectionDelegate*, bool,
                                 bool, bool) override
    {
        return 0;
    }
    unsigned int SetRegion(int, int, int, int) override { return 0; }
    unsigned int GetRegion(int*, int*, int*, int*) override { return 0; }
    unsigned int ImportCorrections(QX_IBackgroundCorrection*, bool) override { return 0; }
    unsigned int LoadFileHeaderOnly(const char*) override { return 0; }
    unsigned int LoadFile(const char*) override { return 0; }
    unsigned int SaveFile(const char*) override { return 0; }
    const char* GetLastErrorMessage() override { return nullptr; }
};

TEST(RefusedDeletion, OfManyThreadsLeavesTheOneText)
{
    if (QXBC_UNDER_TSAN) {
        GTEST_SKIP() << "threads that are refused at the same time write the same text unlocked, as is documented";
    }
    RunTogether(4, [](int) {
        TForeignObject foreign;
        for (int i = 0; i < 1000; ++i) {
            EXPECT_EQ(DeleteBackgroundCorrection(&foreign), 513u);
        }
    });
    EXPECT_STREQ(GetLastBackgroundCorrectionDLLError(),
                 "Cannot delete object as it is not a valid QX_IBackgroundCorrection instance.");
}

TEST(RefusedDeletion, OfOneThreadDoesNotDisturbOthers)
{
    RunTogether(4, [](int number) {
        TForeignObject foreign;
        for (int i = 0; i < 200; ++i) {
            if (number == 0) {
                EXPECT_EQ(DeleteBackgroundCorrection(&foreign), 513u);
            } else {
                const TObject processor;
                EXPECT_EQ(processor->GetNumberOfCorrections(), 0u);
            }
        }
    });
}

} // namespace
