#include "report/PictureData.h"

#include "base/TToolError.h"

#include <nlohmann/json.hpp>
#include <zlib.h>

#include <algorithm>

namespace workbench {

TSampling SampleWhole(const std::vector<const TImage*>& images, std::size_t mostText)
{
    const TSize size = images.front()->size;
    constexpr std::size_t kMostPixels = 1 << 20; // more than any screen shows
    TSampling sampling;
    for (;; ++sampling.step) {
        sampling.width = (size.width + sampling.step - 1) / sampling.step;
        sampling.height = (size.height + sampling.step - 1) / sampling.step;
        const auto pixels = static_cast<std::size_t>(sampling.width) * static_cast<std::size_t>(sampling.height);
        if (pixels == 1)
            return sampling;
        // Two pixels in a byte is the best to be hoped for; what is above that need not be tried.
        if (pixels > kMostPixels || pixels / 2 > mostText)
            continue;
        const auto fits = [&](const TImage* image) {
            return PictureJson(*image, sampling)["data"].get_ref<const std::string&>().size() <= mostText;
        };
        if (std::all_of(images.begin(), images.end(), fits))
            return sampling;
    }
}

TSampling SampleAround(const TSize& size, int x, int y, int side)
{
    TSampling sampling;
    sampling.width = std::min(side, size.width);
    sampling.height = std::min(side, size.height);
    sampling.left = std::clamp(x - sampling.width / 2, 0, size.width - sampling.width);
    sampling.top = std::clamp(y - sampling.height / 2, 0, size.height - sampling.height);
    return sampling;
}

nlohmann::json PictureJson(const TImage& image, const TSampling& sampling)
{
    const auto width = static_cast<std::size_t>(sampling.width);
    const std::size_t count = width * static_cast<std::size_t>(sampling.height);
    std::vector<std::uint8_t> planes(2 * count);
    std::size_t at = 0;
    for (int y = 0; y < sampling.height; ++y) {
        const auto row = static_cast<std::size_t>(sampling.top + y * sampling.step);
        std::uint16_t left = 0;
        for (std::size_t x = 0; x < width; ++x, ++at) {
            const std::size_t column =
                static_cast<std::size_t>(sampling.left) + x * static_cast<std::size_t>(sampling.step);
            const std::uint16_t value = image.pixels[row * static_cast<std::size_t>(image.size.width) + column];
            const auto difference = static_cast<std::uint16_t>(value - left);
            planes[at] = static_cast<std::uint8_t>(difference & 0xFF);
            planes[count + at] = static_cast<std::uint8_t>(difference >> 8);
            left = value;
        }
    }
    uLongf length = compressBound(static_cast<uLong>(planes.size()));
    std::vector<std::uint8_t> packed(length);
    constexpr int kEffort = 5;
    if (compress2(packed.data(), &length, planes.data(), static_cast<uLong>(planes.size()), kEffort) != Z_OK)
        throw TToolError("the report's pictures cannot be compressed");
    packed.resize(length);
    return {{"left", sampling.left},     {"top", sampling.top},   {"width", sampling.width},
            {"height", sampling.height}, {"step", sampling.step}, {"data", Base64(packed)}};
}

std::string Base64(const std::vector<std::uint8_t>& bytes)
{
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::size_t left = std::min<std::size_t>(3, bytes.size() - at);
        std::uint32_t group = std::uint32_t{bytes[at]} << 16;
        if (left > 1)
            group |= std::uint32_t{bytes[at + 1]} << 8;
        if (left > 2)
            group |= bytes[at + 2];
        for (std::size_t digit = 0; digit < 4; ++digit)
            text += digit <= left ? kDigits[(group >> (18 - 6 * digit)) & 63] : '=';
    }
    return text;
}

} // namespace workbench
