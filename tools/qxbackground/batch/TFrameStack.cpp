#include "batch/TFrameStack.h"

#include "base/Interrupts.h"
#include "base/Processors.h"
#include "base/TProgress.h"
#include "base/TToolError.h"
#include "batch/TFrameBands.h"
#include "batch/TPageSource.h"
#include "images/SampleStep.h"
#include "images/TFrameSum.h"
#include "images/TImageReader.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <optional>
#include <thread>
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

TToolError OtherSize(const std::string& path, unsigned page, TSize size, TSize before)
{
    return {path, page, "is " + size.Text() + " pixels, the frames before it are " + before.Text()};
}

// What is seen of a file without reading a pixel.
struct TFirstPage {
    TSize size;
    TPageMetadata metadata;
    bool saysAll = false;
    bool isPlain = false; // and the only one: the file can be read side by side with others
};

// Nothing where there is none.
std::optional<TFirstPage> FirstPageOf(const std::string& path, const TInputOptions& options)
{
    const std::unique_ptr<TImageReader> reader = OpenImage(path, options);
    if (!reader->NextPage())
        return {};
    TFirstPage page{reader->Size(), reader->Metadata(), reader->SaysAllAtFirst(), reader->Plain().has_value()};
    page.isPlain = page.isPlain && !reader->NextPage();
    return page;
}

// Looks at all files, so that what cannot be read or does not belong together is told at once, and not when it is its
// turn. Returns how many of the first files can be read side by side.
std::size_t LookAhead(const TFrameFiles& files, const THeaderWatcher& early)
{
    std::size_t plain = 0;
    std::optional<TSize> size;
    bool saysAll = true; // up to here
    for (std::size_t file = 0; file < files.paths.size(); ++file) {
        ThrowIfInterrupted();
        const std::string& path = files.paths[file];
        const std::optional<TFirstPage> page = FirstPageOf(path, files.options);
        if (!page)
            continue;
        if (!size)
            size = page->size;
        if (page->size != *size)
            throw OtherSize(path, 1, page->size, *size);
        saysAll = saysAll && page->saysAll;
        if (saysAll)
            early(path, page->metadata);
        if (page->isPlain && plain == file)
            ++plain;
    }
    return plain;
}

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
            throw OtherSize(files.paths[page.file], page.number, page.image.size, *size);
        progress.Reach(page.file);
        take(page);
    }
}

// What was added up of some files that are read side by side.
class TSideBySide {
public:
    // `before`: the sum of the frames before them, if there are any.
    TSideBySide(const TFrameFiles& those, std::size_t first, std::size_t end, std::optional<TFrameSum> before = {})
        : sum(std::move(before)), files(those),
          bands(those.paths, first, end, sum ? sum->Size() : TSize(), those.options, those.digests)
    {}

    // Adds the next bands, up to the end of their frames; false when there are none.
    bool AddSome()
    {
        const std::size_t before = seen.size();
        do {
            if (!bands.Take(band))
                return false;
            AddBand(before);
        } while (!band.IsLast());
        return true;
    }

    std::size_t Frames() const { return seen.size(); }
    // In the order of the files.
    void ShowTo(const TFrameWatcher& watch, std::size_t from = 0) const
    {
        for (std::size_t frame = from; frame < seen.size(); ++frame)
            watch({files.paths[seen[frame].file], 1, seen[frame].metadata, seen[frame].sample});
    }

    std::optional<TFrameSum> sum;

private:
    struct TSeen {
        std::size_t file = 0;
        TPageMetadata metadata;
        std::vector<std::uint16_t> sample;
    };

    void AddBand(std::size_t firstOfThem)
    {
        std::vector<TBandedFrames::TFrame>& frames = band.of->frames;
        if (!sum)
            sum.emplace(band.of->size);
        if (band.start == 0) {
            for (TBandedFrames::TFrame& frame : frames)
                seen.push_back({frame.file, std::move(frame.metadata), {}});
        }
        const std::size_t step = SampleStep(band.of->size.Pixels(), kWatchedPixels);
        std::vector<const std::uint16_t*> values;
        for (std::size_t frame = 0; frame < frames.size(); ++frame) {
            values.push_back(band.Values(frame));
            AddToSample(seen[firstOfThem + frame].sample, values.back(), band.start, band.pixels, step);
        }
        sum->Add(band.start, band.pixels, values);
    }

    const TFrameFiles& files;
    TFrameBands bands;
    TFrameBand band;
    std::vector<TSeen> seen;
};

// Adds the first `all` files, no more than TFrameSum::kExactFrames, by two threads, half of them each. Nothing when
// they cannot all be read side by side.
std::optional<TFrameSum> AddByTwo(const TFrameFiles& files, std::size_t all, TProgress& progress,
                                  const TFrameWatcher& watch)
{
    if (all < 2 || ProcessorsToUse() < 2)
        return {};
    TSideBySide first(files, 0, all / 2), second(files, all / 2, all);
    std::atomic<bool> stopped{false};
    std::atomic<std::size_t> ofSecond{0};
    std::exception_ptr failure;
    std::thread thread = ThreadWithoutInterrupts([&] {
        try {
            while (!stopped && second.AddSome())
                ofSecond = second.Frames();
        } catch (...) {
            failure = std::current_exception();
        }
    });
    struct TJoin {
        ~TJoin()
        {
            if (thread.joinable()) {
                stopped = true;
                thread.join();
            }
        }
        std::thread& thread;
        std::atomic<bool>& stopped;
    } join{thread, stopped};
    while (first.AddSome())
        progress.Reach(first.Frames() + ofSecond);
    stopped = first.Frames() < all / 2; // which another way to read them has to begin with
    thread.join();
    ThrowIfInterrupted();
    if (stopped)
        return {};
    if (failure)
        std::rethrow_exception(failure);
    if (second.Frames() < all - all / 2 || first.sum->Size() != second.sum->Size())
        return {};
    first.ShowTo(watch);
    second.ShowTo(watch);
    first.sum->Add(*second.sum);
    return std::move(first.sum);
}

// Adds as many of the first `plain` files as can be read side by side: so many that their order does not count by two
// threads, the others in order.
std::size_t AddBands(const TFrameFiles& files, std::size_t plain, std::optional<TFrameSum>& sum, TProgress& progress,
                     const TFrameWatcher& watch)
{
    const std::size_t exact = std::min(plain, TFrameSum::kExactFrames);
    sum = AddByTwo(files, exact, progress, watch);
    const std::size_t byTwo = sum ? exact : 0;
    TSideBySide frames(files, byTwo, plain, std::move(sum));
    for (std::size_t shown = 0; frames.AddSome(); shown = frames.Frames()) {
        frames.ShowTo(watch, shown);
        progress.Reach(byTwo + frames.Frames());
    }
    sum = std::move(frames.sum);
    return byTwo + frames.Frames();
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

void EachFrame(const TFrameFiles& files, const THeaderWatcher& early, const std::function<void(TPage&)>& take)
{
    TProgress progress("Reading " + files.what, files.paths.size());
    LookAhead(files, early);
    bool hasAny = false;
    EachPage(files, 0, {}, progress, [&](TPage& page) {
        hasAny = true;
        take(page);
    });
    if (!hasAny)
        throw TToolError(NoFrames(files));
}

TFrameStack ReadFrames(const TFrameFiles& files, const THeaderWatcher& early, const TFrameWatcher& watch,
                       bool keepExact, const std::function<void(const TImage&)>& whole)
{
    TProgress progress("Reading " + files.what, files.paths.size());
    std::optional<TFrameSum> sum;
    const std::size_t plain = LookAhead(files, early);
    const std::size_t banded = whole ? 0 : AddBands(files, plain, sum, progress, watch);
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
