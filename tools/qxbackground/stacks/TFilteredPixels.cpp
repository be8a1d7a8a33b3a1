#include "stacks/TFilteredPixels.h"

#include "base/WideRegisters.h"
#include "images/SampleStep.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace workbench {

namespace {

constexpr int kFarthestMove = 32767;

// Makes moves of pixels, in their memory.
QXBC_INLINED void MovesPlainly(std::uint16_t* pixels, const unsigned char* filtered, std::size_t count)
{
    for (std::size_t pixel = 0; pixel < count; ++pixel) {
        const int move = int{pixels[pixel]} - (filtered[2 * pixel] | filtered[2 * pixel + 1] << 8);
        const int kept = move > kFarthestMove ? kFarthestMove : move < -kFarthestMove ? -kFarthestMove : move;
        pixels[pixel] = static_cast<std::uint16_t>(kept);
    }
}

struct TFarMoves {
    std::uint64_t above = 0, below = 0;
};

QXBC_INLINED TFarMoves CountFarPlainly(const std::uint16_t* moves, std::size_t count, int most)
{
    // Blocks of which a narrow number counts, which is what compilers make vectors of.
    constexpr std::size_t kBlock = 32768;
    TFarMoves far;
    for (std::size_t start = 0; start < count; start += kBlock) {
        const std::size_t end = count - start < kBlock ? count : start + kBlock;
        std::uint16_t above = 0, below = 0;
        for (std::size_t pixel = start; pixel < end; ++pixel) {
            const auto move = static_cast<std::int16_t>(moves[pixel]);
            above = static_cast<std::uint16_t>(above + (move > most ? 1 : 0));
            below = static_cast<std::uint16_t>(below + (move < -most ? 1 : 0));
        }
        far.above += above;
        far.below += below;
    }
    return far;
}

#ifdef QXBC_WIDE
QXBC_WIDE void MovesWidely(std::uint16_t* pixels, const unsigned char* filtered, std::size_t count)
{
    MovesPlainly(pixels, filtered, count);
}

QXBC_WIDE TFarMoves CountFarWidely(const std::uint16_t* moves, std::size_t count, int most)
{
    return CountFarPlainly(moves, count, most);
}
#endif

void MakeMoves(std::uint16_t* pixels, const unsigned char* filtered, std::size_t count)
{
#ifdef QXBC_WIDE
    if (HasWideRegisters())
        return MovesWidely(pixels, filtered, count);
#endif
    MovesPlainly(pixels, filtered, count);
}

TFarMoves CountFar(const std::uint16_t* moves, std::size_t count, int most)
{
#ifdef QXBC_WIDE
    if (HasWideRegisters())
        return CountFarWidely(moves, count, most);
#endif
    return CountFarPlainly(moves, count, most);
}

} // namespace

void TFilteredPixels::Add(const unsigned char* bytes, std::size_t count)
{
    const std::size_t more = std::min(count / 2, pixels.size() - added);
    MakeMoves(pixels.data() + added, bytes, more);
    added += more;
}

void TFilteredPixels::Count(double sigma)
{
    if (added == 0)
        return;
    const std::size_t step = SampleStep(added, kUsualSample);
    std::vector<int> distances;
    for (std::size_t pixel = 0; pixel < added; pixel += step)
        distances.push_back(std::abs(int{static_cast<std::int16_t>(pixels[pixel])}));
    const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
    std::nth_element(distances.begin(), middle, distances.end());
    const double most = sigma * std::max(1.4826 * *middle, 1.0);
    const TFarMoves far = CountFar(pixels.data(), added, static_cast<int>(std::min(most, kFarthestMove - 1.0)));
    hot = far.above;
    dead = far.below;
}

} // namespace workbench
