// The global allocation operators. Exhausted memory is std::bad_alloc, as everywhere else.
#include <cstddef>
#include <malloc.h>
#include <new>

void* operator new(std::size_t size)
{
    if (void* block = malloc(size != 0 ? size : 1))
        return block;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, std::align_val_t alignment)
{
    if (void* block = _aligned_malloc(size != 0 ? size : 1, static_cast<std::size_t>(alignment)))
        return block;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return malloc(size != 0 ? size : 1);
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void* operator new[](std::size_t size, std::align_val_t alignment)
{
    return operator new(size, alignment);
}

void* operator new[](std::size_t size, const std::nothrow_t& tag) noexcept
{
    return operator new(size, tag);
}

void operator delete(void* block) noexcept
{
    free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    free(block);
}

void operator delete(void* block, std::align_val_t) noexcept
{
    _aligned_free(block);
}

void operator delete(void* block, std::size_t, std::align_val_t) noexcept
{
    _aligned_free(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept
{
    free(block);
}

void operator delete[](void* block) noexcept
{
    free(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    free(block);
}

void operator delete[](void* block, std::align_val_t) noexcept
{
    _aligned_free(block);
}

void operator delete[](void* block, std::size_t, std::align_val_t) noexcept
{
    _aligned_free(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept
{
    free(block);
}

const std::nothrow_t std::nothrow{};
