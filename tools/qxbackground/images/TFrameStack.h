#ifndef QXBACKGROUND_IMAGES_TFRAMESTACK_H
#define QXBACKGROUND_IMAGES_TFRAMESTACK_H

#include "images/TImage.h"
#include "images/TInputOptions.h"

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

// Dark frames: every page of every file, in order, all of one size.
struct TFrameStack {
    TSize size;
    std::vector<TImage> frames;

    std::vector<const std::uint16_t*> Pointers() const;
};

// Throws TToolError naming the file and page that cannot be read or has another size than the first page.
TFrameStack ReadFrames(const std::vector<std::string>& paths, const TInputOptions& options);

} // namespace workbench

#endif
