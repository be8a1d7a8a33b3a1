// std::exception and what the language itself throws, laid out as Microsoft's runtime has them: libc++ includes this
// file for them. Hosts catch these classes as their own: by reference, by value, and as copies that their own runtime
// makes, reads and destroys. What the layout says must therefore hold in their code as well as in this.
#ifndef QXBC_VCRUNTIME_EXCEPTION_H
#define QXBC_VCRUNTIME_EXCEPTION_H

#include <stddef.h>

#pragma clang system_header

namespace std {

// 24 bytes: table, text, and whether the text is to be freed with the object.
//
// A text that is to be freed was allocated by whichever runtime made the exception, and would be freed by whichever
// destroys it: a host with a C runtime of its own would free it in the wrong heap. Exceptions that leave the library
// therefore own no text in this part. TZRException has none at all: its copies as std::exception, which leave its own
// text behind, say "Unknown exception". std::bad_alloc has a literal.
//
// Copying is a function, not a copy of the bytes: the part of a larger exception that was caught by value must get the
// table of its own class. The throw records name these constructors.
class exception {
public:
    exception() noexcept {}
    // Copies the text; without memory there is none.
    explicit exception(const char* newText) noexcept { Copy(newText); }
    // Keeps the text, which has to outlive every copy.
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
    virtual ~exception() noexcept;
    virtual const char* what() const noexcept;

private:
    void Copy(const char* newText) noexcept;
    void Copy(const exception& other) noexcept
    {
        if (other.isTextOwned)
            Copy(other.text);
        else
            text = other.text;
    }
    void Free() noexcept;

    const char* text = nullptr;
    bool isTextOwned = false;
};
static_assert(sizeof(exception) == 24, "the layout that hosts have compiled in");

class bad_exception : public exception {
public:
    bad_exception() noexcept : exception("bad exception", 1) {}
};

class bad_alloc : public exception {
public:
    bad_alloc() noexcept : exception("bad allocation", 1) {}

protected:
    explicit bad_alloc(const char* literal) noexcept : exception(literal, 1) {}
};
static_assert(sizeof(bad_alloc) == 24, "the layout that hosts have compiled in");

class bad_array_new_length : public bad_alloc {
public:
    bad_array_new_length() noexcept : bad_alloc("bad array new length") {}
};

} // namespace std

#endif
