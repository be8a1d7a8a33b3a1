#include "images/TPngReader.h"

#include "base/Wording.h"
#include "images/ByteOrder.h"
#include "images/FitsCards.h"
#include "images/TInputFile.h"

#include <fmt/format.h>
#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstring>
#include <new>

namespace workbench {

// libpng's decoder. It leaves its calls by longjmp, which no object with a destructor may stand in the way of: the
// calls are in functions that have none.
struct TPngReader::TDecoder {
    explicit TDecoder(const std::string& path) : file(path)
    {
        png = png_create_read_struct(PNG_LIBPNG_VER_STRING, this, &Complain, &Ignore);
        info = png == nullptr ? nullptr : png_create_info_struct(png);
        if (info == nullptr) {
            png_destroy_read_struct(&png, nullptr, nullptr);
            throw std::bad_alloc();
        }
        png_set_read_fn(png, this, &Give);
    }
    TDecoder(const TDecoder&) = delete;
    TDecoder& operator=(const TDecoder&) = delete;
    ~TDecoder() { png_destroy_read_struct(&png, &info, nullptr); }

    bool ChunksAreThere();
    bool ReadHeader();
    bool ReadRows(std::uint16_t* pixels, std::size_t width, std::size_t height);

    TInputFile file;
    std::uint64_t at = 0;
    png_structp png = nullptr;
    png_infop info = nullptr;
    char complaint[256] = "";

private:
    [[noreturn]] static void Complain(png_structp png, png_const_charp message);
    static void Ignore(png_structp, png_const_charp) {}
    static void Give(png_structp png, png_bytep target, std::size_t count);
};

void TPngReader::TDecoder::Complain(png_structp png, png_const_charp message)
{
    auto* const decoder = static_cast<TDecoder*>(png_get_error_ptr(png));
    std::strncpy(decoder->complaint, message, sizeof decoder->complaint - 1);
    png_longjmp(png, 1);
}

void TPngReader::TDecoder::Give(png_structp png, png_bytep target, std::size_t count)
{
    auto* const decoder = static_cast<TDecoder*>(png_get_io_ptr(png));
    const bool read = decoder->file.ReadAt(decoder->at, target, count);
    decoder->at += count;
    if (!read)
        png_error(png, "the file ends too early");
}

bool TPngReader::TDecoder::ReadHeader()
{
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    // The size is held against the length of the file; this one is libpng's own, of a million.
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    // A damaged note beside the image costs the note, damaged pixels are refused.
    png_set_crc_action(png, PNG_CRC_ERROR_QUIT, PNG_CRC_WARN_DISCARD);
    png_read_info(png, info);
    return true;
}

bool TPngReader::TDecoder::ReadRows(std::uint16_t* pixels, std::size_t width, std::size_t height)
{
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    if (!kHostIsBigEndian)
        png_set_swap(png);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    for (int pass = 0; pass < passes; ++pass) {
        for (std::size_t row = 0; row < height; ++row)
            png_read_row(png, reinterpret_cast<png_bytep>(pixels + row * width), nullptr);
    }
    png_read_end(png, info); // texts may stand behind the pixels
    return true;
}

TPngReader::TPngReader(const std::string& name) : TImageReader(name, TImageFormat::Png), file(name)
{
    Start();
}

TPngReader::~TPngReader() = default;

// libpng takes memory for all that a chunk claims before it looks whether it is there.
bool TPngReader::TDecoder::ChunksAreThere()
{
    constexpr std::uint64_t kSignature = 8, kAround = 12; // length and type before a chunk's data, a sum behind
    for (std::uint64_t start = kSignature; start + kAround <= file.Bytes();) {
        const std::string head = file.TextAt(start, 8);
        std::uint64_t length = 0;
        for (std::size_t byte = 0; byte < 4 && head.size() == 8; ++byte)
            length = length << 8 | static_cast<unsigned char>(head[byte]);
        if (length > file.Bytes() - start - kAround)
            return false;
        if (head.compare(4, 4, "IEND") == 0)
            return true;
        start += kAround + length;
    }
    return false;
}

void TPngReader::Start()
{
    decoder = std::make_unique<TDecoder>(file);
    if (!decoder->ChunksAreThere())
        Fail("is not a readable PNG file: it is cut or damaged");
    if (!decoder->ReadHeader())
        Fail(std::string("is not a readable PNG file: ") + decoder->complaint);
}

bool TPngReader::NextPage()
{
    if (page == 1)
        return false;
    page = 1;
    const int bits = png_get_bit_depth(decoder->png, decoder->info);
    const int color = png_get_color_type(decoder->png, decoder->info);
    if (color != PNG_COLOR_TYPE_GRAY)
        Fail(std::string("is ") +
             (color == PNG_COLOR_TYPE_GRAY_ALPHA ? "grayscale with transparency" : "a colour image") +
             "; 16-bit grayscale is needed");
    if (bits != 16)
        Fail("has " + std::to_string(bits) + " bits per pixel; 16-bit grayscale is needed");
    constexpr std::uint64_t kMostInDeflate = 1032;
    SetSize(png_get_image_width(decoder->png, decoder->info), png_get_image_height(decoder->png, decoder->info),
            decoder->file.Bytes() * kMostInDeflate);
    return true;
}

void TPngReader::Read(TImage& image)
{
    if (used)
        Start();
    used = true;
    Prepare(image);
    if (!decoder->ReadRows(image.pixels.data(), static_cast<std::size_t>(Size().width),
                           static_cast<std::size_t>(Size().height)))
        Fail(std::string("its pixels cannot be read: ") + decoder->complaint);
}

TPageMetadata TPngReader::Metadata()
{
    png_structp const png = decoder->png;
    png_infop const info = decoder->info;
    TPageMetadata metadata;
    png_textp texts = nullptr;
    const int count = png_get_text(png, info, &texts, nullptr);
    for (int index = 0; index < count; ++index) {
        const struct {
            const char* keyword;
            std::string& place;
        } known[] = {{"Description", metadata.description},
                     {"Comment", metadata.description},
                     {"Title", metadata.documentName},
                     {"Software", metadata.software},
                     {"Author", metadata.artist},
                     {"Copyright", metadata.copyright},
                     {"Source", metadata.model}};
        for (const auto& one : known) {
            if (std::strcmp(texts[index].key, one.keyword) == 0 && texts[index].text != nullptr && one.place.empty())
                one.place = texts[index].text;
        }
    }
    TakeConditions(CardsIn(metadata.description), metadata);
    png_uint_32 x = 0, y = 0;
    int unit = 0;
    if (png_get_pHYs(png, info, &x, &y, &unit) != 0 && unit == PNG_RESOLUTION_METER && x > 0 && y > 0)
        metadata.resolution = TPageMetadata::TResolution{x / 100.0, y / 100.0, 3};
    png_timep time = nullptr;
    if (png_get_tIME(png, info, &time) != 0)
        metadata.date = fmt::format("{:04}:{:02}:{:02} {:02}:{:02}:{:02}", time->year, time->month, time->day,
                                    time->hour, time->minute, time->second);
    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 length = 0;
    if (png_get_iCCP(png, info, &name, &compression, &profile, &length) != 0)
        metadata.iccProfile.assign(profile, profile + length);
    png_color_8p bits = nullptr;
    if (png_get_sBIT(png, info, &bits) != 0) {
        metadata.significantBits = bits->gray;
        metadata.cameraBits = bits->gray;
    }
    return metadata;
}

} // namespace workbench
