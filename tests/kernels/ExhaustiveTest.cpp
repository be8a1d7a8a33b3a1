// The kernels over everything that can go in, where that is possible. Under sanitizers, which make it slow, a part of
// it; and on Windows, whose build for the tests has the same sources and nothing that is shipped.
#include "kernels/ForcedInstructionSet.h"
#include "kernels/Kernels.h"
#include "kernels/PlainKernels.h"
#include "support/RandomImages.h"
#include "support/ScopedRounding.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <vector>

namespace {

using TPixels = std::vector<std::uint16_t>;

class ExhaustiveKernels : public TForcedInstructionSet {};
QXBC_FOR_EVERY_INSTRUCTION_SET(ExhaustiveKernels);

#ifdef QXBC_SANITIZED
constexpr std::uint32_t kEvery = 251; // a prime: one in so many
#elif defined(_WIN32)
constexpr std::uint32_t kEvery = 17;
#else
constexpr std::uint32_t kEvery = 1;
#endif

TPixels AllValues()
{
    TPixels values(65536);
    std::iota(values.begin(), values.end(), std::uint16_t{0});
    return values;
}

// Of all values. Not std::equal: it ends in the C runtime's memcmp, and Wine's takes most of the time there is. The
// constant length lets compilers use vectors.
bool AreEqual(const TPixels& pixels, const std::uint16_t* expected)
{
    const std::uint16_t* const output = pixels.data();
    unsigned int difference = pixels.size() == 65536 ? 0 : 1;
    for (std::size_t i = 0; i < 65536; ++i) {
        difference |= static_cast<unsigned int>(output[i] ^ expected[i]);
    }
    return difference == 0;
}

TEST_P(ExhaustiveKernels, SubtractsAllPairs)
{
    const TPixels image = AllValues();
    TPixels output(65536);
    TPixels background(65536);
    // What each background leaves of the values 0, 1, 2, ... is a part of this: zeros, then the values from 0 up.
    TPixels ramp(65536);
    ramp.insert(ramp.end(), image.begin(), image.end());
    for (std::uint32_t value = 0; value < 65536; value += kEvery) {
        std::fill(background.begin(), background.end(), static_cast<std::uint16_t>(value));
        const std::uint16_t* const expected = ramp.data() + (65536 - value);
        for (const TWay way : kEveryWay) {
            ForceWay(way);
            Kernels::SubtractInto(output.data(), image.data(), background.data(), output.size());
            ASSERT_TRUE(AreEqual(output, expected)) << value << way;
            output = image;
            Kernels::SubtractInPlace(output.data(), background.data(), output.size());
            ASSERT_TRUE(AreEqual(output, expected)) << value << " in place";
        }
    }
}

// Factors that a camera could give, and every kind that it could not.
std::vector<float> Factors()
{
    const float infinity = std::numeric_limits<float>::infinity();
    std::vector<float> factors = {0.0f,
                                  -0.0f,
                                  1.0f,
                                  0.5f,
                                  1.5f,
                                  2.0f,
                                  0.49999997f,
                                  0.99999994f,
                                  1.0000001f,
                                  1.31751251f,
                                  1.00906467f,
                                  8192.0f,
                                  16383.999f,
                                  16384.0f,
                                  32768.0f,
                                  65535.0f,
                                  65536.0f,
                                  1e9f,
                                  3e38f,
                                  1e-45f,
                                  1e-40f,
                                  1.17549435e-38f,
                                  -1.0f,
                                  -3e38f,
                                  infinity,
                                  -infinity,
                                  std::numeric_limits<float>::quiet_NaN()};
    for (int n = 1; n <= 100; ++n) {
        factors.push_back(static_cast<float>(n) / 100.0f); // levels
        factors.push_back(static_cast<float>(n) / 2.0f);   // halves
        factors.push_back(1.0f / static_cast<float>(n));
    }
    TRandomImages random(8);
    for (int i = 0; i < 3000; ++i) { // exponents around 1
        const std::uint32_t bits = (random.Number(108, 142) << 23) | random.Number(0, 0x7FFFFF);
        float factor = 0.0f;
        std::memcpy(&factor, &bits, sizeof factor);
        factors.push_back(factor);
    }
    return factors;
}

class ExhaustiveScaling : public testing::TestWithParam<std::tuple<Platform::TInstructionSet, int>> {};
INSTANTIATE_TEST_SUITE_P(InEveryRoundingMode, ExhaustiveScaling,
                         testing::Combine(testing::Values(Platform::TInstructionSet::Baseline,
                                                          Platform::TInstructionSet::Avx2,
                                                          Platform::TInstructionSet::Avx512),
                                          testing::ValuesIn(kRoundingModes)));

TEST_P(ExhaustiveScaling, ScalesAllValuesByManyFactors)
{
    const auto [instructionSet, mode] = GetParam();
    if (instructionSet > Platform::BestInstructionSet()) {
        GTEST_SKIP() << "this processor or system does not have the instruction set";
    }
    Kernels::chosenTable.store(&Kernels::TableFor(instructionSet));
    const TPixels pixels = AllValues();
    TPixels output(65536);
    TPixels expected(65536);
    const std::vector<float> factors = Factors();
    for (std::size_t i = 0; i < factors.size(); i += kEvery > 1 ? 7 : 1) {
        {
            const TScopedRounding rounding(mode);
            Kernels::Plain::Scale(expected.data(), pixels.data(), pixels.size(), factors[i]);
        }
        for (const TWay way : kEveryWay) {
            ForceWay(way);
            {
                const TScopedRounding rounding(mode);
                Kernels::Scale(output.data(), pixels.data(), pixels.size(), factors[i]);
            }
            ASSERT_TRUE(AreEqual(output, expected.data())) << "factor " << factors[i] << way;
        }
    }
    Kernels::chosenTable.store(nullptr);
    Kernels::chosenHabits.store(nullptr);
}

// Bright, dark and mixed frames; from 257 on the sums lose bits, and have to lose the same.
TEST_P(ExhaustiveKernels, AveragesUpTo300Frames)
{
    TRandomImages random(9);
    const std::size_t count = 77;
    const std::vector<Literal::TImage> bright = random.Stack(300, static_cast<int>(count), 1, 65000);
    const std::vector<Literal::TImage> mixed = random.Stack(300, static_cast<int>(count), 1);
    for (const auto* stack : {&bright, &mixed}) {
        std::vector<const std::uint16_t*> frames;
        for (const Literal::TImage& frame : *stack) {
            frames.push_back(frame.pixels.data());
        }
        std::vector<float> scratch(Kernels::AverageScratchLength(count));
        for (std::size_t frameCount = 1; frameCount <= 300; ++frameCount) {
            for (const int mode : kRoundingModes) {
                TPixels output(count);
                TPixels expected(count);
                {
                    const TScopedRounding rounding(mode);
                    Kernels::Plain::Average(expected.data(), frames.data(), frameCount, count);
                    Kernels::Average(output.data(), frames.data(), frameCount, count, scratch.data());
                }
                ASSERT_EQ(output, expected) << frameCount << " frames, rounding mode " << mode;
            }
        }
    }
}

TEST_P(ExhaustiveKernels, AveragesAllPairs)
{
    const TPixels first = AllValues();
    TPixels output(65536);
    TPixels expected(65536);
    for (std::uint32_t value = 0; value < 65536; value += kEvery * 4 + 1) {
        const TPixels second(65536, static_cast<std::uint16_t>(value));
        const std::uint16_t* const frames[] = {first.data(), second.data()};
        for (std::uint32_t i = 0; i < 65536; ++i) {
            expected[i] = static_cast<std::uint16_t>((i + value + 1) / 2);
        }
        Kernels::Average(output.data(), frames, 2, output.size(), nullptr);
        ASSERT_TRUE(AreEqual(output, expected.data())) << value;
    }
}

} // namespace
