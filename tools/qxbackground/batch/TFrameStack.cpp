#include "batch/TFrameStack.h"

#include "base/TProgress.h"
#include "base/TToolError.h"
#include "batch/TFrameBands.h"
#include "batch/TPageSource.h"
#include "images/SampleStep.h"
#include "images/TFrameSum.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace workbench {

namespace {

constexpr std::size_t kWatchedPixels = 8192;

// Frames that are added to the sums together: so many as do not take much memory.
class TFrameGroup {
public:
    // Takes the pixels of `page`, which gets the memory of an older frame. True when the group is full.
    bool Take(TPage& page)
    {
        constexpr std::size_t kBytes = std::size_t{32} << 20;
        constexpr std::size_t kMost = 4;
        const std::size_t bytes = page.image.pixels.size() * sizeof(std::uint16_t);
        if (held == frames.size())
            frames.emplace_back();
        std::swap(frames[held], page.image);
        ++held;
        return held == std::clamp<std::size_t>(kBytes / std::max<std::size_t>(bytes, 1), 1, kMost);
    }

    void AddTo(TFrameSum& sum)
    {
        std::vector<const TImage*> pointers;
        for (std::size_t i = 0; i < held; ++i)
            pointers.push_back(&frames[i]);
        sum.Add(pointers);
        held = 0;
    }

private:
    std::vector<TImage> frames;
    std::size_t held = 0;
};

// Every page of the files from number `first` on; `size` is that of the frames before them.
void EachPage(const TFrameFiles& files, std::size_t first, std::optional<TSize> size, TProgress& progress,
              const std::function<void(TPage&)>& take)
{
    constexpr std::size_t kAhead = 2;
    if (first == files.paths.size())
        return;
    if (files.digests != nullptr)
        files.digests->DigestRest();
    TPageSource source(files.paths, files.options, {}, kAhead, first);
    TPage page;
    while (source.Take(page)) {
        if (!page.failure.empty())
            throw TToolError(page.failure);
        if (!size)
            size = page.image.size;
        if (page.image.size != *size)
            throw TToolError(files.paths[page.file], page.number,
                             "is " + page.image.size.Text() + " pixels, the frames before it are " + size->Text());
        progress.Reach(page.file);
        take(page);
    }
}

// Adds as many of the first files as can be read side by side.
std::size_t AddBands(const TFrameFiles& files, std::optional<TFrameSum>& sum, TProgress& progress,
                     const TFrameWatcher& watch)
{
    std::size_t done = 0, step = 1;
    std::vector<std::vector<std::uint16_t>> samples;
    TFrameBands bands(files.paths, files.options, files.digests);
    TFrameBand band;
    while (bands.Take(band)) {
        std::vector<TBandedFrames::TFrame>& frames = band.of->frames;
        if (!sum) {
            sum.emplace(band.of->size);
            step = SampleStep(band.of->size.Pixels(), kWatchedPixels);
        }
        if (band.start == 0)
            samples.assign(frames.size(), {});
        std::vector<const std::uint16_t*> values;
        for (std::size_t frame = 0; frame < frames.size(); ++frame) {
            values.push_back(band.Values(frame));
            AddToSample(samples[frame], values.back(), band.start, band.pixels, step);
        }
        sum->Add(band.start, band.pixels, values);
        if (!band.IsLast())
            continue;
        for (std::size_t frame = 0; frame < frames.size(); ++frame)
            watch({files.paths[frames[frame].file], 1, frames[frame].metadata, samples[frame]});
        done += frames.size();
        progress.Reach(done);
    }
    return done;
}

std::string NoFrames(const TFrameFiles& files)
{
    return files.paths.empty() ? "no " + files.what : files.paths.front() + ": holds no image";
}

} // namespace

TPassingFrame Passing(const TPage& page, const std::string& path, std::vector<std::uint16_t>& sample)
{
    const std::vector<std::uint16_t>& pixels = page.image.pixels;
    sample.clear();
    AddToSample(sample, pixels.data(), 0, pixels.size(), SampleStep(pixels.size(), kWatchedPixels));
    return {path, page.number, page.metadata, sample};
}

void EachFrame(const TFrameFiles& files, const std::function<void(TPage&)>& take)
{
    TProgress progress("Reading " + files.what, files.paths.size());
    bool hasAny = false;
    EachPage(files, 0, {}, progress, [&](TPage& page) {
        hasAny = true;
        take(page);
    });
    if (!hasAny)
        throw TToolError(NoFrames(files));
}

TFrameStack ReadFrames(const TFrameFiles& files, const TFrameWatcher& watch, bool keepExact,
                       const std::function<void(const TImage&)>& whole)
{
    TProgress progress("Reading " + files.what, files.paths.size());
    std::optional<TFrameSum> sum;
    const std::size_t banded = whole ? 0 : AddBands(files, sum, progress, watch);
    TFrameGroup group;
    std::vector<std::uint16_t> sample;
    EachPage(files, banded, sum ? std::optional<TSize>(sum->Size()) : std::nullopt, progress, [&](TPage& page) {
        if (!sum)
            sum.emplace(page.image.size);
        watch(Passing(page, files.paths[page.file], sample));
        if (whole)
            whole(page.image);
        if (group.Take(page))
            group.AddTo(*sum);
    });
    if (!sum)
        throw TToolError(NoFrames(files));
    group.AddTo(*sum);
    return {sum->Frames(), sum->Average(), keepExact ? sum->Mean() : std::vector<float>(), {}, {}};
}

} // namespace workbench
