// The standard exceptions as a host has them that was built with Microsoft's compiler and linked with a C runtime of
// its own: names and layout are that ABI's, texts come from a heap that only this host has. No header of the library's
// build takes part, so that a wrong layout there meets the right one here.
#ifndef QXBC_TESTS_MICROSOFT_EXCEPTIONS_H
#define QXBC_TESTS_MICROSOFT_EXCEPTIONS_H

#include <stddef.h>
#include <string.h>

// The host's heap. Blocks are never used twice, so that each can be told from any other address.
namespace HostHeap {

inline char blocks[1 << 16];
inline size_t used = 0;
inline unsigned int foreignBlocksFreed = 0; // a real heap would be damaged now

inline bool Holds(const char* block)
{
    return block >= blocks && block < blocks + used;
}

inline char* Allocate(size_t size)
{
    if (size > sizeof blocks - used)
        used = 0;
    char* const block = blocks + used;
    used += size;
    return block;
}

inline void Free(const char* block)
{
    foreignBlocksFreed += Holds(block) ? 0 : 1;
}

} // namespace HostHeap

namespace std {

class exception {
public:
    exception() noexcept {}
    exception(const char* literal, int) noexcept : text(literal) {}
    exception(const exception& other) noexcept { Copy(other); }
    exception& operator=(const exception& other) noexcept
    {
        if (this != &other) {
            Free();
            Copy(other);
        }
        return *this;
    }
    virtual ~exception() noexcept { Free(); }
    virtual const char* what() const noexcept { return text ? text : "Unknown exception"; }

    // Not of the ABI, and no part of the layout.
    const char* Text() const { return text; }
    bool IsTextOwned() const { return isTextOwned; }

private:
    void Copy(const exception& other)
    {
        text = other.text;
        isTextOwned = other.isTextOwned && other.text;
        if (!isTextOwned)
            return;
        if (!HostHeap::Holds(other.text)) { // counted, and not read: it may be no address at all
            HostHeap::Free(other.text);
            text = nullptr;
            isTextOwned = false;
            return;
        }
        const size_t size = strlen(other.text) + 1;
        text = static_cast<const char*>(memcpy(HostHeap::Allocate(size), other.text, size));
    }
    void Free()
    {
        if (isTextOwned)
            HostHeap::Free(text);
        text = nullptr;
        isTextOwned = false;
    }

    const char* text = nullptr;
    bool isTextOwned = false;
};
static_assert(sizeof(exception) == 24, "a table, a text, a flag");

class bad_alloc : public exception {
public:
    bad_alloc() noexcept : exception("bad allocation", 1) {}
};
static_assert(sizeof(bad_alloc) == 24, "nothing of its own");

} // namespace std

#endif
