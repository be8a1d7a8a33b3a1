#include "images/TSerReader.h"

#include "base/Wording.h"
#include "images/ByteOrder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>

namespace workbench {

namespace {

constexpr std::size_t kHeaderBytes = 178;

std::uint64_t LittleEndian(const std::string& bytes, std::size_t at, std::size_t count)
{
    std::uint64_t value = 0;
    for (std::size_t byte = 0; byte < count; ++byte)
        value |= std::uint64_t{static_cast<unsigned char>(bytes[at + byte])} << (8 * byte);
    return value;
}

std::string TextIn(const std::string& bytes, std::size_t at)
{
    std::string text = Printable(bytes.substr(at, 40).substr(0, bytes.substr(at, 40).find('\0')));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
}

// As TIFF writes a date; empty for none. The calendar's rules are those of days since 1 March of the year 0.
std::string DateOf(std::int64_t ticks)
{
    constexpr std::int64_t kTicksPerSecond = 10'000'000, kSecondsPerDay = 86400, kDaysOf400Years = 146097;
    const std::int64_t seconds = ticks / kTicksPerSecond;
    std::int64_t days = seconds / kSecondsPerDay + 306; // 1 January of the year 1
    const std::int64_t ofDay = seconds % kSecondsPerDay;
    if (ticks <= 0 || days > 10000 * kDaysOf400Years / 400)
        return {};
    const std::int64_t era = days / kDaysOf400Years;
    days %= kDaysOf400Years;
    const std::int64_t ofEra = (days - days / 1460 + days / 36524 - days / 146096) / 365;
    const std::int64_t ofYear = days - (365 * ofEra + ofEra / 4 - ofEra / 100);
    const std::int64_t shifted = (5 * ofYear + 2) / 153;
    const std::int64_t month = shifted < 10 ? shifted + 3 : shifted - 9;
    const std::int64_t year = era * 400 + ofEra + (month <= 2 ? 1 : 0);
    return fmt::format("{:04}:{:02}:{:02} {:02}:{:02}:{:02}", year, month, ofYear - (153 * shifted + 2) / 5 + 1,
                       ofDay / 3600, ofDay / 60 % 60, ofDay % 60);
}

// The sum of the steps from pixel to pixel: in a picture small, where bytes are in the wrong order large.
std::uint64_t Roughness(const std::vector<std::uint16_t>& pixels, bool swapped)
{
    const auto value = [swapped](std::uint16_t pixel) { return int{swapped ? Swapped(pixel) : pixel}; };
    std::uint64_t sum = 0;
    for (std::size_t pixel = 1; pixel < pixels.size(); ++pixel)
        sum += static_cast<std::uint64_t>(std::abs(value(pixels[pixel]) - value(pixels[pixel - 1])));
    return sum;
}

} // namespace

TSerReader::TSerReader(const std::string& name) : TImageReader(name, TImageFormat::Ser), file(name)
{
    ReadHeader();
}

void TSerReader::ReadHeader()
{
    const std::string header = file.TextAt(0, kHeaderBytes);
    if (header.size() < kHeaderBytes)
        Fail("the file ends inside the header of the video");
    const std::uint64_t color = LittleEndian(header, 18, 4);
    if (color >= 100)
        Fail("is a colour video (ColorID " + std::to_string(color) + "); one sample per pixel is needed");
    depth = static_cast<int>(std::min<std::uint64_t>(LittleEndian(header, 34, 4), 100));
    if (depth < 9 || depth > 16)
        Fail("is a video of " + std::to_string(depth) + " bits per pixel; more than 8 and at most 16 are needed");
    layout.bigEndian = LittleEndian(header, 22, 4) != 0;
    SetSize(LittleEndian(header, 26, 4), LittleEndian(header, 30, 4), file.Bytes() - kHeaderBytes);
    frames = LittleEndian(header, 38, 4);
    const std::uint64_t there = (file.Bytes() - kHeaderBytes) / (Size().Pixels() * 2);
    if (frames == 0)
        Fail("is a video without frames");
    if (frames > there)
        Fail("claims " + Counted(frames, "frame") + ", but the file ends after " + std::to_string(there));
    observer = TextIn(header, 42);
    instrument = TextIn(header, 82);
    telescope = TextIn(header, 122);
    start = static_cast<std::int64_t>(LittleEndian(header, 170, 8));
}

std::uint64_t TSerReader::OffsetOf(std::uint64_t frame) const
{
    return kHeaderBytes + frame * Size().Pixels() * 2;
}

bool TSerReader::LooksSwapped()
{
    constexpr std::size_t kEnough = 1 << 18;
    std::vector<std::uint16_t> sample(std::min(Size().Pixels(), kEnough));
    if (!file.ReadPixels(OffsetOf(0), sample.data(), sample.size(), layout))
        return false;
    if (depth < 16) {
        const auto tooLarge = [this](std::uint16_t pixel) { return pixel >> depth != 0; };
        const auto tooLargeSwapped = [&](std::uint16_t pixel) { return tooLarge(Swapped(pixel)); };
        if (std::any_of(sample.begin(), sample.end(), tooLarge))
            return std::none_of(sample.begin(), sample.end(), tooLargeSwapped);
    }
    constexpr std::uint64_t kClearly = 4;
    return Roughness(sample, false) > kClearly * Roughness(sample, true);
}

bool TSerReader::NextPage()
{
    if (page == frames)
        return false;
    ++page;
    return true;
}

void TSerReader::Read(TImage& image)
{
    if (!orderKnown && LooksSwapped())
        layout.bigEndian = !layout.bigEndian;
    orderKnown = true;
    Prepare(image);
    if (!file.ReadPixels(OffsetOf(page - 1), image.pixels.data(), image.pixels.size(), layout))
        Fail("its pixels cannot be read: the file was cut or changed meanwhile");
}

TPageMetadata TSerReader::Metadata()
{
    TPageMetadata metadata;
    metadata.significantBits = depth;
    metadata.cameraBits = depth;
    metadata.artist = observer;
    metadata.model = instrument;
    metadata.description = telescope;
    // Behind the frames there may be the time of each.
    const std::string time = file.TextAt(OffsetOf(frames) + std::uint64_t{page - 1} * 8, 8);
    metadata.date = DateOf(time.size() == 8 ? static_cast<std::int64_t>(LittleEndian(time, 0, 8)) : start);
    return metadata;
}

} // namespace workbench
