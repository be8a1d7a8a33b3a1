#ifndef QXBACKGROUND_IMAGES_TIMAGEREADER_H
#define QXBACKGROUND_IMAGES_TIMAGEREADER_H

#include "images/ImageFormat.h"
#include "images/TImage.h"
#include "images/TInputFile.h"
#include "images/TInputOptions.h"
#include "images/TPageMetadata.h"

#include <memory>
#include <optional>
#include <string>

namespace workbench {

// Reads the 16-bit grayscale pages of a file one after the other; one page is in memory at a time. Every failure is a
// TToolError that names the file and the page, counted from 1. One thread at a time may use a reader; different readers
// and writers are independent.
class TImageReader {
public:
    virtual ~TImageReader() = default;
    TImageReader(const TImageReader&) = delete;
    TImageReader& operator=(const TImageReader&) = delete;

    // Goes to the next page (the first one at first); false after the last. Throws unless it is 16-bit grayscale. Looks
    // at headers only, so that counting pages is cheap.
    virtual bool NextPage() = 0;
    // The pixels of the current page; `image` keeps its memory from page to page.
    virtual void Read(TImage& image) = 0;
    // Where the pixels of the current page are, when they need nothing but reading: for who reads some rows at a time.
    // Otherwise nothing, and where Read looks at the values as well. The file is the reader's.
    virtual std::optional<TPlainPixels> Plain() { return {}; }
    // What the current page says beside its pixels; all of it once they were read, because texts may stand behind them.
    virtual TPageMetadata Metadata() = 0;
    // Whether it says all of that before the pixels are read.
    virtual bool SaysAllAtFirst() const { return true; }

    TImageFormat Format() const { return format; }
    unsigned Page() const { return page; }
    TSize Size() const { return size; }

protected:
    TImageReader(std::string name, TImageFormat fileFormat) : path(std::move(name)), format(fileFormat) {}

    // A TToolError about the current page, or about the file before the first one.
    [[noreturn]] void Fail(const std::string& what) const;
    // Keeps the page's size. Fails where it is impossible, or more than `mostBytes` of pixels, which is what a file of
    // this length can hold: memory is taken only for what may be there.
    void SetSize(std::uint64_t width, std::uint64_t height, std::uint64_t mostBytes);
    // Gives the image the page's size.
    void Prepare(TImage& image) const;

    const std::string path;
    unsigned page = 0;

private:
    const TImageFormat format;
    TSize size;
};

// What can be read, for people.
extern const char* const kReadable;

// The reader for what the file is by its content, whatever its name. Throws TToolError when it is of no kind that can
// be read, and says then of what kind it is.
std::unique_ptr<TImageReader> OpenImage(const std::string& path, const TInputOptions& options);

} // namespace workbench

#endif
