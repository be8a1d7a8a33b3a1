#include "batch/TFrameStack.h"

#include "base/TProgress.h"
#include "base/TToolError.h"
#include "batch/TPageSource.h"
#include "images/TFrameSum.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace workbench {

namespace {

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

} // namespace

void EachFrame(const std::vector<std::string>& paths, const TInputOptions& options, const std::string& what,
               const std::function<void(TPage&)>& take)
{
    constexpr std::size_t kAhead = 2;
    TProgress progress("Reading " + what, paths.size());
    std::optional<TSize> size;
    TPageSource source(paths, options, {}, kAhead);
    TPage page;
    while (source.Take(page)) {
        if (!page.failure.empty())
            throw TToolError(page.failure);
        if (!size)
            size = page.image.size;
        if (page.image.size != *size)
            throw TToolError(paths[page.file], page.number,
                             "is " + page.image.size.Text() + " pixels, the frames before it are " + size->Text());
        progress.Reach(page.file);
        take(page);
    }
    if (!size)
        throw TToolError(paths.empty() ? "no " + what : paths.front() + ": holds no image");
}

TFrameStack ReadFrames(const std::vector<std::string>& paths, const TInputOptions& options,
                       const std::function<void(const TPage&)>& watch, const std::string& what, bool keepExact)
{
    std::optional<TFrameSum> sum;
    TFrameGroup group;
    EachFrame(paths, options, what, [&](TPage& page) {
        if (!sum)
            sum.emplace(page.image.size);
        watch(page);
        if (group.Take(page))
            group.AddTo(*sum);
    });
    group.AddTo(*sum);
    return {sum->Frames(), sum->Average(), keepExact ? sum->Mean() : std::vector<float>(), {}, {}};
}

} // namespace workbench
