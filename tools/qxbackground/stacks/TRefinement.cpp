#include "stacks/TRefinement.h"

#include "base/Wording.h"
#include "images/FitsCards.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

constexpr int kHighest = 65535;
const char* const kPedestal = "PEDESTAL";

} // namespace

TRefinement TRefinement::Cut(int left, int top, TSize part) const
{
    TRefinement cut = *this;
    if (!hotPixels.Pixels().empty())
        cut.hotPixels = hotPixels.Cut(left, top, part);
    if (noisyPixels.Size().width > 0)
        cut.noisyPixels = noisyPixels.Cut(left, top, part);
    if (!bias.pixels.empty() && bias.size != part) {
        cut.bias = {part, {}};
        for (int row = 0; row < part.height; ++row) {
            const auto start = bias.pixels.begin() + static_cast<std::ptrdiff_t>(top + row) * bias.size.width + left;
            cut.bias.pixels.insert(cut.bias.pixels.end(), start, start + part.width);
        }
    }
    return cut;
}

void TRefinement::Before(TImage& image)
{
    overflow.clear();
    if (pedestal == 0 && bias.pixels.empty() && rest.empty())
        return;
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        const int value =
            image.pixels[i] + pedestal - (bias.pixels.empty() ? 0 : bias.pixels[i]) - (rest.empty() ? 0 : rest[i]);
        if (value > kHighest)
            overflow.emplace_back(i, value - kHighest);
        image.pixels[i] = static_cast<std::uint16_t>(std::clamp(value, 0, kHighest));
    }
}

void TRefinement::After(TImage& image) const
{
    for (const auto& [pixel, excess] : overflow)
        image.pixels[pixel] = static_cast<std::uint16_t>(std::min(image.pixels[pixel] + excess, kHighest));
    const bool evensNoise = noisyPixels.Size().width > 0;
    if (evensNoise)
        noisyPixels.Repair(image, pedestal);
    if (!hotPixels.Pixels().empty())
        hotPixels.Repair(image, evensNoise);
}

std::vector<std::string> TRefinement::Notes() const
{
    std::vector<std::string> notes;
    if (!bias.pixels.empty())
        notes.push_back("Bias subtracted: the average of " + Counted(biasFrames, "bias frame"));
    if (!rest.empty())
        notes.push_back("Dark frames subtracted as they are, without the median filter");
    if (pedestal > 0)
        notes.push_back(fmt::format("Pedestal added: {} ADU", pedestal));
    const bool evensNoise = noisyPixels.Size().width > 0;
    if (evensNoise)
        notes.push_back("Noise of dark current beyond the usual evened out by neighbours: " + noisyPixels.Counts());
    if (hotPixels.Size().width > 0)
        notes.push_back(evensNoise ? "Among them, or replaced where dead: " + hotPixels.Counts()
                                   : "Replaced by the median of their good neighbours: " + hotPixels.Counts());
    return notes;
}

void TRefinement::RecordIn(TPageMetadata& metadata) const
{
    std::vector<std::string>& record = metadata.record;
    if (pedestal > 0) {
        // An image that was given one before has both now.
        const double earlier = CardNumber(metadata.cards, kPedestal).value_or(0);
        const auto isPedestal = [](const std::string& card) { return CardText({card}, kPedestal).has_value(); };
        metadata.cards.erase(std::remove_if(metadata.cards.begin(), metadata.cards.end(), isPedestal),
                             metadata.cards.end());
        record.push_back(
            Card(kPedestal, fmt::format("{:g}", pedestal + earlier), "ADU that were added to every pixel"));
    }
    std::vector<std::string> lines = history;
    for (const std::string& note : Notes())
        lines.push_back(note);
    for (const std::string& note : lines)
        record.push_back(fmt::format("{:<80.80}", "HISTORY " + note));
}

std::vector<int> RestOf(const TExactDark& exact, int left, int top, double scale, const TImage& background)
{
    std::vector<int> rest;
    rest.reserve(background.pixels.size());
    for (int row = 0; row < background.size.height; ++row) {
        std::size_t from = static_cast<std::size_t>(top + row) * static_cast<std::size_t>(exact.size.width) +
                           static_cast<std::size_t>(left);
        for (int column = 0; column < background.size.width; ++column, ++from) {
            const double scaled = std::min(exact.dark[from] * scale, 65535.0);
            const double all = exact.biasRest.empty() ? scaled : scaled + exact.biasRest[from];
            rest.push_back(static_cast<int>(std::floor(all + 0.5)) - background.pixels[rest.size()]);
        }
    }
    return rest;
}

void SubtractBias(TImage& dark, const TImage& bias)
{
    for (std::size_t i = 0; i < dark.pixels.size(); ++i)
        dark.pixels[i] = static_cast<std::uint16_t>(std::max(dark.pixels[i] - bias.pixels[i], 0));
}

} // namespace workbench
