#ifndef QXBACKGROUND_IMAGES_IMAGEFORMAT_H
#define QXBACKGROUND_IMAGES_IMAGEFORMAT_H

namespace workbench {

enum class TImageFormat { Tiff, Fits, Png, Pgm, Ser, Raw };

} // namespace workbench

#endif
