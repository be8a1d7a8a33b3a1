#include "images/TiffTags.h"

#include "images/FitsCards.h"

#include <algorithm>
#include <array>

namespace workbench {

namespace {

struct TTextTag {
    std::uint32_t tag;
    std::string TPageMetadata::* place;
};
constexpr std::array<TTextTag, 10> kTextTags{{{TIFFTAG_DOCUMENTNAME, &TPageMetadata::documentName},
                                              {TIFFTAG_IMAGEDESCRIPTION, &TPageMetadata::description},
                                              {TIFFTAG_MAKE, &TPageMetadata::make},
                                              {TIFFTAG_MODEL, &TPageMetadata::model},
                                              {TIFFTAG_PAGENAME, &TPageMetadata::pageName},
                                              {TIFFTAG_SOFTWARE, &TPageMetadata::software},
                                              {TIFFTAG_DATETIME, &TPageMetadata::date},
                                              {TIFFTAG_ARTIST, &TPageMetadata::artist},
                                              {TIFFTAG_HOSTCOMPUTER, &TPageMetadata::hostComputer},
                                              {TIFFTAG_COPYRIGHT, &TPageMetadata::copyright}}};

std::vector<std::uint8_t> Bytes(TIFF* tiff, std::uint32_t tag)
{
    std::uint32_t count = 0;
    const std::uint8_t* data = nullptr;
    if (TIFFGetField(tiff, tag, &count, &data) != 1 || data == nullptr)
        return {};
    return {data, data + count};
}

std::optional<double> Number(TIFF* tiff, std::uint32_t tag)
{
    float value = 0;
    if (TIFFGetField(tiff, tag, &value) != 1 || !(value >= 0) || value > 1e9f)
        return std::nullopt;
    return static_cast<double>(value);
}

std::string WithoutCounts(const std::string& description)
{
    if (description.compare(0, 9, "{\"shape\":") == 0)
        return {};
    if (description.compare(0, 7, "ImageJ=") != 0)
        return description;
    static const char* const kCounts[] = {"images=", "channels=", "slices=", "frames=", "hyperstack=", "min=", "max="};
    std::string kept;
    for (std::size_t start = 0; start < description.size();) {
        const std::size_t end = std::min(description.find('\n', start), description.size() - 1) + 1;
        const std::string line = description.substr(start, end - start);
        if (std::none_of(std::begin(kCounts), std::end(kCounts),
                         [&line](const std::string& count) { return line.compare(0, count.size(), count) == 0; }))
            kept += line;
        start = end;
    }
    return kept;
}

} // namespace

TPageMetadata ReadTiffTags(TIFF* tiff)
{
    TPageMetadata metadata;
    for (const TTextTag& known : kTextTags) {
        const char* text = nullptr;
        if (TIFFGetField(tiff, known.tag, &text) == 1 && text != nullptr)
            metadata.*known.place = text;
    }
    metadata.description = WithoutCounts(metadata.description);
    std::uint16_t unit = RESUNIT_INCH;
    TIFFGetFieldDefaulted(tiff, TIFFTAG_RESOLUTIONUNIT, &unit);
    const std::optional<double> x = Number(tiff, TIFFTAG_XRESOLUTION), y = Number(tiff, TIFFTAG_YRESOLUTION);
    if (x && y)
        metadata.resolution = TPageMetadata::TResolution{*x, *y, unit >= 1 && unit <= 3 ? unit : RESUNIT_NONE};
    metadata.xPosition = Number(tiff, TIFFTAG_XPOSITION);
    metadata.yPosition = Number(tiff, TIFFTAG_YPOSITION);
    std::uint16_t orientation = 0;
    if (TIFFGetField(tiff, TIFFTAG_ORIENTATION, &orientation) == 1 && orientation >= 1 && orientation <= 8)
        metadata.orientation = orientation;
    metadata.iccProfile = Bytes(tiff, TIFFTAG_ICCPROFILE);
    metadata.xmp = Bytes(tiff, TIFFTAG_XMLPACKET);
    TakeConditions(CardsIn(metadata.description), metadata);
    // Zero where it is absent.
    std::uint16_t largest = 0;
    if (TIFFGetField(tiff, TIFFTAG_MAXSAMPLEVALUE, &largest) == 1 && largest > 255) {
        metadata.significantBits = 0;
        while (largest >> metadata.significantBits != 0)
            ++metadata.significantBits;
    }
    return metadata;
}

void WriteTiffTags(TIFF* tiff, const TPageMetadata& metadata)
{
    for (const TTextTag& known : kTextTags) {
        if (!(metadata.*known.place).empty())
            TIFFSetField(tiff, known.tag, (metadata.*known.place).c_str());
    }
    const std::string description = FullDescription(metadata);
    if (!description.empty())
        TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, description.c_str());
    if (metadata.resolution) {
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, metadata.resolution->x);
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, metadata.resolution->y);
        TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, metadata.resolution->unit);
    }
    if (metadata.xPosition)
        TIFFSetField(tiff, TIFFTAG_XPOSITION, *metadata.xPosition);
    if (metadata.yPosition)
        TIFFSetField(tiff, TIFFTAG_YPOSITION, *metadata.yPosition);
    if (metadata.orientation != 0)
        TIFFSetField(tiff, TIFFTAG_ORIENTATION, metadata.orientation);
    if (!metadata.iccProfile.empty())
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(metadata.iccProfile.size()),
                     metadata.iccProfile.data());
    if (!metadata.xmp.empty())
        TIFFSetField(tiff, TIFFTAG_XMLPACKET, static_cast<std::uint32_t>(metadata.xmp.size()), metadata.xmp.data());
}

} // namespace workbench
