#include "Utf8Files.h"

#include <windows.h>

#include <errno.h>
#include <stdlib.h>
#include <wchar.h>

enum { kLongestName = 32768 }; /* as long as the system takes */

/* Allocates; the caller frees. Null when the name is no UTF-8, or too long. */
static wchar_t* Widen(const char* name)
{
    wchar_t* const wide = malloc(kLongestName * sizeof(wchar_t));
    if (wide != NULL && MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, name, -1, wide, kLongestName) == 0) {
        free(wide);
        errno = ENOENT;
        return NULL;
    }
    return wide;
}

FILE* OpenFileByUtf8Name(const char* name, const char* mode)
{
    wchar_t wideMode[8] = L"";
    wchar_t* const wide = Widen(name);
    FILE* file = NULL;
    if (wide != NULL && MultiByteToWideChar(CP_UTF8, 0, mode, -1, wideMode, 8) != 0)
        file = _wfopen(wide, wideMode);
    free(wide);
    return file;
}

int RemoveFileByUtf8Name(const char* name)
{
    wchar_t* const wide = Widen(name);
    const int result = wide != NULL ? _wremove(wide) : -1;
    free(wide);
    return result;
}
