// Sets the processor's rounding mode for a scope.
#ifndef QXBC_TESTS_SCOPED_ROUNDING_H
#define QXBC_TESTS_SCOPED_ROUNDING_H

#include <cfenv>

constexpr int kRoundingModes[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};

class TScopedRounding {
public:
    explicit TScopedRounding(int mode) : before(std::fegetround()) { std::fesetround(mode); }
    ~TScopedRounding() { std::fesetround(before); }
    TScopedRounding(const TScopedRounding&) = delete;
    TScopedRounding& operator=(const TScopedRounding&) = delete;

private:
    int before;
};

#endif
