#include "support/GuardedPixels.h"

#include <algorithm>
#include <new>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#endif

namespace {

constexpr std::size_t kPage = 4096;

#if defined(_WIN32)
void* Allocate(std::size_t length)
{
    return VirtualAlloc(nullptr, length, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
}

bool Protect(unsigned char* page)
{
    DWORD before = 0;
    return VirtualProtect(page, kPage, PAGE_NOACCESS, &before) != 0;
}

void Free(void* block, std::size_t)
{
    VirtualFree(block, 0, MEM_RELEASE);
}
#else
void* Allocate(std::size_t length)
{
    void* const block = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return block == MAP_FAILED ? nullptr : block;
}

bool Protect(unsigned char* page)
{
    return mprotect(page, kPage, PROT_NONE) == 0;
}

void Free(void* block, std::size_t length)
{
    munmap(block, length);
}
#endif

} // namespace

TGuardedPixels::TGuardedPixels(std::size_t pixelCount, bool atStart) : count(pixelCount)
{
    const std::size_t bytes = count * sizeof *pixels;
    const std::size_t room = std::max<std::size_t>(1, (bytes + kPage - 1) / kPage) * kPage;
    blockLength = room + 2 * kPage;
    block = Allocate(blockLength);
    unsigned char* const first = static_cast<unsigned char*>(block);
    if (block == nullptr || !Protect(first) || !Protect(first + kPage + room)) {
        throw std::bad_alloc();
    }
    pixels = reinterpret_cast<std::uint16_t*>(first + kPage) + (atStart ? 0 : (room - bytes) / sizeof *pixels);
}

TGuardedPixels::~TGuardedPixels()
{
    Free(block, blockLength);
}

void TGuardedPixels::Set(const std::vector<std::uint16_t>& values)
{
    std::copy(values.begin(), values.end(), pixels);
}
