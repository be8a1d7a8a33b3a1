#include "images/TFitsWriter.h"

#include "base/TToolError.h"
#include "images/ByteOrder.h"
#include "images/FitsCards.h"
#include "images/TFitsTiles.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace workbench {

TFitsWriter::TFitsWriter(const std::string& name, bool compressed, TExisting existing)
    : path(name), compress(compressed), replaced(name, existing)
{
    stream.rdbuf()->pubsetbuf(nullptr, 0);
    stream.open(std::filesystem::path(replaced.Temporary()), std::ios::binary);
    if (!stream)
        throw TToolError(path, "cannot be created: " + replaced.Reason(std::generic_category().message(errno)));
}

void TFitsWriter::Put(const void* bytes, std::size_t count)
{
    stream.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(count));
    if (!stream)
        throw TToolError(path, page, "cannot be written: " + replaced.Reason("unknown error"));
}

void TFitsWriter::WriteBlocks(std::string text, char filler)
{
    text.resize((text.size() + kFitsBlock - 1) / kFitsBlock * kFitsBlock, filler);
    Put(text.data(), text.size());
}

// Fills the last block of the pixels.
void TFitsWriter::EndUnit()
{
    if (planesWritten < planesPromised)
        throw TToolError(path, page, "cannot be written: planes of a cube are missing");
    planesWritten = planesPromised = 0;
    const std::size_t over = static_cast<std::size_t>(unitBytes % kFitsBlock);
    unitBytes = 0;
    if (over > 0)
        Put(std::string(kFitsBlock - over, '\0').data(), kFitsBlock - over);
}

void TFitsWriter::WriteHeader(const TImage& image, const TPageMetadata& metadata)
{
    const bool isCube = metadata.planes > 1 && metadata.plane == 1;
    std::string header = page == 1 ? Card("SIMPLE", "T", "") : Card("XTENSION", QuotedCardText("IMAGE"), "");
    header += Card("BITPIX", "16", "") + Card("NAXIS", isCube ? "3" : "2", "") +
              Card("NAXIS1", std::to_string(image.size.width), "") +
              Card("NAXIS2", std::to_string(image.size.height), "");
    if (isCube)
        header += Card("NAXIS3", std::to_string(metadata.planes), "");
    header += page == 1 ? Card("EXTEND", "T", "") : Card("PCOUNT", "0", "") + Card("GCOUNT", "1", "");
    header += Card("BZERO", "32768", "unsigned 16-bit integers") + Card("BSCALE", "1", "");
    for (const std::string& card : CardsOf(metadata))
        header += card;
    WriteBlocks(header + "END", ' ');
    planesPromised = isCube ? metadata.planes : 0;
    cubeSize = image.size;
}

void TFitsWriter::WritePixels(const TImage& image)
{
    constexpr std::size_t kPiece = 1 << 17;
    const std::size_t count = image.pixels.size();
    piece.resize(std::min(kPiece, count));
    for (std::size_t done = 0; done < count; done += kPiece) {
        const std::size_t pixels = std::min(kPiece, count - done);
        if (kHostIsBigEndian)
            std::transform(image.pixels.data() + done, image.pixels.data() + done + pixels, piece.data(),
                           [](std::uint16_t pixel) { return static_cast<std::uint16_t>(pixel ^ 0x8000); });
        else
            CopySwapped(image.pixels.data() + done, piece.data(), pixels, 0x0080);
        Put(piece.data(), pixels * 2);
    }
    unitBytes += count * 2;
}

void TFitsWriter::WriteCompressed(const TImage& image, const TPageMetadata& metadata)
{
    if (page == 1)
        WriteBlocks(Card("SIMPLE", "T", "") + Card("BITPIX", "8", "") + Card("NAXIS", "0", "") +
                        Card("EXTEND", "T", "") + "END",
                    ' ');
    const std::string table = RiceTiles(image, CardsOf(metadata));
    Put(table.data(), table.size());
}

void TFitsWriter::Write(const TImage& image, const TPageMetadata& metadata)
{
    ++page;
    if (compress) {
        WriteCompressed(image, metadata);
        return;
    }
    const bool goesOn = planesWritten > 0 && planesWritten < planesPromised && metadata.plane == planesWritten + 1 &&
                        metadata.planes == planesPromised && image.size == cubeSize;
    if (!goesOn) {
        EndUnit();
        WriteHeader(image, metadata);
    }
    WritePixels(image);
    if (planesPromised > 0)
        ++planesWritten;
}

void TFitsWriter::Close()
{
    EndUnit();
    stream.close();
    if (!stream)
        throw TToolError(path, "cannot be written: " + replaced.Reason("unknown error"));
    replaced.Commit();
}

} // namespace workbench
