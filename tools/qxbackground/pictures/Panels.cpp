#include "pictures/Panels.h"

#include "images/THistogram.h"
#include "pictures/StrokeFont.h"
#include "pictures/TShown.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

constexpr int kMargin = 16, kBetweenPanels = 28; // all in dots
constexpr int kTitleLine = 26, kNoteLine = 20, kAbovePanel = 4;
constexpr int kBeforeScale = 12, kScaleWidth = 16, kTick = 5, kBeforeNumber = 4, kLowestScale = 110;
constexpr double kAboutBetweenTicks = 55;
constexpr TPen kTitlePen{13, 2.0, 0}, kNotePen{10.5, 1.4, 60}, kNumberPen{10.5, 1.4, 0};
constexpr std::uint8_t kFrame = 120;

struct TScale {
    TStretch stretch;
    int height = 0;         // in dots
    std::vector<int> ticks; // values
};

// Values of one, two or five times a power of ten, about `kAboutBetweenTicks` apart; both ends where that gives none.
TScale ScaleFor(const TStretch& stretch, int height)
{
    TScale scale{stretch, height, {}};
    const double span = stretch.white - stretch.black;
    const double wanted = span * kAboutBetweenTicks / height;
    const double power = std::pow(10.0, std::floor(std::log10(std::max(wanted, 1.0))));
    double step = power;
    for (const double times : {2.0, 5.0, 10.0}) {
        if (step < wanted)
            step = times * power;
    }
    const int whole = std::max(1, static_cast<int>(step));
    for (int value = (stretch.black + whole - 1) / whole * whole; value <= stretch.white; value += whole)
        scale.ticks.push_back(value);
    if (scale.ticks.size() < 2)
        scale.ticks = {stretch.black, stretch.white};
    return scale;
}

std::string TickText(const TScale& scale, int value)
{
    return std::to_string(value) + (value == scale.ticks.back() ? " ADU" : "");
}

int NumbersWidth(const TScale& scale)
{
    double width = 0;
    for (const int tick : scale.ticks)
        width = std::max(width, TextWidth(TickText(scale, tick), kNumberPen));
    return static_cast<int>(std::ceil(width));
}

void DrawFrame(TPicture& picture, int left, int top, int width, int height)
{
    for (int x = left - 1; x <= left + width; ++x)
        picture.At(x, top - 1) = picture.At(x, top + height) = kFrame;
    for (int y = top - 1; y <= top + height; ++y)
        picture.At(left - 1, y) = picture.At(left + width, y) = kFrame;
}

void DrawScale(TPicture& picture, int left, int top, const TScale& scale)
{
    const double span = scale.stretch.white - scale.stretch.black;
    for (int y = 0; y < scale.height; ++y) {
        const double share = scale.height > 1 ? 1 - static_cast<double>(y) / (scale.height - 1) : 1;
        for (int x = 0; x < kScaleWidth; ++x)
            picture.At(left + x, top + y) = static_cast<std::uint8_t>(std::lround(255 * share));
    }
    DrawFrame(picture, left, top, kScaleWidth, scale.height);
    for (const int tick : scale.ticks) {
        const double share = (tick - scale.stretch.black) / span;
        const int y = top + static_cast<int>(std::lround((1 - share) * (scale.height - 1)));
        for (int x = 0; x < kTick; ++x)
            picture.At(left + kScaleWidth + 1 + x, y) = 0;
        PutText(picture, left + kScaleWidth + kTick + kBeforeNumber, y + kNumberPen.height / 2 + 1,
                TickText(scale, tick), kNumberPen);
    }
}

std::string FiguresText(const TImage& image)
{
    THistogram histogram;
    histogram.Add(image);
    return fmt::format("median {:g}, spread {:.3g} ADU", histogram.Median(), histogram.RobustSpread());
}

// A panel with all that stands around it.
struct TCell {
    std::string title, note;
    TShown shown;
    TScale scale;
    int left = 0, top = 0; // of the title

    int Width() const
    {
        const double texts = std::max(TextWidth(title, kTitlePen), TextWidth(note, kNotePen));
        return std::max(static_cast<int>(std::ceil(texts)),
                        shown.Width() + kBeforeScale + kScaleWidth + kTick + kBeforeNumber + NumbersWidth(scale));
    }
    int Height() const { return kTitleLine + kNoteLine + kAbovePanel + std::max(shown.Height(), scale.height); }
    void Draw(TPicture& picture) const
    {
        PutText(picture, left, top + kTitlePen.height + 2, title, kTitlePen);
        PutText(picture, left, top + kTitleLine + kNotePen.height + 2, note, kNotePen);
        const int panelTop = top + kTitleLine + kNoteLine + kAbovePanel;
        shown.DrawInto(picture, left, panelTop, scale.stretch);
        DrawFrame(picture, left, panelTop, shown.Width(), shown.Height());
        DrawScale(picture, left + shown.Width() + kBeforeScale, panelTop, scale);
    }
};

std::vector<TCell> Cells(const std::vector<TPanel>& panels)
{
    std::vector<TCell> cells;
    for (const TPanel& panel : panels) {
        TShown shown(*panel.image);
        TStretch stretch = shown.Stretch();
        if (panel.rangeOf) {
            const TStretch& other = cells.at(*panel.rangeOf).scale.stretch;
            stretch.white = stretch.black + other.white - other.black;
        }
        const TScale scale = ScaleFor(stretch, std::max(shown.Height(), kLowestScale));
        cells.push_back({panel.title, FiguresText(*panel.image), std::move(shown), scale});
    }
    return cells;
}

} // namespace

TPanelPicture DrawPanels(const std::vector<TPanel>& panels, std::size_t columns)
{
    std::vector<TCell> cells = Cells(panels);
    std::vector<int> widths(columns, 0);
    int right = 0, bottom = kMargin;
    for (std::size_t at = 0; at < cells.size(); ++at)
        widths[at % columns] = std::max(widths[at % columns], cells[at].Width());
    for (std::size_t at = 0; at < cells.size(); ++at) {
        cells[at].left = at % columns == 0 ? kMargin : right + kBetweenPanels;
        cells[at].top = bottom;
        right = cells[at].left + widths[at % columns];
        if (at % columns + 1 == columns || at + 1 == cells.size())
            bottom += cells[at].Height() + kBetweenPanels; // panels have one size, and so one height
    }

    TPanelPicture result;
    result.size = cells.front().shown.SizeText();
    TPicture& picture = result.picture;
    picture.width = 2 * kMargin + static_cast<int>(std::ceil(TextWidth(result.size, kNotePen)));
    for (const TCell& cell : cells)
        picture.width = std::max(picture.width, cell.left + cell.Width() + kMargin);
    const int sizeLine = bottom - kBetweenPanels + kNoteLine;
    picture.height = sizeLine + kMargin;
    picture.pixels.assign(static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height), 255);
    for (const TCell& cell : cells) {
        cell.Draw(picture);
        result.legend.push_back(
            fmt::format("black {}, white {} ADU", cell.scale.stretch.black, cell.scale.stretch.white));
    }
    PutText(picture, kMargin, sizeLine, result.size, kNotePen);
    return result;
}

} // namespace workbench
