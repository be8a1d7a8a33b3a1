#include "images/TImageReader.h"

#include "base/FileKind.h"
#include "base/LargeMemory.h"
#include "base/TToolError.h"
#include "images/TFitsReader.h"
#include "images/TInputFile.h"
#include "images/TPgmReader.h"
#include "images/TPngReader.h"
#include "images/TRawReader.h"
#include "images/TSerReader.h"
#include "images/TTiffReader.h"

#include <limits>
#include <new>

namespace workbench {

const char* const kReadable = "16-bit grayscale TIFF, FITS, PNG, PGM or SER";

void TImageReader::Fail(const std::string& what) const
{
    if (page == 0)
        throw TToolError(path, what);
    throw TToolError(path, page, what);
}

void TImageReader::SetSize(std::uint64_t width, std::uint64_t height, std::uint64_t mostBytes)
{
    // Image lengths cross the library's interface as int.
    constexpr std::uint64_t kMost = std::numeric_limits<int>::max();
    if (width == 0 || height == 0 || width > kMost || height > kMost || width * height > kMost)
        Fail("has an impossible size of " + std::to_string(width) + " x " + std::to_string(height));
    if (width * height * 2 > mostBytes)
        Fail("claims more pixels than the file holds");
    size = {static_cast<int>(width), static_cast<int>(height)};
}

void TImageReader::Prepare(TImage& image) const
{
    try {
        image.size = size;
        ResizeLarge(image.pixels, size.Pixels());
    } catch (const std::bad_alloc&) {
        Fail("there is not enough memory for " + size.Text() + " pixels");
    }
}

namespace {

// TIFF of either byte order, with offsets of 4 or 8 bytes.
bool IsTiff(const std::string& start)
{
    const std::string four = start.substr(0, 4);
    return four == std::string("II*\0", 4) || four == std::string("MM\0*", 4) || four == std::string("II+\0", 4) ||
           four == std::string("MM\0+", 4);
}

bool IsPgm(const std::string& start)
{
    return start.size() > 2 && start[0] == 'P' && (start[1] == '5' || start[1] == '2') &&
           std::string(" \t\n\v\f\r#").find(start[2]) != std::string::npos;
}

} // namespace

std::unique_ptr<TImageReader> OpenImage(const std::string& path, const TInputOptions& options)
{
    TInputFile file(path);
    const std::string start = file.TextAt(0, 32);
    const auto begins = [&start](const std::string& text) { return start.compare(0, text.size(), text) == 0; };
    if (IsTiff(start))
        return std::make_unique<TTiffReader>(path);
    if (begins("\x89PNG\r\n\x1a\n"))
        return std::make_unique<TPngReader>(path);
    if (begins("SIMPLE  ="))
        return std::make_unique<TFitsReader>(path);
    if (begins("LUCAM-RECORDER"))
        return std::make_unique<TSerReader>(path);
    // Few bytes that pixels may begin with as well.
    if (IsPgm(start) && !(options.raw && FitsLayout(file.Bytes(), *options.raw)))
        return std::make_unique<TPgmReader>(path);
    if (options.raw)
        return std::make_unique<TRawReader>(path, *options.raw);
    const std::string kind = FileKind(path);
    if (kind == "a gzip archive")
        throw TToolError(path, "is a gzip archive; unpack it first (gunzip)");
    if (!kind.empty())
        throw TToolError(path, "is " + kind + "; " + kReadable + " is needed");
    throw TToolError(path, std::string("is of no known format; ") + kReadable +
                               " is needed, or --raw WIDTHxHEIGHT for pixels without a format");
}

} // namespace workbench
