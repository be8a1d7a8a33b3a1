// A host in the oldest C++ that hosts use: the public header comes first, alone, and twice; its delegate is a class
// like any other, without a word about destructors. Only compiled.
// clang-format off: it would take one of them away
#include "QX_BackgroundCorrection.h"
#include "QX_BackgroundCorrection.h"
// clang-format on

namespace {

class Delegate : public QX_KRLSDK::ICorrectionDelegate {
public:
    virtual unsigned int SubtractInPlace(unsigned short*, const unsigned short*, int, int, bool, bool) { return 1; }
    virtual unsigned int SubtractInto(unsigned short*, const unsigned short*, const unsigned short*, int, int, bool,
                                      bool)
    {
        return 2;
    }
    virtual unsigned int ProcessInPlace(unsigned short*, int, int) { return 3; }
};

} // namespace

int main()
{
    const QX_KRLSDK::CreateBackgroundCorrectionFunction create = &CreateBackgroundCorrection;
    const QX_KRLSDK::DeleteBackgroundCorrectionFunction destroy = &DeleteBackgroundCorrection;
    QX_KRLSDK::QX_IBackgroundCorrection* const object = create();
    Delegate delegate;
    const char versionText[] = QX_BACKGROUNDCORRECTION_VERSION_TEXT;
    unsigned short pixel = 0;
    const bool isApplied =
        object->ApplyCorrection(&pixel, 1, 0, 0, &delegate, true, true, false) == QX_KRLSDK::kSuccess;
    return destroy(object) == QX_KRLSDK::kSuccess && isApplied && versionText[0] != '\0' ? 0 : 1;
}
