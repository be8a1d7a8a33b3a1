#ifndef QXBACKGROUND_IMAGES_TIMAGEWRITER_H
#define QXBACKGROUND_IMAGES_TIMAGEWRITER_H

#include "base/TReplacedFile.h"
#include "images/TImage.h"
#include "images/TOutputOptions.h"
#include "images/TPageMetadata.h"

#include <cstdint>
#include <memory>
#include <string>

namespace workbench {

// Writes pages of 16-bit grayscale. The file appears under its name only with Close; an object destroyed before that
// leaves nothing behind. One thread at a time may use a writer; different readers and writers are independent.
class TImageWriter {
public:
    virtual ~TImageWriter() = default;
    TImageWriter(const TImageWriter&) = delete;
    TImageWriter& operator=(const TImageWriter&) = delete;

    // Of `metadata` is kept what the format can hold. Throws TToolError naming the file and the page.
    virtual void Write(const TImage& image, const TPageMetadata& metadata) = 0;
    virtual void Close() = 0;

protected:
    TImageWriter() = default;
};

// Why a second page has no place in a PNG.
extern const char* const kOneImage;

// Throws TToolError naming the file when so many pages have no place in that format.
void RequireRoom(const std::string& path, TImageFormat format, std::uint64_t pages);

// A writer of that format, which is Tiff, Fits or Png. `expectedBytes` of pixels decide whether a TIFF must be a
// BigTIFF (above some 4 GB).
std::unique_ptr<TImageWriter> CreateImage(const std::string& path, TImageFormat format, const TOutputOptions& options,
                                          std::uint64_t expectedBytes, TExisting existing);

} // namespace workbench

#endif
