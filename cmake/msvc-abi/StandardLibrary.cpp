// What the C++ headers declare and leave to a compiled library: the standard exceptions, the string templates, and the
// ways out of a program that cannot go on.
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <stdexcept>
#include <string>

// The text of a standard exception. Copying an exception must not fail, so that a text that finds no memory is left
// out.
namespace {
const char* CopyOfText(const char* text) noexcept
{
    const std::size_t size = text ? std::strlen(text) + 1 : 0;
    void* copy = size != 0 ? std::malloc(size) : nullptr;
    return copy ? static_cast<const char*>(std::memcpy(copy, text, size)) : nullptr;
}
} // namespace

namespace std {
inline namespace __1 {
__libcpp_refstring::__libcpp_refstring(const char* text) : __imp_(CopyOfText(text)) {}
__libcpp_refstring::__libcpp_refstring(const __libcpp_refstring& other) noexcept : __imp_(CopyOfText(other.__imp_)) {}
__libcpp_refstring::~__libcpp_refstring()
{
    free(const_cast<char*>(__imp_));
}

void __libcpp_verbose_abort(const char*, ...)
{
    abort();
}
} // namespace __1

exception::~exception() noexcept {}
const char* exception::what() const noexcept
{
    return "std::exception";
}

bad_alloc::bad_alloc() noexcept {}
bad_alloc::~bad_alloc() noexcept {}
const char* bad_alloc::what() const noexcept
{
    return "std::bad_alloc";
}

bad_array_new_length::bad_array_new_length() noexcept {}
bad_array_new_length::~bad_array_new_length() noexcept {}
const char* bad_array_new_length::what() const noexcept
{
    return "std::bad_array_new_length";
}

logic_error::logic_error(const char* text) : __imp_(text) {}
logic_error::logic_error(const string& text) : __imp_(text.c_str()) {}
logic_error::logic_error(const logic_error& other) noexcept : exception(other), __imp_(other.__imp_) {}
logic_error::~logic_error() noexcept {}
const char* logic_error::what() const noexcept
{
    return __imp_.c_str() ? __imp_.c_str() : "std::logic_error";
}
length_error::~length_error() noexcept {}
out_of_range::~out_of_range() noexcept {}

void terminate() noexcept
{
    abort();
}

template class basic_string<char>;
template class basic_string<wchar_t>;
template string operator+ <char, char_traits<char>, allocator<char>>(const char*, const string&);
} // namespace std

extern "C" {
// Called by the compiler's code when an exception tries to leave a noexcept function.
void __std_terminate()
{
    abort();
}

// The compiler refers to this in code with floating point; nothing reads it.
int _fltused = 1;
}
