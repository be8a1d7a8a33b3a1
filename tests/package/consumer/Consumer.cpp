// Linked with the library: one dark frame, and an image of twice its exposure.
#include <QX_BackgroundCorrection.h>

#include <cstdio>
#include <cstring>

int main()
{
#ifdef PACKAGE_VERSION
    if (std::strcmp(PACKAGE_VERSION, QX_BACKGROUNDCORRECTION_VERSION_TEXT) != 0) {
        return 2;
    }
#endif
    unsigned short dark[16];
    unsigned short image[16];
    for (int i = 0; i < 16; ++i) {
        dark[i] = 102;
        image[i] = 1000;
    }
    const unsigned short* frames[] = {dark};
    QX_KRLSDK::QX_IBackgroundCorrection* const object = CreateBackgroundCorrection();
    const bool isCorrected = object->AddCorrection("dark", frames, 1, 4, 4, 0.1f, 100.0f) == QX_KRLSDK::kSuccess &&
                             object->SetActiveCorrection("dark") == QX_KRLSDK::kSuccess &&
                             object->SetExposureAndIntensity(0.2f, 100.0f) == QX_KRLSDK::kSuccess &&
                             object->ApplyCorrection(image, 16, 0, 0, 0, false, false, false) == QX_KRLSDK::kSuccess;
    std::printf("1000 became %d\n", static_cast<int>(image[15]));
    return DeleteBackgroundCorrection(object) == QX_KRLSDK::kSuccess && isCorrected ? 0 : 1;
}
