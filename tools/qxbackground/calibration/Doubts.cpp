#include "calibration/Doubts.h"

#include "base/TFileState.h"
#include "base/Wording.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <tuple>

namespace workbench {

namespace {

// The median of some rows, evenly spread; nothing when they cannot be read.
std::optional<double> LevelOf(std::ifstream& file, const TStoredCorrection& correction)
{
    constexpr std::uint32_t kRows = 16;
    constexpr std::uint32_t kMostPixelsOfRow = 4096;
    const std::uint32_t rows = std::min(kRows, correction.height);
    const std::uint32_t columns = std::min(kMostPixelsOfRow, correction.width);
    std::vector<unsigned char> bytes(std::size_t{columns} * 2);
    std::vector<unsigned> values;
    for (std::uint32_t row = 0; row < rows; ++row) {
        const std::uint64_t line = (std::uint64_t{row} * 2 + 1) * correction.height / (std::uint64_t{rows} * 2);
        file.clear();
        file.seekg(static_cast<std::streamoff>(correction.pixelOffset + line * correction.width * 2));
        if (!file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size())))
            return std::nullopt;
        for (std::size_t at = 0; at < bytes.size(); at += 2)
            values.push_back(bytes[at] | static_cast<unsigned>(bytes[at + 1]) << 8);
    }
    if (values.empty())
        return std::nullopt;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

struct TLeveled {
    const TStoredCorrection* correction;
    double level;
};

std::string Named(const TLeveled& one)
{
    return fmt::format("'{}' ({:g} s, {:g} %: {:g} ADU)", Printable(one.correction->key),
                       one.correction->exposureSeconds, one.correction->lightIntensityPercent, one.level);
}

} // namespace

std::vector<std::string> HotterThanLonger(const std::string& path, const std::vector<TStoredCorrection>& corrections,
                                          const std::string& key)
{
    std::vector<const TStoredCorrection*> sorted;
    for (const TStoredCorrection& correction : corrections) {
        if (correction.Product() > 0 && std::isfinite(correction.Product()))
            sorted.push_back(&correction);
    }
    // Those of one size together, by what they should be sorted.
    std::sort(sorted.begin(), sorted.end(), [](const TStoredCorrection* one, const TStoredCorrection* other) {
        return std::tuple(one->width, one->height, one->Product(), one->offset) <
               std::tuple(other->width, other->height, other->Product(), other->offset);
    });
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    std::vector<std::string> lines;
    for (std::size_t index = 0; index + 1 < sorted.size(); ++index) {
        const TStoredCorrection &shorter = *sorted[index], &longer = *sorted[index + 1];
        const bool isAsked = key.empty() || shorter.key == key || longer.key == key;
        if (!isAsked || shorter.width != longer.width || shorter.height != longer.height ||
            shorter.Product() > 0.99 * longer.Product())
            continue;
        const std::optional<double> one = LevelOf(file, shorter), other = LevelOf(file, longer);
        // So much the camera's offset may drift.
        if (one && other && *one > *other + std::max(3.0, 0.05 * *other))
            lines.push_back(fmt::format("{} is brighter than {}, and should be darker: was there light in it, was its "
                                        "sensor warmer, its gain another one?",
                                        Named({&shorter, *one}), Named({&longer, *other})));
    }
    return lines;
}

std::optional<std::int64_t> DayOfChange(const std::string& path)
{
    constexpr std::int64_t kSecondsOfDay = 86400;
    const TFileState state = StateOf(path);
    if (!state.exists)
        return std::nullopt;
    return state.changedSeconds / kSecondsOfDay;
}

} // namespace workbench
