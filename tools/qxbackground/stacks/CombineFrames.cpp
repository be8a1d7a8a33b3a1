#include "stacks/CombineFrames.h"

#include "base/TProgress.h"
#include "base/TToolError.h"
#include "base/Wording.h"
#include "images/SampleStep.h"
#include "stacks/TFrameHeaders.h"
#include "stacks/TFrameLevels.h"
#include "stacks/TFrameShelf.h"
#include "stacks/TFrameWatch.h"
#include "stacks/TPixelCombiner.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <optional>

namespace workbench {

namespace {

// How much a pixel differs from one frame to the next, by pairs of neighbouring frames: their levels may differ, and
// a cosmic ray or a star counts for nothing.
class TNoise {
public:
    void Add(const TImage& frame)
    {
        if (!before.empty())
            ofPairs.push_back(OfPair(frame.pixels));
        before = frame.pixels;
    }

    double Adu()
    {
        before = {};
        differences = {};
        if (ofPairs.empty())
            return 0;
        const auto middle = ofPairs.begin() + static_cast<std::ptrdiff_t>(ofPairs.size() / 2);
        std::nth_element(ofPairs.begin(), middle, ofPairs.end());
        return *middle;
    }

private:
    double OfPair(const std::vector<std::uint16_t>& pixels)
    {
        differences.clear();
        const std::size_t step = SampleStep(pixels.size(), kUsualSample);
        for (std::size_t i = 0; i < pixels.size(); i += step)
            differences.push_back(pixels[i] - before[i]);
        const auto median = [this] {
            const auto middle = differences.begin() + static_cast<std::ptrdiff_t>(differences.size() / 2);
            std::nth_element(differences.begin(), middle, differences.end());
            return *middle;
        };
        const int shift = median();
        for (int& difference : differences)
            difference = std::abs(difference - shift);
        return 1.4826 * median() / 1.4142135623730951; // a difference has the noise of two frames
    }

    std::vector<std::uint16_t> before;
    std::vector<int> differences;
    std::vector<double> ofPairs;
};

// What the combining of all pixels left out.
struct TRejected {
    explicit TRejected(std::size_t frames) : bright(frames) {}

    std::uint64_t values = 0;
    std::vector<std::uint64_t> bright; // of each frame: far above what was kept, as a cosmic ray is
};

std::uint16_t Rounded(double value)
{
    return static_cast<std::uint16_t>(std::clamp(std::floor(value + 0.5), 0.0, 65535.0));
}

std::uint16_t Shifted(std::uint16_t value, int shift)
{
    return shift == 0 ? value : static_cast<std::uint16_t>(std::clamp(value + shift, 0, 65535));
}

void RequireFrames(const TStackOptions& how, std::size_t frames, const std::string& what)
{
    const std::size_t least = how.rejection == TRejection::MinMax ? 2 * std::size_t{how.extremes} + 1
                              : how.rejection == TRejection::None ? 1
                                                                  : 3;
    if (frames < least)
        throw TToolError("--reject: " + how.Text() + " needs " + std::to_string(least) + " " + what + " or more, not " +
                         std::to_string(frames));
}

// `levels` holds none where frames stay at the levels they have.
TFrameStack CombineShelf(TFrameShelf& shelf, TSize size, const TStackOptions& how, double noise,
                         const TFrameLevels& levels, TRejected& rejected)
{
    constexpr std::size_t kTile = 64; // pixels whose values are gathered together: whole cache lines of every frame
    constexpr double kFarAbove = 5;   // in units of the noise
    const std::size_t frames = shelf.Frames();
    TPixelCombiner combiner(how, noise, frames);
    TFrameStack stack{frames, {size, std::vector<std::uint16_t>(size.Pixels())}, {}, {}, {}};
    if (how.keepExact)
        stack.exact.resize(size.Pixels());
    const std::vector<int> shifts = how.alignLevels ? levels.Shifts() : std::vector<int>(frames);
    const double rest = how.alignLevels ? levels.Rest() : 0;
    std::vector<std::uint16_t> tile(kTile * frames);
    TProgress progress("Combining frames", static_cast<std::uint64_t>(size.height));
    const int bandRows = shelf.RowsOfBand();
    for (int top = 0; top < size.height; top += bandRows) {
        const int rows = std::min(bandRows, size.height - top);
        const std::uint16_t* const band = shelf.Band(top, rows);
        const std::size_t distance = shelf.FrameDistance(rows);
        const std::size_t pixels = static_cast<std::size_t>(rows) * static_cast<std::size_t>(size.width);
        const std::size_t out = static_cast<std::size_t>(top) * static_cast<std::size_t>(size.width);
        for (std::size_t start = 0; start < pixels; start += kTile) {
            const std::size_t count = std::min(kTile, pixels - start);
            for (std::size_t frame = 0; frame < frames; ++frame) {
                const std::uint16_t* const values = band + frame * distance + start;
                for (std::size_t i = 0; i < count; ++i)
                    tile[i * frames + frame] = Shifted(values[i], shifts[frame]);
            }
            for (std::size_t i = 0; i < count; ++i) {
                const TPixelCombiner::TResult result = combiner.Combine(tile.data() + i * frames);
                stack.average.pixels[out + start + i] = rest == 0 ? result.value : Rounded(result.exact + rest);
                if (how.keepExact)
                    stack.exact[out + start + i] = static_cast<float>(result.exact + rest);
                rejected.values += result.rejected;
                for (std::size_t frame = 0; result.rejected > 0 && frame < frames; ++frame) {
                    if (band[frame * distance + start + i] + shifts[frame] >
                        result.highest + kFarAbove * std::max(noise, 1.0))
                        ++rejected.bright[frame];
                }
            }
            if (start % (std::size_t{1} << 20) == 0)
                ThrowIfInterrupted();
        }
        progress.Reach(static_cast<std::uint64_t>(top + rows));
    }
    return stack;
}

std::vector<std::string> Notes(const TStackOptions& how, const TRejected& rejected, const TFrameWatch& watch,
                               TSize size)
{
    std::vector<std::string> notes;
    if (how.rejection == TRejection::None)
        return notes;
    const double values = static_cast<double>(size.Pixels()) * static_cast<double>(rejected.bright.size());
    notes.push_back(fmt::format("Rejected {} of {:.0f} values ({:.4f} %)", rejected.values, values,
                                100 * static_cast<double>(rejected.values) / values));
    std::vector<std::string> hit;
    for (std::size_t frame = 0; frame < rejected.bright.size(); ++frame) {
        // More than this is no cosmic ray; the frame's level is off, which is said otherwise.
        if (rejected.bright[frame] > 0 && rejected.bright[frame] * 5 < size.Pixels())
            hit.push_back(watch.NameOf(frame) + " (" + Counted(rejected.bright[frame], "pixel") + ")");
    }
    if (!hit.empty())
        notes.push_back("Bright in one frame only, as cosmic rays are: " + FirstOf(hit));
    return notes;
}

} // namespace

TFrameStack CombineFrames(const TFrameFiles& files, const TStackOptions& how, TDarkNoise* darkNoise)
{
    const std::string& what = files.what;
    TFrameWatch watch;
    TFrameHeaders headers(how.headers), headersBefore(how.headers);
    const auto early = [&](const std::string& path, const TPageMetadata& metadata) {
        headersBefore.Add(path, 1, metadata);
    };
    const auto look = [&](const TPassingFrame& frame) {
        headers.Add(frame.path, frame.page, frame.metadata);
        watch.Add(frame.path, frame.page, frame.sample);
    };
    const auto tell = [&](TFrameStack& stack) {
        stack.warnings = headers.Warnings(what);
        for (const std::string& warning : watch.Warnings(what))
            stack.warnings.push_back(warning);
        stack.shot = headers.Common();
    };
    std::function<void(const TImage&)> whole;
    if (darkNoise != nullptr)
        whole = [darkNoise](const TImage& frame) { darkNoise->Add(frame); };
    if (how.IsPlain()) {
        TFrameStack stack = ReadFrames(files, early, look, how.keepExact, whole);
        tell(stack);
        return stack;
    }
    std::optional<TFrameShelf> shelf;
    TNoise noise;
    TFrameLevels levels;
    TSize size;
    std::vector<std::uint16_t> sample;
    EachFrame(files, early, [&](TPage& page) {
        if (!shelf) {
            size = page.image.size;
            shelf.emplace(size, how.memory);
        }
        look(Passing(page, files.paths[page.file], sample));
        if (whole)
            whole(page.image);
        noise.Add(page.image);
        if (how.alignLevels)
            levels.Add(page.image);
        shelf->Put(page.image);
    });
    RequireFrames(how, shelf->Frames(), what);
    TRejected rejected(shelf->Frames());
    TFrameStack stack = CombineShelf(*shelf, size, how, noise.Adu(), levels, rejected);
    stack.notes = Notes(how, rejected, watch, size);
    if (how.alignLevels) {
        const std::vector<int> shifts = levels.Shifts();
        const auto [least, most] = std::minmax_element(shifts.begin(), shifts.end());
        stack.notes.push_back(
            fmt::format("Brought to the level of the middle one: {} by {:+} to {:+} ADU", what, *least, *most));
    }
    tell(stack);
    return stack;
}

} // namespace workbench
