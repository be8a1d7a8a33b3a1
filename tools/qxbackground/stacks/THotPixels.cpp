#include "stacks/THotPixels.h"

#include "base/TToolError.h"
#include "base/Wording.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

namespace workbench {

namespace {

// Calls `take` with every pixel of the square around a pixel, as far as it lies in the image, but for the pixel itself.
template <class TTake> void ForNeighbours(TSize size, int x, int y, int radius, TTake&& take)
{
    for (int row = std::max(y - radius, 0); row <= std::min(y + radius, size.height - 1); ++row) {
        for (int column = std::max(x - radius, 0); column <= std::min(x + radius, size.width - 1); ++column) {
            if (row != y || column != x)
                take(static_cast<std::size_t>(row) * static_cast<std::size_t>(size.width) +
                     static_cast<std::size_t>(column));
        }
    }
}

// Of at least one value; twice the median, so that it is a whole number.
int TwiceMedian(std::vector<std::uint16_t>& values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return values.size() % 2 == 1 ? 2 * *middle : *middle + *std::max_element(values.begin(), middle);
}

std::size_t IndexOf(TSize size, const THotPixels::TPixel& pixel)
{
    return static_cast<std::size_t>(pixel.y) * static_cast<std::size_t>(size.width) + static_cast<std::size_t>(pixel.x);
}

// A side of an image in parts of about 64 pixels. Where a glow brightens a corner, its pixels differ more from one
// another than those elsewhere, and what stands out there is to be told by what is usual there.
struct TParts {
    explicit TParts(int length) : all(length), count(std::max((length + 32) / 64, 1)) {}
    int Begin(int part) const { return static_cast<int>(static_cast<std::int64_t>(all) * part / count); }

    const int all, count;
};

} // namespace

THotPixels THotPixels::Find(const TImage& dark, double sigma, bool subtractedAsTheyAre)
{
    THotPixels found;
    found.size = dark.size;
    std::vector<int> twiceAbove(dark.pixels.size());
    std::vector<std::uint16_t> around;
    for (int y = 0; y < dark.size.height; ++y) {
        for (int x = 0; x < dark.size.width; ++x) {
            around.clear();
            ForNeighbours(dark.size, x, y, 1, [&](std::size_t i) { around.push_back(dark.pixels[i]); });
            const std::size_t index = IndexOf(dark.size, {x, y});
            if (!around.empty())
                twiceAbove[index] = 2 * dark.pixels[index] - TwiceMedian(around);
        }
    }
    std::vector<int> distances;
    // Of twice the distances of a part: no less than 2.
    const auto spread = [&](int left, int top, int right, int bottom) {
        distances.clear();
        for (int y = top; y < bottom; ++y) {
            const auto row = twiceAbove.begin() + static_cast<std::ptrdiff_t>(IndexOf(dark.size, {0, y}));
            std::transform(row + left, row + right, std::back_inserter(distances),
                           [](int above) { return std::abs(above); });
        }
        const auto middle = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
        std::nth_element(distances.begin(), middle, distances.end());
        return std::max(1.4826 * *middle, 2.0);
    };
    const double ofAll = subtractedAsTheyAre ? HUGE_VAL : spread(0, 0, dark.size.width, dark.size.height);
    const TParts columns(dark.size.width), rows(dark.size.height);
    for (int part = 0; part < rows.count * columns.count; ++part) {
        const int top = rows.Begin(part / columns.count), bottom = rows.Begin(part / columns.count + 1);
        const int left = columns.Begin(part % columns.count), right = columns.Begin(part % columns.count + 1);
        const double most = sigma * std::min(spread(left, top, right, bottom), ofAll);
        for (int y = top; y < bottom; ++y) {
            for (int x = left; x < right; ++x) {
                const int above = twiceAbove[IndexOf(dark.size, {x, y})];
                if (std::abs(above) > most)
                    found.pixels.push_back({x, y, above < 0});
            }
        }
    }
    std::sort(found.pixels.begin(), found.pixels.end(), [&dark](const TPixel& one, const TPixel& other) {
        return IndexOf(dark.size, one) < IndexOf(dark.size, other);
    });
    return found;
}

THotPixels THotPixels::Read(const std::string& path)
{
    std::error_code error;
    if (!std::filesystem::exists(path, error))
        throw TToolError(path, "does not exist");
    std::ifstream file{std::filesystem::path(path)};
    if (!file)
        throw TToolError(path, "cannot be opened");
    THotPixels list;
    std::string line;
    for (unsigned number = 1; std::getline(file, line); ++number) {
        const auto fail = [&](const std::string& what) {
            throw TToolError(path, "line " + std::to_string(number) + ": " + what);
        };
        std::istringstream words(line.substr(0, line.find('#')));
        std::string first, kind, more;
        if (!(words >> first))
            continue;
        TPixel pixel;
        if (list.size.width == 0) {
            if (first != "size" || !(words >> list.size.width >> list.size.height) || words >> more ||
                list.size.width < 1 || list.size.height < 1)
                fail("a list of hot pixels begins with 'size WIDTH HEIGHT'");
            continue;
        }
        std::istringstream column(first);
        if (!(column >> pixel.x) || column >> more || !(words >> pixel.y))
            fail("'" + line + "' is not 'X Y hot' or 'X Y dead'");
        if (words >> kind && ((kind != "hot" && kind != "dead") || words >> more))
            fail("'" + line + "' is not 'X Y hot' or 'X Y dead'");
        pixel.dead = kind == "dead";
        if (pixel.x < 0 || pixel.y < 0 || pixel.x >= list.size.width || pixel.y >= list.size.height)
            fail("'" + line + "' lies outside of " + list.size.Text() + " pixels, counted from 0");
        list.pixels.push_back(pixel);
    }
    if (file.bad() || list.size.width == 0)
        throw TToolError(path, "is no list of hot pixels: it has no line 'size WIDTH HEIGHT'");
    const auto before = [&list](const TPixel& one, const TPixel& other) {
        return std::pair(IndexOf(list.size, one), one.dead) < std::pair(IndexOf(list.size, other), other.dead);
    };
    std::sort(list.pixels.begin(), list.pixels.end(), before);
    list.pixels.erase(
        std::unique(list.pixels.begin(), list.pixels.end(),
                    [](const TPixel& one, const TPixel& other) { return one.x == other.x && one.y == other.y; }),
        list.pixels.end());
    return list;
}

std::string THotPixels::Text() const
{
    std::string text = fmt::format("# Hot and dead pixels: column and row, from 0. Lines may be added and removed.\n"
                                   "size {} {}\n",
                                   size.width, size.height);
    for (const TPixel& pixel : pixels)
        text += fmt::format("{} {} {}\n", pixel.x, pixel.y, pixel.dead ? "dead" : "hot");
    return text;
}

std::string THotPixels::Counts() const
{
    const auto dead = std::count_if(pixels.begin(), pixels.end(), [](const TPixel& pixel) { return pixel.dead; });
    return std::to_string(pixels.size() - static_cast<std::size_t>(dead)) + " hot and " +
           Counted(static_cast<std::uint64_t>(dead), "dead pixel");
}

THotPixels THotPixels::Cut(int left, int top, TSize part) const
{
    THotPixels cut;
    cut.size = part;
    for (const TPixel& pixel : pixels) {
        if (pixel.x >= left && pixel.y >= top && pixel.x < left + part.width && pixel.y < top + part.height)
            cut.pixels.push_back({pixel.x - left, pixel.y - top, pixel.dead});
    }
    return cut;
}

std::vector<bool> THotPixels::Bad() const
{
    std::vector<bool> bad(size.Pixels());
    for (const TPixel& pixel : pixels)
        bad[IndexOf(size, pixel)] = true;
    return bad;
}

void THotPixels::Repair(TImage& image, bool onlyDead) const
{
    constexpr std::size_t kEnough = 3;
    constexpr int kWidest = 16;
    const std::vector<bool> bad = Bad();
    std::vector<std::uint16_t> good;
    for (const TPixel& pixel : pixels) {
        if (onlyDead && !pixel.dead)
            continue;
        for (int radius = 1; radius <= kWidest; ++radius) {
            good.clear();
            ForNeighbours(size, pixel.x, pixel.y, radius, [&](std::size_t i) {
                if (!bad[i])
                    good.push_back(image.pixels[i]);
            });
            if (good.size() >= kEnough)
                break;
        }
        if (!good.empty())
            image.pixels[IndexOf(size, pixel)] = static_cast<std::uint16_t>((TwiceMedian(good) + 1) / 2);
    }
}

} // namespace workbench
