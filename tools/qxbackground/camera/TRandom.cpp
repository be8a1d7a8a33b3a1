#include "camera/TRandom.h"

#include <cmath>

namespace workbench {

namespace {

constexpr double kLn2 = 0.69314718055994530942;

std::uint64_t RotateLeft(std::uint64_t value, int bits)
{
    return (value << bits) | (value >> (64 - bits));
}

} // namespace

double ExactExp(double x)
{
    const double halvings = std::floor(x / kLn2 + 0.5);
    const double rest = x - halvings * kLn2; // at most about 0.35 in size
    double term = 1, sum = 1;
    for (int n = 1; n <= 16; ++n) {
        term *= rest / n;
        sum += term;
    }
    return std::ldexp(sum, static_cast<int>(halvings)); // exact
}

double ExactLog(double x)
{
    int exponent = 0;
    const double mantissa = std::frexp(x, &exponent); // exact, 0.5 ... 1
    // ln m = 2 artanh((m - 1) / (m + 1)); the ratio lies in -1/3 ... 0
    const double ratio = (mantissa - 1) / (mantissa + 1);
    const double square = ratio * ratio;
    double power = ratio, sum = 0;
    for (int n = 1; n <= 29; n += 2) {
        sum += power / n;
        power *= square;
    }
    return 2 * sum + exponent * kLn2;
}

// xoshiro256**, seeded through SplitMix64 so that neighbouring seeds give unrelated sequences.
TRandom::TRandom(std::uint64_t seed)
{
    for (std::uint64_t& word : state) {
        seed += 0x9E3779B97F4A7C15u;
        std::uint64_t mixed = seed;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
        word = mixed ^ (mixed >> 31);
    }
}

std::uint64_t TRandom::Bits()
{
    const std::uint64_t result = RotateLeft(state[1] * 5, 7) * 9;
    const std::uint64_t shifted = state[1] << 17;
    state[2] ^= state[0];
    state[3] ^= state[1];
    state[1] ^= state[2];
    state[0] ^= state[3];
    state[2] ^= shifted;
    state[3] = RotateLeft(state[3], 45);
    return result;
}

double TRandom::Uniform()
{
    // 52 bits and half a step: never 0, never 1.
    return (static_cast<double>(Bits() >> 12) + 0.5) / 4503599627370496.0;
}

double TRandom::Normal()
{
    if (hasSpare) {
        hasSpare = false;
        return spareNormal;
    }
    double x = 0, y = 0, square = 0;
    do { // a point in the unit circle
        x = 2 * Uniform() - 1;
        y = 2 * Uniform() - 1;
        square = x * x + y * y;
    } while (square >= 1 || square == 0);
    const double factor = std::sqrt(-2 * ExactLog(square) / square);
    spareNormal = y * factor;
    hasSpare = true;
    return x * factor;
}

double TRandom::Poisson(double mean)
{
    if (!(mean > 0))
        return 0;
    if (mean < 30) {
        const double wanted = Uniform();
        double probability = ExactExp(-mean), reached = probability;
        int events = 0;
        while (wanted > reached && events < 1000) {
            ++events;
            probability *= mean / events;
            reached += probability;
        }
        return events;
    }
    const double z = Normal();
    const double events = std::floor(mean + std::sqrt(mean) * z + (z * z - 1) / 6 + 0.5);
    return events > 0 ? events : 0;
}

} // namespace workbench
