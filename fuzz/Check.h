// Ends the process when something does not hold: the fuzzer keeps the input that led there.
#ifndef FUZZ_CHECK_H
#define FUZZ_CHECK_H

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

namespace Fuzz {

[[noreturn]] inline void Fail(const char* file, int line, const std::string& what)
{
    std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, what.c_str());
    std::abort();
}

template <typename TLeft, typename TRight>
void CheckEqual(const char* file, int line, const char* what, const TLeft& left, const TRight& right)
{
    if (!(left == right)) {
        std::ostringstream text;
        text << what << "\n  left:  " << left << "\n  right: " << right;
        Fail(file, line, text.str());
    }
}

} // namespace Fuzz

#define FUZZ_CHECK(condition) ((condition) ? static_cast<void>(0) : Fuzz::Fail(__FILE__, __LINE__, #condition))
#define FUZZ_CHECK_EQUAL(left, right) Fuzz::CheckEqual(__FILE__, __LINE__, #left " == " #right, left, right)

#endif
