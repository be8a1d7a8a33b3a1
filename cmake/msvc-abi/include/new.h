// The global allocation operators (Memory.cpp) and the types that they take: libc++ includes this file for them.
#ifndef QXBC_NEW_H
#define QXBC_NEW_H

#include <vcruntime_exception.h>

#pragma clang system_header

namespace std {
struct nothrow_t {
    explicit nothrow_t() = default;
};
extern const nothrow_t nothrow;
enum class align_val_t : size_t {};
} // namespace std

void* operator new(size_t size);
void* operator new(size_t size, std::align_val_t alignment);
void* operator new(size_t size, const std::nothrow_t& tag) noexcept;
void* operator new[](size_t size);
void* operator new[](size_t size, std::align_val_t alignment);
void* operator new[](size_t size, const std::nothrow_t& tag) noexcept;

void operator delete(void* block) noexcept;
void operator delete(void* block, size_t size) noexcept;
void operator delete(void* block, std::align_val_t alignment) noexcept;
void operator delete(void* block, size_t size, std::align_val_t alignment) noexcept;
void operator delete(void* block, const std::nothrow_t& tag) noexcept;
void operator delete[](void* block) noexcept;
void operator delete[](void* block, size_t size) noexcept;
void operator delete[](void* block, std::align_val_t alignment) noexcept;
void operator delete[](void* block, size_t size, std::align_val_t alignment) noexcept;
void operator delete[](void* block, const std::nothrow_t& tag) noexcept;

inline void* operator new(size_t, void* place) noexcept
{
    return place;
}
inline void* operator new[](size_t, void* place) noexcept
{
    return place;
}
inline void operator delete(void*, void*) noexcept {}
inline void operator delete[](void*, void*) noexcept {}

#endif
