// The standard exceptions. Their layout, and who owns their texts, is in include/vcruntime_exception.h.
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>

namespace std {

// Copying an exception must not fail, so that a text that finds no memory is left out.
void exception::Copy(const char* newText) noexcept
{
    const size_t size = newText ? strlen(newText) + 1 : 0;
    void* const copy = size != 0 ? malloc(size) : nullptr;
    text = copy ? static_cast<const char*>(memcpy(copy, newText, size)) : nullptr;
    isTextOwned = copy != nullptr;
}

void exception::Free() noexcept
{
    if (isTextOwned)
        free(const_cast<char*>(text));
    isTextOwned = false;
}

exception::~exception() noexcept
{
    Free();
}

const char* exception::what() const noexcept
{
    return text ? text : "Unknown exception";
}

logic_error::logic_error(const string& text) : exception(text.c_str()) {}
runtime_error::runtime_error(const string& text) : exception(text.c_str()) {}

} // namespace std
