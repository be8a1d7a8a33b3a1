#include "images/TPgmReader.h"

#include "base/Wording.h"

#include <algorithm>
#include <limits>

namespace workbench {

namespace {

bool IsBlank(int byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

} // namespace

TPgmReader::TPgmReader(const std::string& name) : TImageReader(name, TImageFormat::Pgm), file(name) {}

int TPgmReader::NextByte()
{
    constexpr std::size_t kAhead = 1 << 16;
    if (at < bufferStart || at - bufferStart >= buffer.size()) {
        buffer = file.TextAt(at, kAhead);
        bufferStart = at;
        if (buffer.empty())
            return -1;
    }
    return static_cast<unsigned char>(buffer[static_cast<std::size_t>(at++ - bufferStart)]);
}

// Blanks and comments, the digits, and the one byte behind them.
std::uint64_t TPgmReader::Number(const char* what)
{
    constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
    constexpr std::size_t kLongestComment = 4096;
    int byte = NextByte();
    while (IsBlank(byte) || byte == '#') {
        if (byte == '#') {
            std::string line;
            while ((byte = NextByte()) != '\n' && byte != '\r' && byte >= 0) {
                if (line.size() + comment.size() < kLongestComment)
                    line += static_cast<char>(byte);
            }
            line.erase(0, line.find_first_not_of(' '));
            if (!line.empty())
                comment += (comment.empty() ? "" : "\n") + Printable(line);
        } else {
            byte = NextByte();
        }
    }
    if (byte < 0)
        Fail(std::string("the file ends before its ") + what);
    if (byte < '0' || byte > '9')
        Fail(std::string("is no PGM image: its ") + what + " is no number");
    std::uint64_t value = 0;
    for (; byte >= '0' && byte <= '9'; byte = NextByte()) {
        value = value * 10 + static_cast<std::uint64_t>(byte - '0');
        if (value > kMost)
            Fail(std::string("is no PGM image: its ") + what + " is too large");
    }
    if (byte >= 0 && !IsBlank(byte) && byte != '#')
        Fail(std::string("is no PGM image: its ") + what + " is no number");
    if (byte == '#')
        --at;
    return value;
}

bool TPgmReader::NextPage()
{
    if (page > 0) {
        if (text) // of which a file holds one; counting needs no look at its pixels
            return false;
        at = raster + Size().Pixels() * 2;
        int byte = NextByte();
        while (IsBlank(byte))
            byte = NextByte();
        if (byte < 0)
            return false;
        --at;
    }
    ++page;
    comment.clear();
    const int letter = NextByte();
    const int kind = NextByte();
    if (letter != 'P' || (kind != '5' && kind != '2') || (kind == '2' && page > 1))
        Fail("is no PGM image");
    text = kind == '2';
    const std::uint64_t width = Number("width");
    const std::uint64_t height = Number("height");
    largest = static_cast<unsigned>(std::min<std::uint64_t>(Number("largest value"), 65536));
    raster = at;
    if (largest > 65535)
        Fail("has a largest value above 65535");
    if (largest < 256)
        Fail("has 8 bits per pixel (largest value " + std::to_string(largest) + "); 16-bit grayscale is needed");
    // A number in text takes two bytes at least, but for the blank behind the last one.
    SetSize(width, height, file.Bytes() - std::min(raster, file.Bytes()) + (text ? 1 : 0));
    return true;
}

void TPgmReader::Read(TImage& image)
{
    Prepare(image);
    if (text)
        ReadText(image);
    else if (!file.ReadPixels(raster, image.pixels.data(), image.pixels.size(), {true, 0}))
        Fail("its pixels cannot be read: the file was cut or changed meanwhile");
    else
        CheckValues(image);
}

std::optional<TPlainPixels> TPgmReader::Plain()
{
    if (text || largest != 65535)
        return {};
    return TPlainPixels{file, raster, {true, 0}};
}

void TPgmReader::ReadText(TImage& image)
{
    at = raster;
    const std::string kept = comment;
    for (std::uint16_t& pixel : image.pixels) {
        const std::uint64_t value = Number("pixels");
        if (value > largest)
            Fail("has a pixel of " + std::to_string(value) + ", above the largest value of " + std::to_string(largest) +
                 " that its header names");
        pixel = static_cast<std::uint16_t>(value);
    }
    comment = kept;
}

void TPgmReader::CheckValues(const TImage& image)
{
    if (largest == 65535 || image.pixels.empty())
        return;
    const std::uint16_t found = *std::max_element(image.pixels.begin(), image.pixels.end());
    if (found > largest)
        Fail("has a pixel of " + std::to_string(found) + ", above the largest value of " + std::to_string(largest) +
             " that its header names");
}

TPageMetadata TPgmReader::Metadata()
{
    TPageMetadata metadata;
    metadata.description = comment;
    while (largest >> metadata.significantBits != 0)
        ++metadata.significantBits;
    // Some programs put the largest value of this image there, and most 65535 whatever the camera has.
    if (largest < 65535 && (largest & (largest + 1)) == 0)
        metadata.cameraBits = metadata.significantBits;
    return metadata;
}

} // namespace workbench
