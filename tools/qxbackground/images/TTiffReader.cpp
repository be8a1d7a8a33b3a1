#include "images/TTiffReader.h"

#include "base/FileKind.h"
#include "base/TToolError.h"
#include "images/TTiffHandle.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <system_error>

namespace workbench {

namespace {

// The tag's value, or what the format says when it is absent.
template <class T> T Tag(TIFF* tiff, std::uint32_t tag, T absent)
{
    T value = absent;
    return TIFFGetFieldDefaulted(tiff, tag, &value) == 1 ? value : absent;
}

} // namespace

TTiffReader::TTiffReader(const std::string& name) : path(name), file(std::make_unique<TTiffHandle>())
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status))
        throw TToolError(path,
                         "cannot be opened: " + (error ? error.message() : std::generic_category().message(ENOENT)));
    if (!std::filesystem::is_regular_file(status))
        throw TToolError(path, "is not a regular file");
    fileBytes = std::filesystem::file_size(path, error);
    bytes.open(std::filesystem::path(path), std::ios::binary);
    if (!bytes)
        throw TToolError(path, "cannot be opened: " + std::generic_category().message(errno));
    file->Open(path, "rm"); // m: read, not memory-mapped; a file cut while mapped would kill the process
    if (file->tiff != nullptr)
        return;
    const std::string kind = FileKind(path);
    if (kind.empty() || kind == "a TIFF image")
        throw TToolError(path, "is not a readable TIFF file: " + file->complaint);
    throw TToolError(path, "is " + kind + "; 16-bit grayscale TIFF is needed");
}

TTiffReader::~TTiffReader() = default;

void TTiffReader::Fail(const std::string& what) const
{
    throw TToolError(path, page, what);
}

bool TTiffReader::NextPage()
{
    if (page > 0) {
        file->complaint.clear();
        const bool last = TIFFLastDirectory(file->tiff) != 0;
        if (last)
            return false;
        ++page;
        if (TIFFReadDirectory(file->tiff) != 1)
            Fail("cannot be read: " + (file->complaint.empty() ? "damaged page header" : file->complaint));
    } else {
        page = 1;
    }
    CheckLink();
    CheckFormat();
    return true;
}

// When a file ends before the link to the next page, libtiff reports no error but calls this page the last one.
void TTiffReader::CheckLink()
{
    const bool big = TIFFIsBigTIFF(file->tiff) != 0;
    const std::uint64_t offset = TIFFCurrentDirOffset(file->tiff);
    unsigned char count[8] = {};
    const std::size_t countBytes = big ? 8 : 2, entryBytes = big ? 20 : 12, linkBytes = big ? 8 : 4;
    bytes.clear();
    bytes.seekg(static_cast<std::streamoff>(offset));
    bytes.read(reinterpret_cast<char*>(count), static_cast<std::streamsize>(countBytes));
    std::uint64_t entries = 0;
    for (std::size_t byte = 0; byte < countBytes; ++byte)
        entries = entries * 256 + count[TIFFIsBigEndian(file->tiff) != 0 ? byte : countBytes - 1 - byte];
    if (!bytes || entries > 65535 || offset + countBytes + entries * entryBytes + linkBytes > fileBytes)
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
    // Image lengths cross the library's interface as int.
    constexpr std::uint64_t kMostPixels = std::numeric_limits<int>::max();
    if (width == 0 || height == 0 || std::uint64_t{width} * height > kMostPixels)
        Fail("has an impossible size of " + std::to_string(width) + " x " + std::to_string(height));
    const auto compression = Tag<std::uint16_t>(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (compression == COMPRESSION_NONE && std::uint64_t{width} * height * 2 > fileBytes)
        Fail("claims more pixels than the file holds");
    if (!TIFFIsCODECConfigured(compression))
        Fail("uses a compression (" + std::to_string(compression) + ") that cannot be read here");
    size = {static_cast<int>(width), static_cast<int>(height)};
}

void TTiffReader::Read(TImage& image)
{
    file->complaint.clear();
    try {
        image.size = size;
        image.pixels.resize(size.Pixels());
    } catch (const std::bad_alloc&) {
        Fail("there is not enough memory for " + size.Text() + " pixels");
    }
    if (TIFFIsTiled(file->tiff))
        ReadTiles(image);
    else
        ReadStrips(image);
}

void TTiffReader::ReadStrips(TImage& image)
{
    TIFF* const tiff = file->tiff;
    const auto rows =
        std::min(Tag<std::uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, 0xFFFFFFFFu), static_cast<std::uint32_t>(size.height));
    if (rows == 0)
        Fail("has strips without rows");
    const auto width = static_cast<std::size_t>(size.width);
    std::uint32_t strip = 0;
    for (std::uint32_t top = 0; top < static_cast<std::uint32_t>(size.height); top += rows, ++strip) {
        const std::size_t wanted = std::min<std::size_t>(rows, static_cast<std::size_t>(size.height) - top) * width * 2;
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
    const auto width = static_cast<std::size_t>(size.width);
    const auto height = static_cast<std::size_t>(size.height);
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
