/* The smallest host in C, on the flat interface: one correction out of two dark frames, applied to an image of twice
 * the exposure. README.md says how it is built; with MinGW: gcc c_host.c QX_BACKGROUNDCORRECTION_C.dll */
#include "QX_BackgroundCorrection_C.h"

#include <stdio.h>

#define PIXELS (16 * 16)

/* Whether an operation failed; says so. */
static int Failed(const char* what, QXBC_Object* object, unsigned int code)
{
    const char* const text = QXBC_GetLastErrorMessage(object);
    if (code == QXBC_SUCCESS)
        return 0;
    fprintf(stderr, "c_host: %s: code %u. %s%s\n", what, code, QXBC_DescribeCode(code), text ? text : "");
    return 1;
}

int main(void)
{
    unsigned short dark1[PIXELS], dark2[PIXELS], image[PIXELS];
    const unsigned short* frames[2];
    char reason[500];
    QXBC_Object* object = NULL;
    int i, failed;
    for (i = 0; i < PIXELS; ++i) {
        dark1[i] = 100;
        dark2[i] = 103;
        image[i] = 1000;
    }
    frames[0] = dark1;
    frames[1] = dark2;
    if (QXBC_LoadLibrary(reason, sizeof reason) != QXBC_SUCCESS) {
        fprintf(stderr, "c_host: %s\n", reason);
        return 1;
    }

    failed = Failed("making an object", NULL, QXBC_CreateProcessor(&object)) ||
             Failed("adding", object, QXBC_AddCorrection(object, "dark", frames, 2, 16, 16, 0.1f, 100.0f)) ||
             Failed("activating", object, QXBC_SetActiveCorrection(object, "dark")) ||
             Failed("exposure", object, QXBC_SetExposureAndIntensity(object, 0.2f, 100.0f)) ||
             Failed("applying", object, QXBC_ApplyCorrection(object, image, PIXELS, NULL, 0, NULL, 0, 0, 0));
    if (!failed)
        printf("1000 became %d\n", image[0]);
    QXBC_Delete(object);
    return failed;
}
