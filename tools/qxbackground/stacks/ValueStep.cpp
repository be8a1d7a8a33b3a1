#include "stacks/ValueStep.h"

#include <algorithm>
#include <array>

namespace workbench {

namespace {

// A camera writes a time into some pixels, a driver cuts off at 65535, whatever the others are.
constexpr std::size_t kSomeOff = 256; // one of so many

std::size_t OffSteps(const std::vector<std::uint16_t>& sample, unsigned step)
{
    const auto below = static_cast<std::uint16_t>(step - 1);
    std::size_t off = 0;
    for (const std::uint16_t value : sample)
        off += (value & below) != 0 && value != 0xFFFF ? 1u : 0u;
    return off;
}

// Of a frame without noise nobody can tell.
bool HasSeveral(const std::vector<std::uint16_t>& sample, unsigned step)
{
    std::array<std::uint16_t, 4> met{};
    std::size_t count = 0;
    for (const std::uint16_t value : sample) {
        const auto end = met.begin() + static_cast<std::ptrdiff_t>(count);
        if (value % step != 0 || std::find(met.begin(), end, value) != end)
            continue;
        met[count++] = value;
        if (count == met.size())
            return true;
    }
    return false;
}

} // namespace

unsigned ValueStep(const std::vector<std::uint16_t>& sample)
{
    constexpr std::size_t kFew = 64; // pixels, whose lowest bits chance may clear
    if (sample.size() < kFew)
        return 0;
    for (const unsigned step : {64u, 16u, 4u}) {
        if (OffSteps(sample, step) <= sample.size() / kSomeOff)
            return HasSeveral(sample, step) ? step : 0;
    }
    return OffSteps(sample, 4) > sample.size() / 10 ? 1 : 0;
}

std::string ValueStepText(unsigned step)
{
    const std::string text = "in steps of " + std::to_string(step);
    if (step <= 1)
        return text;
    int bits = 16;
    for (; step > 1; step /= 2)
        --bits;
    return text + ", as of " + std::to_string(bits) + " bits in the high ones of 16";
}

} // namespace workbench
