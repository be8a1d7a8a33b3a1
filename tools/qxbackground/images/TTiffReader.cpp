#include "images/TTiffReader.h"

#include "base/TToolError.h"
#include "images/TTiffHandle.h"
#include "images/TiffTags.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <vector>

namespace workbench {

namespace {

// The tag's value, or what the format says when it is absent.
template <class T> T Tag(TIFF* tiff, std::uint32_t tag, T absent)
{
    T value = absent;
    return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : absent;
}

// How many bytes of pixels a file may hold that is compressed so.
std::uint64_t MostBytes(std::uint16_t compression, std::uint64_t fileBytes)
{
    switch (compression) {
    case COMPRESSION_NONE:
        return fileBytes;
    case COMPRESSION_PACKBITS:
        return fileBytes * 64;
    case COMPRESSION_LZW: // 4 KB for a code of 12 bits
        return fileBytes * 2731;
    case COMPRESSION_ADOBE_DEFLATE:
    case COMPRESSION_DEFLATE:
        return fileBytes * 1032;
    default: // Zstandard and LZMA
        return fileBytes * 32768;
    }
}

} // namespace

TTiffReader::TTiffReader(const std::string& name)
    : TImageReader(name, TImageFormat::Tiff), bytes(name), file(std::make_unique<TTiffHandle>())
{
    file->Open(path, "rm"); // m: read, not memory-mapped; a file cut while mapped would kill the process
    if (file->tiff == nullptr)
        // libtiff speaks of memory where the header of the first page lies outside of the file.
        Fail("is not a readable TIFF file: " + (file->complaint.find("allocate memory") != std::string::npos
                                                    ? "its first page header is damaged or missing"
                                                    : file->complaint));
}

TTiffReader::~TTiffReader() = default;

bool TTiffReader::BigEndian() const
{
    return TIFFIsBigEndian(file->tiff) != 0;
}

bool TTiffReader::NextPage()
{
    if (stackFrames > 0) {
        if (page == stackFrames)
            return false;
        ++page;
        return true;
    }
    if (page > 0) {
        file->complaint.clear();
        const bool last = TIFFLastDirectory(file->tiff) != 0;
        if (last)
            return false;
        ++page;
        if (TIFFReadDirectory(file->tiff) != 1)
            Fail("its page header is damaged, or is not where the page before says");
    } else {
        page = 1;
    }
    CheckLink();
    CheckFormat();
    if (page == 1)
        LookForStack();
    return true;
}

// When a file ends before the link to the next page, libtiff reports no error but calls this page the last one.
void TTiffReader::CheckLink()
{
    const bool big = TIFFIsBigTIFF(file->tiff) != 0;
    const std::uint64_t offset = TIFFCurrentDirOffset(file->tiff);
    unsigned char count[8] = {};
    const std::size_t countBytes = big ? 8 : 2, entryBytes = big ? 20 : 12, linkBytes = big ? 8 : 4;
    const bool read = bytes.ReadAt(offset, count, countBytes);
    std::uint64_t entries = 0;
    for (std::size_t byte = 0; byte < countBytes; ++byte)
        entries = entries * 256 + count[BigEndian() ? byte : countBytes - 1 - byte];
    if (!read || entries > 65535 || offset + countBytes + entries * entryBytes + linkBytes > bytes.Bytes())
        Fail("the file ends inside its page header");
}

void TTiffReader::CheckFormat()
{
    TIFF* const tiff = file->tiff;
    const auto width = Tag<std::uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0);
    const auto height = Tag<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0);
    const auto bits = Tag<std::uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1);
    const auto samples = Tag<std::uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    const auto photometric = Tag<std::uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    if (samples != 1)
        Fail("has " + std::to_string(samples) + " samples per pixel; 16-bit grayscale is needed");
    if (bits != 16)
        Fail("has " + std::to_string(bits) + " bits per pixel; 16-bit grayscale is needed");
    if (Tag<std::uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT) != SAMPLEFORMAT_UINT)
        Fail("does not hold unsigned integers; 16-bit grayscale is needed");
    if (photometric != PHOTOMETRIC_MINISBLACK)
        Fail("is not grayscale with black as zero (photometric " + std::to_string(photometric) + ")");
    const auto compression = Tag<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (!TIFFIsCODECConfigured(compression))
        Fail("uses a compression (" + std::to_string(compression) + ") that cannot be read here");
    SetSize(width, height, MostBytes(compression, bytes.Bytes()));
}

// ImageJ describes a stack that is too large for a classic TIFF in the only page's description.
void TTiffReader::LookForStack()
{
    char* text = nullptr;
    if (TIFFGetField(file->tiff, TIFFTAG_IMAGEDESCRIPTION, &text) != 1 || std::strncmp(text, "ImageJ=", 7) != 0 ||
        TIFFLastDirectory(file->tiff) == 0)
        return;
    const char* const images = std::strstr(text, "\nimages=");
    unsigned long long frames = 0;
    if (images == nullptr || std::sscanf(images, "\nimages=%10llu", &frames) != 1 || frames < 2)
        return;
    const std::uint64_t start = PlainPixels();
    const std::uint64_t frameBytes = Size().Pixels() * 2;
    if (start == 0)
        Fail("is a stack of " + std::to_string(frames) +
             " ImageJ images with one header whose pixels are compressed or scattered, which is not read; save it with "
             "a header for each");
    const std::uint64_t there = (bytes.Bytes() - start) / frameBytes;
    if (frames > there)
        Fail("is a stack of " + std::to_string(frames) + " ImageJ images, but the file ends after " +
             std::to_string(there));
    stackFrames = frames;
}

std::uint64_t TTiffReader::PlainPixels() const
{
    TIFF* const tiff = file->tiff;
    if (TIFFIsTiled(tiff) || Tag<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE) != COMPRESSION_NONE ||
        Tag<std::uint16_t>(tiff, TIFFTAG_FILLORDER, FILLORDER_MSB2LSB) != FILLORDER_MSB2LSB)
        return 0;
    const auto height = static_cast<std::uint32_t>(Size().height);
    const std::uint32_t rows = std::min(Tag<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, height), height);
    if (rows == 0)
        return 0;
    const std::uint64_t rowBytes = static_cast<std::uint64_t>(Size().width) * 2;
    const std::uint64_t start = TIFFGetStrileOffset(tiff, 0);
    std::uint64_t next = start;
    for (std::uint32_t top = 0, strip = 0; top < height; top += rows, ++strip) {
        const std::uint64_t wanted = std::min(rows, height - top) * rowBytes;
        if (TIFFGetStrileOffset(tiff, strip) != next || TIFFGetStrileByteCount(tiff, strip) < wanted)
            return 0;
        next += wanted;
        if (top > height - rows) // the next one would count beyond its type
            break;
    }
    return next <= bytes.Bytes() ? start : 0;
}

void TTiffReader::Read(TImage& image)
{
    file->complaint.clear();
    Prepare(image);
    if (const std::uint64_t start = PlainPixels(); start != 0) {
        const std::uint64_t before = stackFrames > 0 ? std::uint64_t{page - 1} * Size().Pixels() * 2 : 0;
        if (!bytes.ReadPixels(start + before, image.pixels.data(), image.pixels.size(), {BigEndian(), 0}))
            Fail("its pixels cannot be read: the file was cut or changed meanwhile");
    } else if (TIFFIsTiled(file->tiff)) {
        ReadTiles(image);
    } else {
        ReadStrips(image);
    }
}

std::optional<TPlainPixels> TTiffReader::Plain()
{
    const std::uint64_t start = stackFrames > 0 ? 0 : PlainPixels();
    if (start == 0)
        return {};
    return TPlainPixels{bytes, start, {BigEndian(), 0}};
}

TPageMetadata TTiffReader::Metadata()
{
    return ReadTiffTags(file->tiff);
}

void TTiffReader::ReadStrips(TImage& image)
{
    TIFF* const tiff = file->tiff;
    const auto rows = std::min(Tag<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, 0xFFFFFFFFu),
                               static_cast<std::uint32_t>(Size().height));
    if (rows == 0)
        Fail("has strips without rows");
    const auto width = static_cast<std::size_t>(Size().width);
    std::uint32_t strip = 0;
    for (std::uint32_t top = 0; top < static_cast<std::uint32_t>(Size().height); top += rows, ++strip) {
        const std::size_t wanted =
            std::min<std::size_t>(rows, static_cast<std::size_t>(Size().height) - top) * width * 2;
        const tmsize_t got =
            TIFFReadEncodedStrip(tiff, strip, image.pixels.data() + top * width, static_cast<tmsize_t>(wanted));
        if (got < 0 || static_cast<std::size_t>(got) != wanted || !file->complaint.empty())
            Fail("its pixels cannot be read: " + (file->complaint.empty() ? "too few" : file->complaint));
    }
}

void TTiffReader::ReadTiles(TImage& image)
{
    TIFF* const tiff = file->tiff;
    const auto tileWidth = Tag<std::uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0);
    const auto tileHeight = Tag<std::uint32_t>(tiff, TIFFTAG_TILELENGTH, 0);
    const tmsize_t tileBytes = TIFFTileSize(tiff);
    if (tileWidth == 0 || tileHeight == 0 || tileBytes <= 0)
        Fail("has tiles without pixels");
    const auto width = static_cast<std::size_t>(Size().width);
    const auto height = static_cast<std::size_t>(Size().height);
    // A tile far larger than its page would cost more memory than the page.
    if (tileWidth > width + 65536 || tileHeight > height + 65536)
        Fail("has tiles far larger than the page");
    std::vector<std::uint16_t> tile(static_cast<std::size_t>(tileBytes) / 2);
    for (std::size_t top = 0; top < height; top += tileHeight) {
        for (std::size_t left = 0; left < width; left += tileWidth) {
            const tmsize_t got = TIFFReadTile(tiff, tile.data(), static_cast<std::uint32_t>(left),
                                              static_cast<std::uint32_t>(top), 0, 0);
            if (got != tileBytes || !file->complaint.empty())
                Fail("its pixels cannot be read: " + (file->complaint.empty() ? "too few" : file->complaint));
            const std::size_t columns = std::min<std::size_t>(tileWidth, width - left);
            const std::size_t rows = std::min<std::size_t>(tileHeight, height - top);
            for (std::size_t row = 0; row < rows; ++row)
                std::copy_n(tile.data() + row * tileWidth, columns, image.pixels.data() + (top + row) * width + left);
        }
    }
}

} // namespace workbench
