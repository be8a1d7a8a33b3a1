#include "images/TFitsTiles.h"

#include "images/ByteOrder.h"
#include "images/FitsCards.h"
#include "images/RiceCode.h"

#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace workbench {

namespace {

constexpr std::uint64_t kMostByDeflate = 1032;
constexpr std::uint64_t kMostLength = std::numeric_limits<std::int32_t>::max();

std::string Numbered(const char* stem, std::uint64_t number)
{
    return stem + std::to_string(number);
}

// 0 for what is no number from 1 on.
std::uint64_t Count(const std::vector<std::string>& cards, const std::string& keyword, std::uint64_t absent = 0)
{
    const std::optional<double> value = CardNumber(cards, keyword);
    if (!value)
        return absent;
    const bool good = *value >= 1 && *value <= static_cast<double>(kMostLength) && *value == std::floor(*value);
    return good ? static_cast<std::uint64_t>(*value) : 0;
}

// The bytes of a column, by the letter of its form behind the count; 0 for an unknown one.
std::uint64_t FieldBytes(const std::string& form, char& letter)
{
    const std::size_t at = form.find_first_not_of("0123456789");
    letter = at == std::string::npos ? ' ' : form[at];
    const std::uint64_t count = at == 0 || at == std::string::npos ? 1 : std::strtoul(form.c_str(), nullptr, 10);
    if (count > 100000)
        return 0;
    static const struct {
        char letter;
        std::uint64_t bytes;
    } kForms[] = {{'L', 1}, {'B', 1}, {'A', 1}, {'I', 2}, {'J', 4},  {'E', 4},
                  {'K', 8}, {'D', 8}, {'C', 8}, {'P', 8}, {'M', 16}, {'Q', 16}};
    for (const auto& known : kForms) {
        if (known.letter == letter)
            return count * known.bytes;
    }
    return letter == 'X' ? (count + 7) / 8 : 0;
}

std::uint64_t BigEndian(const std::string& bytes, std::uint64_t at, int count)
{
    std::uint64_t value = 0;
    for (int byte = 0; byte < count; ++byte)
        value = value << 8 |
                static_cast<unsigned char>(bytes[static_cast<std::size_t>(at) + static_cast<std::size_t>(byte)]);
    return value;
}

// False unless the stream holds just so many bytes.
bool Unzip(std::vector<std::uint8_t>& code, std::uint8_t* target, std::size_t bytes)
{
    z_stream stream{};
    constexpr int kGzipOrZlib = 15 + 32;
    if (inflateInit2(&stream, kGzipOrZlib) != Z_OK)
        return false;
    stream.next_in = code.data();
    stream.avail_in = static_cast<uInt>(code.size());
    stream.next_out = target;
    stream.avail_out = static_cast<uInt>(bytes);
    const int result = inflate(&stream, Z_FINISH);
    inflateEnd(&stream);
    return result == Z_STREAM_END && stream.avail_out == 0;
}

} // namespace

std::uint64_t TFitsTiles::MostBytes(std::uint64_t compressed)
{
    return compressed * kMostByDeflate;
}

TFitsTiles::TFitsTiles(const std::vector<std::string>& cards, std::uint64_t bytes)
    : dataBytes(bytes), rowBytes(Count(cards, "NAXIS1")), rows(Count(cards, "NAXIS2")),
      heap(Count(cards, "THEAP", rowBytes * rows))
{
    FindMethod(cards);
    if (complaint.empty())
        FindColumns(cards);
    if (complaint.empty())
        FindTiles(cards);
}

void TFitsTiles::FindMethod(const std::vector<std::string>& cards)
{
    const std::string kind = CardText(cards, "ZCMPTYPE").value_or("");
    if (kind == "GZIP_1" || kind == "GZIP_2") {
        method = kind == "GZIP_1" ? TMethod::Gzip : TMethod::ShuffledGzip;
        return;
    }
    if (kind != "RICE_1" && kind != "RICE_ONE") {
        complaint = "is compressed by " + (kind.empty() ? "no named method" : "'" + kind + "'") +
                    ", which is not read here; funpack makes a plain FITS file of it";
        return;
    }
    std::uint64_t pixelBytes = 4;
    for (std::uint64_t number = 1; number <= 9; ++number) {
        const std::optional<std::string> name = CardText(cards, Numbered("ZNAME", number));
        if (name == std::string("BLOCKSIZE"))
            block = static_cast<std::size_t>(Count(cards, Numbered("ZVAL", number)));
        if (name == std::string("BYTEPIX"))
            pixelBytes = Count(cards, Numbered("ZVAL", number));
    }
    if (pixelBytes != 2 || block < 1)
        complaint = "is compressed as integers that have not 16 bits; funpack makes a plain FITS file of it";
}

void TFitsTiles::FindColumns(const std::vector<std::string>& cards)
{
    const std::uint64_t fields = std::min<std::uint64_t>(Count(cards, "TFIELDS"), 999);
    std::uint64_t offset = 0;
    for (std::uint64_t field = 1; field <= fields; ++field) {
        const std::string name = CardText(cards, Numbered("TTYPE", field)).value_or("");
        char letter = ' ';
        const std::uint64_t bytes = FieldBytes(CardText(cards, Numbered("TFORM", field)).value_or(""), letter);
        const bool isDescriptor = (letter == 'P' && bytes == 8) || (letter == 'Q' && bytes == 16);
        if (isDescriptor && name == "COMPRESSED_DATA")
            compressed = {offset, static_cast<int>(bytes)};
        if (isDescriptor && name == "GZIP_COMPRESSED_DATA")
            gzipped = {offset, static_cast<int>(bytes)};
        offset += bytes;
    }
    if (compressed.bytes == 0 || offset != rowBytes)
        complaint = "has a table of tiles without compressed pixels";
}

void TFitsTiles::FindTiles(const std::vector<std::string>& cards)
{
    const std::uint64_t axes = std::min<std::uint64_t>(Count(cards, "ZNAXIS"), 999);
    std::uint64_t tiles = 1;
    for (std::uint64_t axis = 1; axis <= axes; ++axis) {
        const std::uint64_t length = Count(cards, Numbered("ZNAXIS", axis));
        const std::uint64_t tile = Count(cards, Numbered("ZTILE", axis), axis == 1 ? length : 1);
        if (tile < 1 || length < 1 || tile > length || (axis > 2 && tile != 1) || tiles > kMostLength) {
            complaint = axis > 2 && tile > 1 ? "has tiles that reach over several planes; funpack makes a plain FITS "
                                               "file of it"
                                             : "has tiles of an impossible size";
            return;
        }
        if (axis == 1)
            tileWidth = tile;
        if (axis == 2)
            tileHeight = tile;
        tiles *= (length + tile - 1) / tile;
    }
    if (tiles != rows || heap < rowBytes * rows)
        complaint = "has another number of tiles than its size asks for";
}

// The tile's code out of the heap; false where it is not all there.
bool TFitsTiles::ReadCode(TInputFile& file, std::uint64_t data, const std::string& row, const TColumn& column)
{
    code.clear();
    const std::uint64_t count = BigEndian(row, column.offset, column.bytes / 2);
    const std::uint64_t at =
        BigEndian(row, column.offset + static_cast<std::uint64_t>(column.bytes / 2), column.bytes / 2);
    if (heap > dataBytes || at > dataBytes - heap || count > dataBytes - heap - at || count > kMostLength)
        return false;
    code.resize(static_cast<std::size_t>(count));
    return file.ReadAt(data + heap + at, code.data(), code.size());
}

std::string TFitsTiles::ReadTile(TInputFile& file, std::uint64_t data, const std::string& row,
                                 std::vector<std::uint16_t>& tile)
{
    static const char* const kDamaged = "a tile is damaged";
    if (!ReadCode(file, data, row, compressed))
        return kDamaged;
    TMethod how = method;
    if (code.empty() && gzipped.bytes > 0) {
        how = TMethod::Gzip;
        if (!ReadCode(file, data, row, gzipped))
            return kDamaged;
    }
    if (code.empty())
        return "a tile is missing";
    if (how == TMethod::Rice)
        return RiceDecode(code.data(), code.size(), block, tile.data(), tile.size()) ? "" : kDamaged;
    std::vector<std::uint8_t> bytes(tile.size() * 2);
    if (!Unzip(code, bytes.data(), bytes.size()))
        return kDamaged;
    // The high byte of each pixel before its low one; or those of all before the low ones of all.
    const bool shuffled = how == TMethod::ShuffledGzip;
    const std::size_t step = shuffled ? 1 : 2, low = shuffled ? tile.size() : 1;
    for (std::size_t pixel = 0; pixel < tile.size(); ++pixel)
        tile[pixel] = static_cast<std::uint16_t>(bytes[pixel * step] << 8 | bytes[pixel * step + low]);
    return {};
}

std::string TFitsTiles::Read(TInputFile& file, std::uint64_t data, std::uint64_t plane, TSize size,
                             std::uint16_t* pixels)
{
    const auto width = static_cast<std::uint64_t>(size.width), height = static_cast<std::uint64_t>(size.height);
    const std::uint64_t across = (width + tileWidth - 1) / tileWidth, down = (height + tileHeight - 1) / tileHeight;
    std::uint64_t number = plane * across * down;
    std::vector<std::uint16_t> tile;
    for (std::uint64_t top = 0; top < height; top += tileHeight) {
        const std::string band = file.TextAt(data + number * rowBytes, static_cast<std::size_t>(across * rowBytes));
        if (band.size() != across * rowBytes)
            return "the file was cut or changed meanwhile";
        number += across;
        for (std::uint64_t column = 0; column < across; ++column) {
            const std::uint64_t left = column * tileWidth;
            const auto columns = static_cast<std::size_t>(std::min(tileWidth, width - left));
            const auto lines = static_cast<std::size_t>(std::min(tileHeight, height - top));
            tile.resize(columns * lines);
            const std::string row =
                band.substr(static_cast<std::size_t>(column * rowBytes), static_cast<std::size_t>(rowBytes));
            const std::string failure = ReadTile(file, data, row, tile);
            if (!failure.empty())
                return failure;
            for (std::size_t line = 0; line < lines; ++line)
                std::copy_n(tile.data() + line * columns, columns, pixels + (top + line) * width + left);
        }
    }
    return {};
}

std::string RiceTiles(const TImage& image, const std::vector<std::string>& cards)
{
    const auto width = static_cast<std::size_t>(image.size.width);
    const auto height = static_cast<std::size_t>(image.size.height);
    constexpr std::size_t kRowBytes = 16; // of two numbers, for heaps of any length
    std::vector<std::uint8_t> heap;
    std::string table;
    std::vector<std::uint16_t> line(width);
    std::size_t longest = 0;
    for (std::size_t row = 0; row < height; ++row) {
        const std::size_t start = heap.size();
        std::transform(image.pixels.data() + row * width, image.pixels.data() + (row + 1) * width, line.data(),
                       [](std::uint16_t pixel) { return static_cast<std::uint16_t>(pixel ^ 0x8000); });
        RiceEncode(line.data(), width, heap);
        longest = std::max(longest, heap.size() - start);
        for (const std::uint64_t number : {std::uint64_t{heap.size() - start}, std::uint64_t{start}}) {
            for (int shift = 56; shift >= 0; shift -= 8)
                table += static_cast<char>(number >> shift & 0xFF);
        }
    }
    std::string unit =
        Card("XTENSION", QuotedCardText("BINTABLE"), "") + Card("BITPIX", "8", "") + Card("NAXIS", "2", "") +
        Card("NAXIS1", std::to_string(kRowBytes), "") + Card("NAXIS2", std::to_string(height), "") +
        Card("PCOUNT", std::to_string(heap.size()), "") + Card("GCOUNT", "1", "") + Card("TFIELDS", "1", "") +
        Card("TTYPE1", QuotedCardText("COMPRESSED_DATA"), "") +
        Card("TFORM1", QuotedCardText("1QB(" + std::to_string(longest) + ")"), "") +
        Card("ZIMAGE", "T", "a tile-compressed image") + Card("ZTENSION", QuotedCardText("IMAGE"), "") +
        Card("ZBITPIX", "16", "") + Card("ZNAXIS", "2", "") + Card("ZNAXIS1", std::to_string(width), "") +
        Card("ZNAXIS2", std::to_string(height), "") + Card("ZPCOUNT", "0", "") + Card("ZGCOUNT", "1", "") +
        Card("ZTILE1", std::to_string(width), "") + Card("ZTILE2", "1", "") +
        Card("ZCMPTYPE", QuotedCardText("RICE_1"), "") + Card("ZNAME1", QuotedCardText("BLOCKSIZE"), "") +
        Card("ZVAL1", std::to_string(kRiceBlock), "") + Card("ZNAME2", QuotedCardText("BYTEPIX"), "") +
        Card("ZVAL2", "2", "") + Card("BZERO", "32768", "unsigned 16-bit integers") + Card("BSCALE", "1", "");
    for (const std::string& card : cards)
        unit += card;
    unit += "END";
    unit.resize((unit.size() + kFitsBlock - 1) / kFitsBlock * kFitsBlock, ' ');
    unit += table;
    unit.append(heap.begin(), heap.end());
    unit.resize((unit.size() + kFitsBlock - 1) / kFitsBlock * kFitsBlock, '\0');
    return unit;
}

} // namespace workbench
