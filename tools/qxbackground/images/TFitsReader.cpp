#include "images/TFitsReader.h"

#include "base/Wording.h"
#include "images/FitsCards.h"
#include "images/TFitsTiles.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace workbench {

namespace {

constexpr std::uint64_t kMostHeaderBytes = 8 << 20;
constexpr std::uint64_t kMostAxes = 999;

std::uint64_t WholeBlocks(std::uint64_t bytes)
{
    return (bytes + kFitsBlock - 1) / kFitsBlock * kFitsBlock;
}

// What cfitsio, and so fpack, tells of the format in every primary header that it makes.
bool IsAboutTheFormat(const std::string& card)
{
    static const char* const kLines[] = {"COMMENT   FITS (Flexible Image Transport System) format is defined in",
                                         "COMMENT   and Astrophysics', volume 376, page 359"};
    return std::any_of(std::begin(kLines), std::end(kLines),
                       [&](const char* line) { return card.compare(0, std::strlen(line), line) == 0; });
}

} // namespace

TFitsReader::TFitsReader(const std::string& name) : TImageReader(name, TImageFormat::Fits), file(name) {}

TFitsReader::~TFitsReader() = default;

std::uint64_t TFitsReader::Whole(const std::string& keyword, std::uint64_t most)
{
    const std::optional<double> value = CardNumber(unit.cards, keyword);
    if (!value)
        Fail("has no " + keyword + " in its header");
    if (*value < 0 || *value != std::floor(*value) || *value > static_cast<double>(most))
        Fail("has an impossible " + keyword + " in its header");
    return static_cast<std::uint64_t>(*value);
}

std::uint64_t TFitsReader::Axis(const char* stem, int number)
{
    return Whole(stem + std::to_string(number), std::uint64_t{1} << 48);
}

void TFitsReader::ReadCards()
{
    unit.cards.clear();
    for (std::uint64_t at = unit.start;; at += kFitsBlock) {
        const std::string block = file.TextAt(at, kFitsBlock);
        if (block.size() < kFitsBlock)
            Fail("the file ends inside a header");
        if (at - unit.start > kMostHeaderBytes)
            Fail("has a header without an end");
        for (std::size_t card = 0; card < kFitsBlock; card += kCardCharacters) {
            unit.cards.push_back(block.substr(card, kCardCharacters));
            if (unit.cards.back().compare(0, 8, "END     ") == 0) {
                unit.data = at + kFitsBlock;
                return;
            }
        }
    }
}

// Where the unit's data end; what it is.
void TFitsReader::MeasureData()
{
    const std::uint64_t axes = Whole("NAXIS", kMostAxes);
    const std::string kind = CardText(unit.cards, "XTENSION").value_or("");
    const bool isPrimary = unit.start == 0;
    unit.isCompressed = kind == "BINTABLE" && CardText(unit.cards, "ZIMAGE") == std::string("T");
    unit.isImage = unit.isCompressed || ((isPrimary || kind == "IMAGE") && axes > 0);
    std::uint64_t bytes = axes == 0 ? 0 : 1;
    const bool isGroups = isPrimary && CardText(unit.cards, "GROUPS") == std::string("T");
    if (isGroups)
        Fail("holds random groups, not an image");
    const auto times = [&](std::uint64_t factor) {
        if (factor != 0 && bytes > file.Bytes() / factor)
            Fail("claims more data than the file holds");
        bytes *= factor;
    };
    for (std::uint64_t axis = 1; axis <= axes; ++axis)
        times(Axis("NAXIS", static_cast<int>(axis)));
    if (CardNumber(unit.cards, "PCOUNT"))
        bytes += Whole("PCOUNT", file.Bytes());
    const double bits = CardNumber(unit.cards, "BITPIX").value_or(0);
    if (bits != 8 && bits != 16 && bits != 32 && bits != 64 && bits != -32 && bits != -64)
        Fail("has an impossible BITPIX in its header");
    times(static_cast<std::uint64_t>(std::abs(bits)) / 8);
    if (CardNumber(unit.cards, "GCOUNT"))
        times(Whole("GCOUNT", file.Bytes()));
    unit.dataBytes = bytes;
    if (bytes > file.Bytes() - unit.data)
        Fail(unit.isImage ? "the file ends inside its pixels" : "the file ends inside an extension");
    unit.end = unit.data + WholeBlocks(bytes);
}

// The next header. False where none follows; what stands behind the last one may be anything.
bool TFitsReader::ReadUnit()
{
    const std::uint64_t start = unit.end;
    if (start > 0) {
        const std::string begins = file.TextAt(start, 9); // fewer where the file was cut
        if (begins.empty() || std::string("XTENSION=").compare(0, begins.size(), begins) != 0)
            return false;
    }
    unit = {};
    unit.start = start;
    ++page; // for failures: it would be that page
    ReadCards();
    MeasureData();
    --page;
    return true;
}

void TFitsReader::CheckImage()
{
    const std::string prefix = unit.isCompressed ? "Z" : "";
    const double bits = CardNumber(unit.cards, prefix + "BITPIX").value_or(0);
    if (bits != 16)
        Fail((bits < 0 ? "holds floating-point numbers of " + std::to_string(static_cast<int>(-bits))
                       : "holds integers of " + std::to_string(static_cast<int>(bits))) +
             " bits; integers of 16 bits are needed");
    const double zero = CardNumber(unit.cards, "BZERO").value_or(0);
    const double scale = CardNumber(unit.cards, "BSCALE").value_or(1);
    if (scale != 1 || (zero != 0 && zero != 32768))
        Fail("has scaled pixels (BZERO, BSCALE); unsigned or plain integers of 16 bits are needed");
    isUnsigned = zero != 0;
    const std::uint64_t axes = Whole(prefix + "NAXIS", kMostAxes);
    if (axes < 2)
        Fail("has " + Counted(axes, "dimension") + "; an image is needed");
    const std::string axis = prefix + "NAXIS";
    planes = 1;
    for (std::uint64_t number = 3; number <= axes; ++number) {
        const std::uint64_t length = Axis(axis.c_str(), static_cast<int>(number));
        if (length == 0 || planes > file.Bytes() / length)
            Fail("has an impossible number of planes");
        planes *= length;
    }
    plane = 1;
    SetSize(Axis(axis.c_str(), 1), Axis(axis.c_str(), 2),
            unit.isCompressed ? TFitsTiles::MostBytes(unit.dataBytes) : unit.dataBytes);
    if (unit.isCompressed) {
        tiles = std::make_unique<TFitsTiles>(unit.cards, unit.dataBytes);
        if (!tiles->Complaint().empty())
            Fail(tiles->Complaint());
    }
}

bool TFitsReader::NextPage()
{
    if (plane < planes) {
        ++plane;
        ++page;
        return true;
    }
    while (ReadUnit()) {
        if (unit.isImage) {
            ++page;
            CheckImage();
            return true;
        }
        if (unit.start == 0)
            primaryCards = unit.cards;
    }
    if (page == 0)
        Fail("is a FITS file without an image");
    return false;
}

void TFitsReader::Read(TImage& image)
{
    Prepare(image);
    if (unit.isCompressed) {
        const std::string failure = tiles->Read(file, unit.data, plane - 1, Size(), image.pixels.data());
        if (!failure.empty())
            Fail("its pixels cannot be read: " + failure);
        if (isUnsigned)
            std::transform(image.pixels.begin(), image.pixels.end(), image.pixels.begin(),
                           [](std::uint16_t pixel) { return static_cast<std::uint16_t>(pixel ^ 0x8000); });
    } else if (!file.ReadPixels(unit.data + (plane - 1) * Size().Pixels() * 2, image.pixels.data(), image.pixels.size(),
                                {true, static_cast<std::uint16_t>(isUnsigned ? 0x8000 : 0)})) {
        Fail("its pixels cannot be read: the file was cut or changed meanwhile");
    }
    if (!isUnsigned &&
        std::any_of(image.pixels.begin(), image.pixels.end(), [](std::uint16_t pixel) { return pixel > 32767; }))
        Fail("has negative pixels; unsigned ones are needed (BZERO = 32768)");
}

std::optional<TPlainPixels> TFitsReader::Plain()
{
    if (unit.isCompressed || !isUnsigned) // signed ones may be below 0
        return {};
    return TPlainPixels{file, unit.data + (plane - 1) * Size().Pixels() * 2, {true, 0x8000}};
}

TPageMetadata TFitsReader::Metadata()
{
    TPageMetadata metadata;
    for (const std::string& card : primaryCards) {
        const std::string keyword = card.substr(0, 8);
        const bool isThereToo = std::any_of(unit.cards.begin(), unit.cards.end(),
                                            [&](const std::string& own) { return own.compare(0, 8, keyword) == 0; });
        if (!isThereToo && !IsAboutTheFormat(card))
            metadata.cards.push_back(card);
    }
    metadata.cards.insert(metadata.cards.end(), unit.cards.begin(), unit.cards.end());
    metadata.cards = CardsThatHold(metadata.cards);
    TakeConditions(metadata.cards, metadata);
    if (planes > 1) {
        metadata.plane = static_cast<int>(std::min<std::uint64_t>(plane, 0x7fffffff));
        metadata.planes = static_cast<int>(std::min<std::uint64_t>(planes, 0x7fffffff));
    }
    return metadata;
}

} // namespace workbench
