/* Put before every source of a C library that opens files by narrow names: its names are then UTF-8, and any name can
 * be spelled. */
#ifndef CMAKE_MINGW_UTF8FILES_H
#define CMAKE_MINGW_UTF8FILES_H

#include <stdio.h>

FILE* OpenFileByUtf8Name(const char* name, const char* mode);
int RemoveFileByUtf8Name(const char* name);

#define fopen OpenFileByUtf8Name
#define remove RemoveFileByUtf8Name

#endif
