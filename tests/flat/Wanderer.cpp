// Loads the flat interface by a relative path, goes to another folder, and makes an object: flat_wanderer <library>.
#include "QX_BackgroundCorrection_C.h"

#include <cstdio>

#include <dlfcn.h>
#include <unistd.h>

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2 || arguments[1][0] == '/') {
        std::printf("usage: flat_wanderer <relative path of the flat interface>\n");
        return 2;
    }
    void* const flat = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
    if (flat == nullptr || chdir("/") != 0) {
        std::printf("%s cannot be loaded\n", arguments[1]);
        return 2;
    }
    const auto load = reinterpret_cast<decltype(&QXBC_LoadLibrary)>(dlsym(flat, "QXBC_LoadLibrary"));
    char reason[1000] = "there is no QXBC_LoadLibrary";
    const unsigned int code = load != nullptr ? load(reason, sizeof reason) : QXBC_NO_LIBRARY;
    std::printf("%u %s\n", code, reason);
    return code == QXBC_SUCCESS ? 0 : 1;
}
