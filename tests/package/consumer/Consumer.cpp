#include <QX_BackgroundCorrection.h>

#include <cstring>

int main()
{
#ifdef PACKAGE_VERSION
    if (std::strcmp(PACKAGE_VERSION, QX_BACKGROUNDCORRECTION_VERSION_TEXT) != 0) {
        return 2;
    }
#endif
    QX_KRLSDK::QX_IBackgroundCorrection* const object = CreateBackgroundCorrection();
    const int level = object->GetCorrectionLevel();
    return DeleteBackgroundCorrection(object) == QX_KRLSDK::kSuccess && level == 100 ? 0 : 1;
}
