#ifndef QXBACKGROUND_IMAGES_TIFFTAGS_H
#define QXBACKGROUND_IMAGES_TIFFTAGS_H

#include "images/TPageMetadata.h"

#include <tiffio.h>

namespace workbench {

// What the current page's tags say beside its pixels, and writing it. A description that counts the images of the whole
// file (ImageJ, tifffile) loses that: a reader would look for them where they were.
TPageMetadata ReadTiffTags(TIFF* tiff);
void WriteTiffTags(TIFF* tiff, const TPageMetadata& metadata);

} // namespace workbench

#endif
