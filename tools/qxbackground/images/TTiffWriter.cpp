#include "images/TTiffWriter.h"

#include "base/TToolError.h"
#include "images/TTiffHandle.h"
#include "images/TiffTags.h"

#include <algorithm>

namespace workbench {

TTiffWriter::TTiffWriter(const std::string& name, bool compressed, std::uint64_t expectedBytes, TExisting existing)
    : path(name), compress(compressed), replaced(name, existing), file(std::make_unique<TTiffHandle>())
{
    constexpr std::uint64_t kClassicTiffEnds = 4'000'000'000u; // leaves room for the page headers below 2^32
    file->Open(replaced.Temporary(), expectedBytes > kClassicTiffEnds ? "w8" : "w");
    if (file->tiff == nullptr)
        throw TToolError(path, "cannot be created: " + replaced.Reason(file->complaint));
}

TTiffWriter::~TTiffWriter()
{
    file.reset(); // closed before the file goes
}

bool TTiffWriter::WriteStrips(const TImage& image, std::uint32_t rowsPerStrip)
{
    const auto height = static_cast<std::uint32_t>(image.size.height);
    const auto width = static_cast<std::size_t>(image.size.width);
    for (std::uint32_t top = 0, strip = 0; top < height; top += rowsPerStrip, ++strip) {
        // libtiff takes the pixels through a pointer to non-const but only swaps bytes of other files' byte order.
        auto* const pixels = const_cast<std::uint16_t*>(image.pixels.data()) + top * width;
        const auto bytes = static_cast<tmsize_t>(std::min(rowsPerStrip, height - top) * width * 2);
        if (TIFFWriteEncodedStrip(file->tiff, strip, pixels, bytes) != bytes)
            return false;
        if (rowsPerStrip >= height)
            break;
    }
    return TIFFWriteDirectory(file->tiff) == 1 && file->complaint.empty();
}

void TTiffWriter::Write(const TImage& image, const TPageMetadata& metadata)
{
    constexpr std::size_t kCompressedStrip = 1 << 20;
    ++page;
    TIFF* const tiff = file->tiff;
    file->complaint.clear();
    const std::size_t rowBytes = static_cast<std::size_t>(image.size.width) * 2;
    const auto rows = static_cast<std::uint32_t>(image.size.height);
    const std::uint32_t rowsPerStrip =
        compress ? std::min(rows, static_cast<std::uint32_t>((kCompressedStrip + rowBytes - 1) / rowBytes)) : rows;
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(image.size.width));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, rows);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, compress ? COMPRESSION_ADOBE_DEFLATE : COMPRESSION_NONE);
    if (compress)
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
    WriteTiffTags(tiff, metadata);
    if (!WriteStrips(image, rowsPerStrip))
        throw TToolError(path, page, "cannot be written: " + replaced.Reason(file->complaint));
}

void TTiffWriter::Close()
{
    file->complaint.clear();
    TIFFFlush(file->tiff);
    if (!file->complaint.empty())
        throw TToolError(path, "cannot be written: " + replaced.Reason(file->complaint));
    file = std::make_unique<TTiffHandle>();
    replaced.Commit();
}

} // namespace workbench
