#include "pictures/StrokeFont.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace workbench {

namespace {

// Strokes, with spaces between them. A stroke is a row of points, each of two hexadecimal digits: to the right, and up,
// where 3 is the baseline, 9 the top of small letters and c that of capitals. Behind '~' the points between the first
// and the last one are not met but rounded: each is the control point of a parabola from one middle to the next.
constexpr char kFirst = ' ', kLast = '~';
constexpr std::array<const char*, 95> kGlyphs{"",
                                              "0c06 0303",
                                              "0c0a 2c2a",
                                              "233c 536c 0676 1989",
                                              "~6a6c0c0868630305 3d32",
                                              "037c ~0b0c3c39090b ~454676734345",
                                              "~73191c5c5907035377",
                                              "0c0a",
                                              "~2d0a0522",
                                              "~0d2a2502",
                                              "2b27 0a48 084a",
                                              "3a34 0767",
                                              "1301",
                                              "0747",
                                              "0303",
                                              "025c",
                                              "~080c6c630308",
                                              "1a3c33",
                                              "~0a0c6c6803 0363",
                                              "~0a0c6c6838 ~3868630305",
                                              "434c0666",
                                              "6c0c07 ~070969630304",
                                              "~5c0c0363690906",
                                              "0c6c23",
                                              "~38080c6c6838 ~380803636838",
                                              "~13636c0c066669",
                                              "0303 0808",
                                              "1301 1818",
                                              "5a0754",
                                              "0969 0565",
                                              "0a5704",
                                              "~0a0c5c583836 3333",
                                              "~878c0c0373 ~676939356567 ~67658587",
                                              "034c83 2767",
                                              "43030c3c ~3c6c6838 0848 ~48787343",
                                              "~7a7c0c037375",
                                              "33030c3c ~3c7c7333",
                                              "63030c6c 0858",
                                              "030c6c 0858",
                                              "~7a7c0c037376 7646",
                                              "030c 737c 0878",
                                              "030c",
                                              "5c56 ~56530305",
                                              "030c 7c07 2873",
                                              "0c0363",
                                              "030c458c83",
                                              "030c737c",
                                              "~080c8c830308",
                                              "030c4c ~4c7c7747 4707",
                                              "~080c8c830308 5582",
                                              "030c4c ~4c7c7747 4707 4773",
                                              "~6a6c0c0868630305",
                                              "0c8c 4c43",
                                              "0c06 ~06037376 767c",
                                              "0c438c",
                                              "0c235b83ac",
                                              "0c73 7c03",
                                              "0c478c 4743",
                                              "0c7c0373",
                                              "2d0d0222",
                                              "0c52",
                                              "0d2d2202",
                                              "093c69",
                                              "0262",
                                              "0c1a",
                                              "5953 ~575909035355",
                                              "0c03 ~070959530305",
                                              "~585909035354",
                                              "5c53 ~575909035355",
                                              "0656 ~565909035354",
                                              "~4c1c1a 1a13 0939",
                                              "5952 ~52500001 ~575909035355",
                                              "0c03 ~07095956 5653",
                                              "0903 0c0c",
                                              "2922 ~222000 2c2c",
                                              "0c03 5905 2753",
                                              "0c03",
                                              "0903 ~07094946 4643 ~47498986 8683",
                                              "0903 ~07095956 5653",
                                              "~060959530306",
                                              "0900 ~070959530305",
                                              "5950 ~575909035355",
                                              "0903 ~070939",
                                              "~4849090646430304",
                                              "1b15 ~151333 0939",
                                              "0906 ~06035356 5953",
                                              "093369",
                                              "0923496389",
                                              "0953 5903",
                                              "0933 6920",
                                              "09590353",
                                              "~3d1d1807 ~07161232",
                                              "0d01",
                                              "~0d2d2837 ~37262202",
                                              "~06194558"};

constexpr double kCapital = 9; // height of capitals, in units of the strokes
constexpr double kBaseline = 3;
constexpr double kBetween = 2.6; // from the right edge of a letter to the next one
constexpr double kSpace = 3;

struct TPoint {
    double x = 0, y = 0;
};
using TLine = std::vector<TPoint>;

const char* GlyphOf(char character)
{
    const char known = character < kFirst || character > kLast ? '?' : character;
    return kGlyphs[static_cast<std::size_t>(known - kFirst)];
}

int Digit(char digit)
{
    return digit <= '9' ? digit - '0' : digit - 'a' + 10;
}

TPoint Middle(const TPoint& one, const TPoint& other)
{
    return {(one.x + other.x) / 2, (one.y + other.y) / 2};
}

// A row of control points as a row of points close together.
TLine Rounded(const TLine& controls)
{
    constexpr int kSteps = 6;
    TLine line{controls.front()};
    for (std::size_t at = 1; at + 1 < controls.size(); ++at) {
        const TPoint from = line.back(), control = controls[at];
        const bool isLast = at + 2 == controls.size();
        const TPoint to = isLast ? controls[at + 1] : Middle(control, controls[at + 1]);
        for (int step = 1; step <= kSteps; ++step) {
            const double t = static_cast<double>(step) / kSteps, s = 1 - t;
            line.push_back({s * s * from.x + 2 * s * t * control.x + t * t * to.x,
                            s * s * from.y + 2 * s * t * control.y + t * t * to.y});
        }
    }
    return line;
}

std::vector<TLine> StrokesOf(char character)
{
    std::vector<TLine> strokes;
    const std::string glyph = GlyphOf(character);
    for (std::size_t at = 0; at < glyph.size();) {
        const std::size_t end = std::min(glyph.find(' ', at), glyph.size());
        const bool isRound = glyph[at] == '~';
        TLine line;
        for (at += isRound ? 1 : 0; at + 1 < end; at += 2)
            line.push_back({static_cast<double>(Digit(glyph[at])), static_cast<double>(Digit(glyph[at + 1]))});
        strokes.push_back(isRound ? Rounded(line) : line);
        at = end + 1;
    }
    return strokes;
}

// In units of the strokes, without what comes behind.
double WidthOf(char character)
{
    double width = character == ' ' ? kSpace : 0;
    for (const TLine& line : StrokesOf(character)) {
        for (const TPoint& point : line)
            width = std::max(width, point.x);
    }
    return width;
}

double Distance(const TPoint& point, const TPoint& from, const TPoint& to)
{
    const double dx = to.x - from.x, dy = to.y - from.y;
    const double length = dx * dx + dy * dy;
    const double along =
        length > 0 ? std::clamp(((point.x - from.x) * dx + (point.y - from.y) * dy) / length, 0.0, 1.0) : 0;
    return std::hypot(point.x - from.x - along * dx, point.y - from.y - along * dy);
}

// In pixels, y downwards. A dot's share of ink is how far its middle lies within the stroke.
void DrawSegment(TPicture& picture, const TPoint& from, const TPoint& to, const TPen& pen)
{
    const double reach = pen.width / 2 + 0.5;
    const auto range = [reach](double one, double other, int most) {
        return std::pair{std::max(0, static_cast<int>(std::floor(std::min(one, other) - reach))),
                         std::min(most - 1, static_cast<int>(std::ceil(std::max(one, other) + reach)))};
    };
    const auto [left, right] = range(from.x, to.x, picture.width);
    const auto [top, bottom] = range(from.y, to.y, picture.height);
    for (int y = top; y <= bottom; ++y) {
        for (int x = left; x <= right; ++x) {
            const double share = std::clamp(reach - Distance({x + 0.5, y + 0.5}, from, to), 0.0, 1.0);
            const auto shade = static_cast<std::uint8_t>(std::lround(255 - share * (255 - pen.ink)));
            std::uint8_t& dot = picture.At(x, y);
            dot = std::min(dot, shade);
        }
    }
}

} // namespace

double TextWidth(const std::string& text, const TPen& pen)
{
    double width = 0;
    for (const char character : text)
        width += WidthOf(character) + kBetween;
    return text.empty() ? 0 : (width - kBetween) * pen.height / kCapital + pen.width;
}

void PutText(TPicture& picture, double left, double baseline, const std::string& text, const TPen& pen)
{
    const double unit = pen.height / kCapital;
    double x = left + pen.width / 2;
    const double y = baseline - pen.width / 2;
    for (const char character : text) {
        const auto place = [&](const TPoint& point) {
            return TPoint{x + point.x * unit, y - (point.y - kBaseline) * unit};
        };
        for (const TLine& line : StrokesOf(character)) {
            for (std::size_t at = 0; at + 1 < line.size(); ++at)
                DrawSegment(picture, place(line[at]), place(line[at + 1]), pen);
        }
        x += (WidthOf(character) + kBetween) * unit;
    }
}

} // namespace workbench
