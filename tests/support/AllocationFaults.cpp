#include "support/AllocationFaults.h"

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

// Plain atomics: they are ready before the first constructor runs, and outlive the last destructor.
std::atomic<bool> armed{false};
std::atomic<bool> fired{false};
std::atomic<bool> forGood{false};
std::atomic<std::size_t> failAt{0};
std::atomic<std::size_t> count{0};
std::atomic<std::size_t> failedSize{0};
std::atomic<std::size_t> liveBlocks{0};

// No test needs more; the sanitizers end the program when malloc is asked for absurd sizes.
constexpr std::size_t kLargestRequest = std::size_t{1} << 36;

bool IsRefused(std::size_t size) noexcept
{
    if (!armed.load()) {
        return false;
    }
    const std::size_t number = ++count;
    const std::size_t chosen = failAt.load();
    if (chosen == 0 || number < chosen || (number > chosen && !forGood.load())) {
        return false;
    }
    if (!fired.exchange(true)) {
        failedSize = size;
    }
    return true;
}

void* Allocate(std::size_t size) noexcept
{
    if (IsRefused(size) || size > kLargestRequest) {
        return nullptr;
    }
    void* const block = std::malloc(size > 0 ? size : 1);
    if (block != nullptr) {
        ++liveBlocks;
    }
    return block;
}

void Free(void* block) noexcept
{
    if (block != nullptr) {
        --liveBlocks;
        std::free(block);
    }
}

// The standard library's aligned functions differ between systems: take more, and keep the block's address before it.
void* AllocateAligned(std::size_t size, std::align_val_t alignment) noexcept
{
    const std::size_t step = static_cast<std::size_t>(alignment);
    void* const block = Allocate(size + step + sizeof(void*));
    if (block == nullptr) {
        return nullptr;
    }
    const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(block) + sizeof(void*);
    void** const aligned = reinterpret_cast<void**>((first + step - 1) / step * step);
    aligned[-1] = block;
    return aligned;
}

void FreeAligned(void* aligned) noexcept
{
    if (aligned != nullptr) {
        Free(static_cast<void**>(aligned)[-1]);
    }
}

void* OrThrow(void* block)
{
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

} // namespace

TAllocationFaults::TAllocationFaults(std::size_t chosen, TFaultRepeat repeat) noexcept
{
    count = 0;
    fired = false;
    failedSize = 0;
    failAt = chosen;
    forGood = repeat == TFaultRepeat::kForGood;
    armed = true;
}

void TAllocationFaults::Disarm() noexcept
{
    armed = false;
}

bool TAllocationFaults::Fired() const noexcept
{
    return fired;
}

std::size_t TAllocationFaults::Count() const noexcept
{
    return count;
}

std::size_t TAllocationFaults::FailedSize() const noexcept
{
    return failedSize;
}

std::size_t TAllocationFaults::LiveBlocks() noexcept
{
    return liveBlocks;
}

// clang-format off
void* operator new(std::size_t size) { return OrThrow(Allocate(size)); }
void* operator new[](std::size_t size) { return OrThrow(Allocate(size)); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void* operator new(std::size_t size, std::align_val_t alignment) { return OrThrow(AllocateAligned(size, alignment)); }
void* operator new[](std::size_t size, std::align_val_t alignment) { return OrThrow(AllocateAligned(size, alignment)); }
void* operator new(std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept { return AllocateAligned(size, alignment); }
void* operator new[](std::size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept { return AllocateAligned(size, alignment); }
void operator delete(void* block) noexcept { Free(block); }
void operator delete[](void* block) noexcept { Free(block); }
void operator delete(void* block, std::size_t) noexcept { Free(block); }
void operator delete[](void* block, std::size_t) noexcept { Free(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { Free(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { Free(block); }
void operator delete(void* block, std::align_val_t) noexcept { FreeAligned(block); }
void operator delete[](void* block, std::align_val_t) noexcept { FreeAligned(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { FreeAligned(block); }
void operator delete[](void* block, std::size_t, std::align_val_t) noexcept { FreeAligned(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept { FreeAligned(block); }
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept { FreeAligned(block); }
// clang-format on
