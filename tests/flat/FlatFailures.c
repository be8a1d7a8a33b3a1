/* A host in C whose flat interface lies beside something other than the main library:
 * flat_failures throwing  beside a library that throws
 * flat_failures missing   beside none
 * flat_failures other     beside one that lacks the exports */
#include "QX_BackgroundCorrection_C.h"

#include "Checks.h"

static void Throwing(QXBC_Object* object, int kind, unsigned int code)
{
    const unsigned short* frames[1] = {NULL};
    float number = 7;
    unsigned short pixel = 7;
    int i = 7;
    Equal("choosing what is thrown", QXBC_SetCorrectionLevel(object, kind), 0);
    Equal("add", QXBC_AddCorrection(object, "Dark", frames, 1, 1, 1, 1, 1), code);
    Equal("activate", QXBC_SetActiveCorrection(object, "Dark"), code);
    SameText("active key", QXBC_GetActiveCorrectionKey(object), NULL);
    SameText("key", QXBC_GetCorrectionKey(object, 0), NULL);
    Equal("count", QXBC_GetNumberOfCorrections(object), 0);
    Equal("clear", QXBC_ClearCorrections(object), code);
    Equal("delete", QXBC_DeleteCorrection(object, "Dark"), code);
    Equal("set level", QXBC_SetCorrectionLevel(object, -1), code);
    Equal("level", QXBC_GetCorrectionLevel(object), -1);
    Equal("set exposure", QXBC_SetExposureAndIntensity(object, 1, 1), code);
    Equal("exposure", QXBC_GetExposureAndIntensity(object, &number, &number), code);
    Equal("reference", QXBC_GetReferenceExposureAndIntensity(object, &number, &number), code);
    Equal("statistics", QXBC_GetCorrectionStatistics(object, &pixel, &pixel, &pixel), code);
    Equal("scaled", QXBC_GetScaledCorrectionStatistics(object, &pixel, &pixel, &pixel), code);
    Equal("apply", QXBC_ApplyCorrection(object, &pixel, 1, NULL, 0, NULL, 0, 0, 0), code);
    Equal("set region", QXBC_SetRegion(object, 0, 0, 1, 1), code);
    Equal("region", QXBC_GetRegion(object, &i, &i, &i, &i), code);
    Equal("import", QXBC_ImportCorrections(object, object, 0), code);
    Equal("load header", QXBC_LoadFileHeaderOnly(object, "x"), code);
    Equal("load", QXBC_LoadFile(object, "x"), code);
    Equal("save", QXBC_SaveFile(object, "x"), code);
    SameText("message", QXBC_GetLastErrorMessage(object), NULL);
    Equal("delete object", QXBC_Delete(object), code);
}

static void BesideThrowing(void)
{
    const char* const names[] = {"Camera", "Gain"};
    const char* const nullName[] = {"null"};
    QXBC_Object *object = NULL, *other = NULL;
    Equal("making an object", QXBC_CreateProcessor(&object), 0);
    other = object;
    Equal("making another", QXBC_CreateProcessor(&other), QXBC_OUT_OF_MEMORY);
    Equal("no object is handed out", other == NULL, 1);
    Equal("making a store", QXBC_CreateStore(names, 2, &other), QXBC_UNKNOWN_EXCEPTION);
    Equal("making a store that is null", QXBC_CreateStore(nullName, 1, &other), QXBC_OUT_OF_MEMORY);
    Throwing(object, 1, QXBC_OUT_OF_MEMORY);
    Throwing(object, 2, QXBC_OUT_OF_MEMORY);
    Throwing(object, 3, QXBC_UNKNOWN_EXCEPTION);
    Equal("choosing that nothing is thrown", QXBC_SetCorrectionLevel(object, 0), 0);
    Equal("a code of the library", QXBC_SaveFile(object, "x"), 4711);
    SameText("a text of the library", QXBC_GetLastErrorMessage(object), "text");
    Equal("deleting", QXBC_Delete(object), 4712);
    SameText("deletion error", QXBC_GetLastDeletionError(), "refused");
}

static void BesideNothingOfUse(const char* inReason)
{
    const char* const names[] = {"Camera"};
    char reason[1000] = "", cut[5] = "xxxx";
    int something;
    QXBC_Object *object = (QXBC_Object*)&something, *store = (QXBC_Object*)&something;
    Equal("loading", QXBC_LoadLibrary(reason, sizeof reason), QXBC_NO_LIBRARY);
    Equal(reason, strstr(reason, inReason) != NULL, 1);
    Equal("loading with little room", QXBC_LoadLibrary(cut, sizeof cut), QXBC_NO_LIBRARY);
    Equal("the text is cut", (double)strlen(cut), sizeof cut - 1);
    Equal("loading without room", QXBC_LoadLibrary(NULL, 99), QXBC_NO_LIBRARY);
    Equal("loading with no room", QXBC_LoadLibrary(cut, 0), QXBC_NO_LIBRARY);
    Equal("nothing is written there", (double)strlen(cut), sizeof cut - 1);
    Equal("making an object", QXBC_CreateProcessor(&object), QXBC_NO_LIBRARY);
    Equal("no object is handed out", object == NULL, 1);
    Equal("making a store", QXBC_CreateStore(names, 1, &store), QXBC_NO_LIBRARY);
    Equal("no store is handed out", store == NULL, 1);
    Equal("deleting", QXBC_Delete((QXBC_Object*)&something), QXBC_NO_LIBRARY);
    SameText("deletion error", QXBC_GetLastDeletionError(), "");
}

int main(int argumentCount, char** arguments)
{
    const char* const beside = argumentCount == 2 ? arguments[1] : "";
    if (strcmp(beside, "throwing") == 0)
        BesideThrowing();
    else if (strcmp(beside, "missing") == 0)
        BesideNothingOfUse("QX_BACKGROUNDCORRECTION");
    else if (strcmp(beside, "other") == 0)
        BesideNothingOfUse("does not export CreateBackgroundCorrection");
    else
        printf("usage: flat_failures throwing|missing|other\n");
    return checksMade == 0 ? 2 : Verdict();
}
