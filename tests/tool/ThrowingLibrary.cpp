// Stands for the library when memory runs out in the middle of an operation: what leaves it then is an exception by
// Microsoft's rules, which no handler of another compiler's program takes.
#include <windows.h>

extern "C" {

__declspec(dllexport) void* CreateBackgroundCorrection()
{
    constexpr DWORD kMicrosoftException = 0xE06D7363;
    RaiseException(kMicrosoftException, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    return nullptr;
}

__declspec(dllexport) void* CreateBackgroundCorrectionOffline(char**, int)
{
    return CreateBackgroundCorrection();
}

__declspec(dllexport) void DeleteBackgroundCorrection(void*) {}

__declspec(dllexport) const char* GetLastBackgroundCorrectionDLLError()
{
    return "";
}
}
