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

TFrameStack ReadFrames(const std::vector<std::string>& paths, const TInputOptions& options)
{
    constexpr std::size_t kAhead = 2;
    std::optional<TFrameSum> sum;
    {
        TProgress progress("Reading dark frames", paths.size());
        TFrameGroup group;
        TSize size;
        TPageSource source(paths, options, {}, kAhead);
        TPage page;
        while (source.Take(page)) {
            if (!page.failure.empty())
                throw TToolError(page.failure);
            if (!sum) {
                size = page.image.size;
                sum.emplace(size);
            }
            if (page.image.size != size)
                throw TToolError(paths[page.file], page.number,
                                 "is " + page.image.size.Text() + " pixels, the frames before it are " + size.Text());
            progress.Reach(page.file);
            if (group.Take(page))
                group.AddTo(*sum);
        }
        if (!sum)
            throw TToolError(paths.empty() ? std::string("no dark frames") : paths.front() + ": holds no image");
        group.AddTo(*sum);
    }
    return {sum->Frames(), sum->Average()};
}

} // namespace workbench
