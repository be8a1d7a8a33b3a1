#include <QX_BackgroundCorrection.h>

int main()
{
    QX_KRLSDK::QX_IBackgroundCorrection* const object = CreateBackgroundCorrection();
    const int level = object->GetCorrectionLevel();
    return DeleteBackgroundCorrection(object) == QX_KRLSDK::kSuccess && level == 100 ? 0 : 1;
}
