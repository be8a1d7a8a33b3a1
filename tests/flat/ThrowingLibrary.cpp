// Stands in for the main library where exceptions are wanted: its exports, and objects whose operations throw what the
// last SetCorrectionLevel said. Levels below 0 are an operation like any other.
#include "QX_BackgroundCorrection.h"

#include "boundary/ExportDecoration.h"

#include <cstring>
#include <exception>
#include <new>

namespace {

class TOwnException : public std::exception {};

class TThrower final : public QX_KRLSDK::QX_IBackgroundCorrection {
public:
    unsigned int AddCorrection(const char*, const unsigned short**, int, int, int, float, float) override
    {
        return Throw();
    }
    unsigned int SetActiveCorrection(const char*) override { return Throw(); }
    const char* GetActiveCorrectionKey() override { return Text(); }
    const char* GetCorrectionKey(unsigned int) override { return Text(); }
    unsigned int GetNumberOfCorrections() override { return Throw(); }
    unsigned int ClearCorrections() override { return Throw(); }
    unsigned int DeleteCorrection(const char*) override { return Throw(); }
    unsigned int SetCorrectionLevel(int percent) override
    {
        if (percent < 0)
            return Throw();
        kind = percent;
        return 0;
    }
    int GetCorrectionLevel() override { return static_cast<int>(Throw()); }
    unsigned int SetExposureAndIntensity(float, float) override { return Throw(); }
    unsigned int GetExposureAndIntensity(float*, float*) override { return Throw(); }
    unsigned int GetReferenceExposureAndIntensity(float*, float*) override { return Throw(); }
    unsigned int GetCorrectionStatistics(unsigned short*, unsigned short*, unsigned short*) override { return Throw(); }
    unsigned int GetScaledCorrectionStatistics(unsigned short*, unsigned short*, unsigned short*) override
    {
        return Throw();
    }
    unsigned int ApplyCorrection(unsigned short*, int, unsigned short*, int, QX_KRLSDK::ICorrectionDelegate*, bool,
                                 bool, bool) override
    {
        return Throw();
    }
    unsigned int SetRegion(int, int, int, int) override { return Throw(); }
    unsigned int GetRegion(int*, int*, int*, int*) override { return Throw(); }
    unsigned int ImportCorrections(QX_KRLSDK::QX_IBackgroundCorrection*, bool) override { return Throw(); }
    unsigned int LoadFileHeaderOnly(const char*) override { return Throw(); }
    unsigned int LoadFile(const char*) override { return Throw(); }
    unsigned int SaveFile(const char*) override { return Throw(); }
    const char* GetLastErrorMessage() override { return Text(); }

    unsigned int Throw() const
    {
        if (kind == 1)
            throw std::bad_alloc();
        if (kind == 2)
            throw TOwnException();
        if (kind == 3)
            throw 3;
        return 4711;
    }

private:
    const char* Text() const { return Throw() == 4711 ? "text" : nullptr; }

    int kind = 0;
};

int processorsMade = 0;

} // namespace

// Every second one fails.
QX_EXPORT QX_KRLSDK::QX_IBackgroundCorrection* CreateBackgroundCorrection()
{
    if (++processorsMade % 2 == 0)
        throw std::bad_alloc();
    return new TThrower;
}

// Null when the first name is "null".
QX_EXPORT QX_KRLSDK::QX_IBackgroundCorrection* CreateBackgroundCorrectionOffline(char** groupingParameters, int count)
{
    if (count == 2)
        throw 2;
    return std::strcmp(groupingParameters[0], "null") == 0 ? nullptr : new TThrower;
}

QX_EXPORT unsigned int DeleteBackgroundCorrection(QX_KRLSDK::QX_IBackgroundCorrection* object)
{
    auto* const thrower = static_cast<TThrower*>(object);
    thrower->Throw();
    delete thrower;
    return 4712;
}

QX_EXPORT const char* GetLastBackgroundCorrectionDLLError()
{
    return "refused";
}
