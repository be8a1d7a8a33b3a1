#ifndef QXBACKGROUND_BATCH_TPAGE_H
#define QXBACKGROUND_BATCH_TPAGE_H

#include "images/ImageFormat.h"
#include "images/TImage.h"
#include "images/TPageMetadata.h"

#include <cstddef>
#include <string>

namespace workbench {

// A page on its way through a run, or the news that a file cannot be read any further.
struct TPage {
    std::size_t file = 0; // which of the run's files, from 0
    unsigned number = 0;  // from 1
    unsigned pagesOfFile = 0;
    TImageFormat format = TImageFormat::Tiff; // of the file
    bool isShown = false;                     // in the run's picture
    TImage image;
    TPageMetadata metadata;
    std::string failure; // why the file ends here; the rest then says nothing
};

} // namespace workbench

#endif
