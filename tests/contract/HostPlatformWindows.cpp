#include "HostPlatform.h"

#include <cstdint>
#include <cstdio>
#include <windows.h>

namespace HostPlatform {
namespace {
HMODULE library = nullptr;

// Address ranges that are taken so that nobody else can have them. Enough for a process that is limited to a few GB, as
// the test of this host does; reserving a whole 64-bit address space would take Wine minutes and all memory.
constexpr std::size_t kMostReservations = 128;
void* reservations[kMostReservations];
std::size_t reservationCount = 0;
} // namespace

bool OpenLibrary(const char* path)
{
    library = LoadLibraryA(path);
    if (!library)
        std::printf("cannot load '%s': error %lu\n", path, GetLastError());
    return library != nullptr;
}

TFunction FindExport(const char* name)
{
    return reinterpret_cast<TFunction>(GetProcAddress(library, name));
}

TVersion LibraryVersion()
{
    const std::uintptr_t first = 1, versionType = 16; // MAKEINTRESOURCE(1), RT_VERSION
    const HRSRC resource =
        FindResourceA(library, reinterpret_cast<const char*>(first), reinterpret_cast<const char*>(versionType));
    const HGLOBAL loaded = resource != nullptr ? LoadResource(library, resource) : nullptr;
    const auto* const bytes = loaded != nullptr ? static_cast<const unsigned char*>(LockResource(loaded)) : nullptr;
    if (bytes == nullptr)
        return TVersion{};
    // The part with the numbers begins with a signature, at some multiple of four bytes.
    const std::size_t size = SizeofResource(library, resource);
    for (std::size_t offset = 0; offset + sizeof(VS_FIXEDFILEINFO) <= size; offset += 4) {
        VS_FIXEDFILEINFO numbers;
        std::memcpy(&numbers, bytes + offset, sizeof numbers);
        if (numbers.dwSignature == 0xFEEF04BDu)
            return TVersion{HIWORD(numbers.dwFileVersionMS), LOWORD(numbers.dwFileVersionMS),
                            HIWORD(numbers.dwFileVersionLS)};
    }
    return TVersion{};
}

const char* const kNullDevice = "nul";

const std::size_t kIndexOfFirstOperation = 1;

void DeleteThroughTable(QX_KRLSDK::QX_IBackgroundCorrection* object)
{
    const unsigned int freeAsWell = 1;
    reinterpret_cast<void* (*)(QX_KRLSDK::QX_IBackgroundCorrection*, unsigned int)>(Table(object)[0])(object,
                                                                                                      freeAsWell);
}

std::size_t BytesInUse()
{
    std::size_t bytes = 0;
    MEMORY_BASIC_INFORMATION range{};
    for (const char* address = nullptr; VirtualQuery(address, &range, sizeof range) == sizeof range;
         address = static_cast<const char*>(range.BaseAddress) + range.RegionSize)
        if (range.State == MEM_COMMIT)
            bytes += range.RegionSize;
    return bytes;
}

TExhaustedMemory::TExhaustedMemory()
{
    for (std::size_t size = std::size_t{1} << 30; size >= std::size_t{16} << 20; size /= 2)
        while (reservationCount < kMostReservations) {
            void* const range = VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS);
            if (!range)
                break;
            reservations[reservationCount++] = range;
        }
    complete = reservationCount < kMostReservations;
}

TExhaustedMemory::~TExhaustedMemory()
{
    while (reservationCount > 0)
        VirtualFree(reservations[--reservationCount], 0, MEM_RELEASE);
}

const char* Sanitizer()
{
    return nullptr;
}

namespace {
struct TWork {
    void (*work)(void*);
    void* argument;
};

DWORD WINAPI RunWork(void* parameter)
{
    const auto* item = static_cast<const TWork*>(parameter);
    item->work(item->argument);
    return 0;
}
} // namespace

bool FinishesOnAnotherThread(void (*work)(void*), void* argument, unsigned int milliseconds)
{
    static TWork item; // outlives a thread that does not come back
    item = {work, argument};
    const HANDLE thread = CreateThread(nullptr, 0, RunWork, &item, 0, nullptr);
    if (!thread)
        return false;
    const bool inTime = WaitForSingleObject(thread, milliseconds) == WAIT_OBJECT_0;
    CloseHandle(thread);
    return inTime;
}

} // namespace HostPlatform
