#include "platform/Text.h"

namespace Platform {

namespace {
int Folded(char character)
{
    const int value = static_cast<unsigned char>(character);
    return value >= 'A' && value <= 'Z' ? value - 'A' + 'a' : value;
}
} // namespace

int CompareIgnoringCase(const char* left, const char* right) noexcept
{
    while (*left != '\0' && Folded(*left) == Folded(*right)) {
        ++left;
        ++right;
    }
    return Folded(*left) - Folded(*right);
}

} // namespace Platform
