#include "LimitedMemory.h"

#include <cstdlib>
#include <new>

std::size_t TLimitedMemory::limit = kNoLimit;

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return size <= TLimitedMemory::Limit() ? std::malloc(size > 0 ? size : 1) : nullptr;
}

void* operator new(std::size_t size)
{
    void* const block = operator new(size, std::nothrow);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return operator new(size, std::nothrow);
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete[](void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    std::free(block);
}
