// What the C++ headers declare and leave to a compiled library: the string templates, numbers as strings, and the ways
// out of a program that cannot go on.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

namespace std {
inline namespace __1 {
string to_string(int number)
{
    char digits[16];
    snprintf(digits, sizeof digits, "%d", number);
    return digits;
}

string to_string(unsigned int number)
{
    char digits[16];
    snprintf(digits, sizeof digits, "%u", number);
    return digits;
}

void __libcpp_verbose_abort(const char*, ...)
{
    abort();
}
} // namespace __1

void terminate() noexcept
{
    abort();
}

template class basic_string<char>;
template class basic_string<wchar_t>;
template string operator+ <char, char_traits<char>, allocator<char>>(const char*, const string&);
} // namespace std
