// An implementation of the interface that is not the library's. A template, so that every source gets a class of its
// own: they are compiled by different compilers and with different options.
#ifndef QXBC_TESTS_FOREIGN_OBJECT_H
#define QXBC_TESTS_FOREIGN_OBJECT_H

#include "QX_BackgroundCorrection.h"

template <class TTag> class TForeignObject final : public QX_KRLSDK::QX_IBackgroundCorrection {
public:
    explicit TForeignObject(bool* destroyedFlag) : destroyed(destroyedFlag) {}
#ifdef QX_BACKGROUNDCORRECTION_FOREIGN_TABLES
    void* DestroyInTheTablesForm(unsigned int) override
    {
        *destroyed = true;
        return this;
    }
#else
    ~TForeignObject() override { *destroyed = true; }
#endif

    unsigned int AddCorrection(const char*, const unsigned short**, int, int, int, float, float) override { return 1; }
    unsigned int SetActiveCorrection(const char*) override { return 2; }
    const char* GetActiveCorrectionKey() override { return "foreign"; }
    const char* GetCorrectionKey(unsigned int) override { return "foreign"; }
    unsigned int GetNumberOfCorrections() override { return 4711; }
    unsigned int ClearCorrections() override { return 6; }
    unsigned int DeleteCorrection(const char*) override { return 7; }
    unsigned int SetCorrectionLevel(int) override { return 8; }
    int GetCorrectionLevel() override { return 9; }
    unsigned int SetExposureAndIntensity(float, float) override { return 10; }
    unsigned int GetExposureAndIntensity(float*, float*) override { return 11; }
    unsigned int GetReferenceExposureAndIntensity(float*, float*) override { return 12; }
    unsigned int GetCorrectionStatistics(unsigned short*, unsigned short*, unsigned short*) override { return 13; }
    unsigned int GetScaledCorrectionStatistics(unsigned short*, unsigned short*, unsigned short*) override
    {
        return 14;
    }
    unsigned int ApplyCorrection(unsigned short*, int, unsigned short*, int, QX_KRLSDK::ICorrectionDelegate*, bool,
                                 bool, bool) override
    {
        return 15;
    }
    unsigned int SetRegion(int, int, int, int) override { return 16; }
    unsigned int GetRegion(int*, int*, int*, int*) override { return 17; }
    unsigned int ImportCorrections(QX_KRLSDK::QX_IBackgroundCorrection*, bool) override { return 18; }
    unsigned int LoadFileHeaderOnly(const char*) override { return 19; }
    unsigned int LoadFile(const char*) override { return 20; }
    unsigned int SaveFile(const char*) override { return 21; }
    const char* GetLastErrorMessage() override { return "foreign"; }

private:
    bool* destroyed;
};

#endif
