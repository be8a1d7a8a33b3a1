// Counts checks and says which failed. Plain printf: a host in the Microsoft ABI has no streams here.
#ifndef QXBC_TESTS_CHECKS_H
#define QXBC_TESTS_CHECKS_H

#include <cstdio>
#include <string>

namespace Checks {

inline unsigned int made = 0;
inline unsigned int failed = 0;

inline bool That(bool holds, const std::string& what)
{
    ++made;
    if (!holds) {
        ++failed;
        std::printf("FAILED  %s\n", what.c_str());
        std::fflush(stdout);
    }
    return holds;
}

inline bool Equal(const std::string& value, const std::string& expected, const std::string& what)
{
    return That(value == expected, what + "\n        expected: " + expected + "\n        but was:  " + value);
}

inline void Skip(const char* what, const char* why)
{
    std::printf("SKIPPED %s: %s\n", what, why);
    std::fflush(stdout);
}

// The texts that results are compared as.
inline std::string Text(const char* text)
{
    return text ? std::string(text) : std::string("(null)");
}

inline std::string Text(double number)
{
    char digits[40];
    std::snprintf(digits, sizeof digits, "%.10g", number);
    return digits;
}

// A result code and the values that came with it: "0 1,2,3".
template <class... TValue> std::string Text(double code, TValue... values)
{
    std::string text = Text(code);
    char separator = ' ';
    ((text += separator + Text(static_cast<double>(values)), separator = ','), ...);
    return text;
}

} // namespace Checks

#endif
