// The library when memory runs out in the middle of an operation: what leaves it then is an exception by Microsoft's
// rules, which no handler of another compiler's program takes. QX_THROWS_IN says where: "create", or "save" for
// SaveFile of what is otherwise the real library, QX_LIBRARY.
#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kSlots = 23, kSlotOfSaveFile = 21;

template <class TOperation> TOperation Real(const char* name)
{
    static const HMODULE library = LoadLibraryA(std::getenv("QX_LIBRARY"));
    return reinterpret_cast<TOperation>(reinterpret_cast<void*>(GetProcAddress(library, name)));
}

unsigned int RunOutOfMemory(void*, const char*)
{
    constexpr DWORD kMicrosoftException = 0xE06D7363;
    RaiseException(kMicrosoftException, EXCEPTION_NONCONTINUABLE, 0, nullptr);
    return 0;
}

} // namespace

extern "C" {

__declspec(dllexport) void* CreateBackgroundCorrection()
{
    if (std::strcmp(std::getenv("QX_THROWS_IN"), "save") != 0)
        RunOutOfMemory(nullptr, nullptr);
    void* const object = Real<void* (*)()>("CreateBackgroundCorrection")();
    static void* table[kSlots];
    std::copy_n(*static_cast<void***>(object), kSlots, table);
    table[kSlotOfSaveFile] = reinterpret_cast<void*>(&RunOutOfMemory);
    *static_cast<void***>(object) = table;
    return object;
}

__declspec(dllexport) void* CreateBackgroundCorrectionOffline(char**, int)
{
    return CreateBackgroundCorrection();
}

__declspec(dllexport) void DeleteBackgroundCorrection(void* object)
{
    Real<void (*)(void*)>("DeleteBackgroundCorrection")(object);
}

__declspec(dllexport) const char* GetLastBackgroundCorrectionDLLError()
{
    return "";
}
}
