#include "images/TTiffWriter.h"

#include "base/TToolError.h"
#include "images/TTiffHandle.h"

namespace workbench {

TTiffWriter::TTiffWriter(const std::string& name, std::uint64_t expectedBytes, TExisting existing)
    : path(name), replaced(name, existing), file(std::make_unique<TTiffHandle>())
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

void TTiffWriter::Write(const TImage& image)
{
    ++page;
    TIFF* const tiff = file->tiff;
    file->complaint.clear();
    const auto rows = static_cast<std::uint32_t>(image.size.height);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<std::uint32_t>(image.size.width));
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, rows);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 16);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rows);
    // libtiff takes the pixels through a pointer to non-const but only swaps bytes of other files' byte order.
    auto* const pixels = const_cast<std::uint16_t*>(image.pixels.data());
    const auto bytes = static_cast<tmsize_t>(image.pixels.size() * sizeof(std::uint16_t));
    if (TIFFWriteEncodedStrip(tiff, 0, pixels, bytes) != bytes || TIFFWriteDirectory(tiff) != 1 ||
        !file->complaint.empty())
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
