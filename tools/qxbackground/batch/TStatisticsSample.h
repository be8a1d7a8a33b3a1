#ifndef QXBACKGROUND_BATCH_TSTATISTICSSAMPLE_H
#define QXBACKGROUND_BATCH_TSTATISTICSSAMPLE_H

#include <cstddef>
#include <cstdint>

namespace workbench {

// Which pages of a run its statistics are made of. They cost more than correcting a page, so that a long run has them
// of some pages: of all until there are 4 million pixels of them (one page of 2048 x 2048), then of every 40th. What is
// said of those pages is exact.
class TStatisticsSample {
public:
    enum class TExtent { None, Some, All };
    static constexpr std::uint64_t kAlways = 4'000'000; // pixels
    static constexpr std::uint64_t kEvery = 40;         // pages

    explicit TStatisticsSample(TExtent pagesWanted) : extent(pagesWanted) {}

    // Asked once for each page, in order.
    bool Takes(std::size_t pixelsOfPage)
    {
        const std::uint64_t page = pages++;
        const bool takes =
            extent == TExtent::All || (extent == TExtent::Some && (pixels < kAlways || page % kEvery == 0));
        if (takes) {
            pixels += pixelsOfPage;
            ++taken;
        }
        return takes;
    }
    std::uint64_t Taken() const { return taken; }

private:
    TExtent extent;
    std::uint64_t pages = 0, taken = 0, pixels = 0;
};

} // namespace workbench

#endif
