#include "FailingMemory.h"

#include <malloc.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <windows.h>

namespace FailingMemory {
namespace {

unsigned int requests = 0;
unsigned int refused = 0;
bool refusesAllLater = false;

bool Refuses()
{
    ++requests;
    return refused != 0 && (requests == refused || (refusesAllLater && requests > refused));
}

void* Allocate(size_t size)
{
    return Refuses() ? nullptr : malloc(size);
}

void* AllocateAligned(size_t size, size_t alignment)
{
    return Refuses() ? nullptr : _aligned_malloc(size, alignment);
}

template <class T> T* At(char* image, uintptr_t offset)
{
    return reinterpret_cast<T*>(image + offset);
}

// Replaces an imported function; false when the library does not import it.
bool Replace(char* image, const char* name, void* replacement)
{
    const auto* const headers =
        At<IMAGE_NT_HEADERS64>(image, static_cast<uintptr_t>(At<IMAGE_DOS_HEADER>(image, 0)->e_lfanew));
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (const auto* module = At<IMAGE_IMPORT_DESCRIPTOR>(image, imports); module->FirstThunk != 0; ++module) {
        const auto* names = At<IMAGE_THUNK_DATA64>(image, module->OriginalFirstThunk);
        auto* places = At<void*>(image, module->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++places) {
            if (IMAGE_SNAP_BY_ORDINAL64(names->u1.Ordinal))
                continue;
            const auto* const imported = At<IMAGE_IMPORT_BY_NAME>(image, names->u1.AddressOfData);
            if (strcmp(reinterpret_cast<const char*>(imported->Name), name) != 0)
                continue;
            DWORD protection = 0;
            if (!VirtualProtect(places, sizeof *places, PAGE_READWRITE, &protection))
                return false;
            *places = replacement;
            VirtualProtect(places, sizeof *places, protection, &protection);
            return true;
        }
    }
    return false;
}

} // namespace

bool Install(void* library)
{
    char* const image = static_cast<char*>(library);
    // Whoever imports another allocator would get memory that is never refused.
    static const char* const others[] = {"calloc", "realloc", "HeapAlloc", "VirtualAlloc", "_aligned_realloc"};
    for (const char* other : others)
        if (Replace(image, other, nullptr))
            return false;
    return Replace(image, "malloc", reinterpret_cast<void*>(&Allocate)) &&
           Replace(image, "_aligned_malloc", reinterpret_cast<void*>(&AllocateAligned));
}

void Refuse(unsigned int number, bool andAllLater)
{
    requests = 0;
    refused = number;
    refusesAllLater = andAllLater;
}

bool HasRefused()
{
    return refused != 0 && requests >= refused;
}

} // namespace FailingMemory
