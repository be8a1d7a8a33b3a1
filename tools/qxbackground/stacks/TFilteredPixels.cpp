#include "stacks/TFilteredPixels.h"

#include "base/LargeMemory.h"
#include "images/SampleStep.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace workbench {

namespace {

constexpr int kFarthestMove = 32767;

} // namespace

void TFilteredPixels::Add(const unsigned char* bytes, std::size_t count)
{
    if (moves.empty()) {
        ResizeLarge(moves, dark.pixels.size());
        moves.clear();
    }
    const std::size_t begin = moves.size();
    const std::size_t pixels = std::min(count / 2, dark.pixels.size() - begin);
    moves.resize(begin + pixels);
    const std::uint16_t* const from = dark.pixels.data() + begin;
    std::int16_t* const to = moves.data() + begin;
    for (std::size_t pixel = 0; pixel < pixels; ++pixel) {
        const int move = int{from[pixel]} - (bytes[2 * pixel] | bytes[2 * pixel + 1] << 8);
        to[pixel] = static_cast<std::int16_t>(std::clamp(move, -kFarthestMove, kFarthestMove));
    }
}

void TFilteredPixels::Count(double sigma)
{
    if (moves.empty())
        return;
    const std::size_t step = SampleStep(moves.size(), kUsualSample);
    std::vector<int> distances;
    for (std::size_t pixel = 0; pixel < moves.size(); pixel += step)
        distances.push_back(std::abs(int{moves[pixel]}));
    const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
    std::nth_element(distances.begin(), middle, distances.end());
    const double far = sigma * std::max(1.4826 * *middle, 1.0);
    const int most = static_cast<int>(std::min(far, kFarthestMove - 1.0));
    // Blocks of which a narrow number counts, which is what compilers make vectors of.
    constexpr std::size_t kBlock = 32768;
    for (std::size_t start = 0; start < moves.size(); start += kBlock) {
        const std::size_t end = std::min(start + kBlock, moves.size());
        std::uint16_t above = 0, below = 0;
        for (std::size_t pixel = start; pixel < end; ++pixel) {
            above = static_cast<std::uint16_t>(above + (moves[pixel] > most ? 1 : 0));
            below = static_cast<std::uint16_t>(below + (moves[pixel] < -most ? 1 : 0));
        }
        hot += above;
        dead += below;
    }
}

} // namespace workbench
