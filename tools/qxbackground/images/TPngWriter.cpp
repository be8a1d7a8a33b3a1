#include "images/TPngWriter.h"

#include "base/TToolError.h"
#include "images/ByteOrder.h"
#include "images/FitsCards.h"

#include <png.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <new>
#include <system_error>
#include <vector>

namespace workbench {

namespace {

png_text TextChunk(const char* keyword, std::string& text)
{
    png_text chunk{};
    const bool isAscii =
        std::all_of(text.begin(), text.end(), [](char byte) { return static_cast<unsigned char>(byte) < 128; });
    chunk.compression = isAscii ? PNG_TEXT_COMPRESSION_NONE : PNG_ITXT_COMPRESSION_NONE;
    chunk.key = const_cast<char*>(keyword); // libpng only reads it
    chunk.text = text.data();
    chunk.text_length = isAscii ? text.size() : 0;
    chunk.itxt_length = isAscii ? 0 : text.size();
    return chunk;
}

} // namespace

// libpng's encoder. It leaves its calls by longjmp, which no object with a destructor may stand in the way of: the
// calls are in a function that has none.
struct TPngWriter::TEncoder {
    explicit TEncoder(std::ofstream& target) : stream(target)
    {
        png = png_create_write_struct(PNG_LIBPNG_VER_STRING, this, &Complain, &Ignore);
        info = png == nullptr ? nullptr : png_create_info_struct(png);
        if (info == nullptr) {
            png_destroy_write_struct(&png, nullptr);
            throw std::bad_alloc();
        }
        png_set_write_fn(png, this, &Take, &Flush);
        // A colour profile that libpng doubts costs the profile, not the image.
        png_set_benign_errors(png, 1);
    }
    TEncoder(const TEncoder&) = delete;
    TEncoder& operator=(const TEncoder&) = delete;
    ~TEncoder() { png_destroy_write_struct(&png, &info); }

    bool Write(const TImage& image, const TPageMetadata& metadata, const std::vector<png_text>& texts);

    std::ofstream& stream;
    png_structp png = nullptr;
    png_infop info = nullptr;
    char complaint[256] = "";

private:
    void PutNotes(const TPageMetadata& metadata);

    [[noreturn]] static void Complain(png_structp png, png_const_charp message);
    static void Ignore(png_structp, png_const_charp) {}
    static void Take(png_structp png, png_bytep bytes, std::size_t count);
    static void Flush(png_structp) {}
};

void TPngWriter::TEncoder::Complain(png_structp png, png_const_charp message)
{
    auto* const encoder = static_cast<TEncoder*>(png_get_error_ptr(png));
    std::strncpy(encoder->complaint, message, sizeof encoder->complaint - 1);
    png_longjmp(png, 1);
}

void TPngWriter::TEncoder::Take(png_structp png, png_bytep bytes, std::size_t count)
{
    auto* const encoder = static_cast<TEncoder*>(png_get_io_ptr(png));
    encoder->stream.write(reinterpret_cast<const char*>(bytes), static_cast<std::streamsize>(count));
    if (!encoder->stream)
        png_error(png, "unknown error");
}

void TPngWriter::TEncoder::PutNotes(const TPageMetadata& metadata)
{
    if (metadata.resolution) {
        const double perMetre = metadata.resolution->unit == 2 ? 1 / 0.0254 : metadata.resolution->unit == 3 ? 100 : 1;
        const auto dots = [perMetre](double value) {
            return static_cast<png_uint_32>(std::lround(std::min(value * perMetre, 2e9)));
        };
        png_set_pHYs(png, info, dots(metadata.resolution->x), dots(metadata.resolution->y),
                     metadata.resolution->unit == 1 ? PNG_RESOLUTION_UNKNOWN : PNG_RESOLUTION_METER);
    }
    if (!metadata.iccProfile.empty())
        png_set_iCCP(png, info, "profile", PNG_COMPRESSION_TYPE_BASE, metadata.iccProfile.data(),
                     static_cast<png_uint_32>(metadata.iccProfile.size()));
    unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    if (std::sscanf(metadata.date.c_str(), "%4u:%2u:%2u %2u:%2u:%2u", &year, &month, &day, &hour, &minute, &second) ==
            6 &&
        month >= 1 && month <= 12 && day >= 1 && day <= 31 && hour < 24 && minute < 60 && second <= 60) {
        const auto small = [](unsigned value) { return static_cast<png_byte>(value); };
        const png_time time{
            static_cast<png_uint_16>(year), small(month), small(day), small(hour), small(minute), small(second)};
        png_set_tIME(png, info, &time);
    }
}

bool TPngWriter::TEncoder::Write(const TImage& image, const TPageMetadata& metadata, const std::vector<png_text>& texts)
{
    if (setjmp(png_jmpbuf(png)) != 0)
        return false;
    constexpr int kEffort = 4; // noise hardly gets smaller by more
    png_set_compression_level(png, kEffort);
    png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
    png_set_IHDR(png, info, static_cast<png_uint_32>(image.size.width), static_cast<png_uint_32>(image.size.height), 16,
                 PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    PutNotes(metadata);
    if (!texts.empty())
        png_set_text(png, info, texts.data(), static_cast<int>(texts.size()));
    png_write_info(png, info);
    if (!kHostIsBigEndian)
        png_set_swap(png);
    const auto width = static_cast<std::size_t>(image.size.width);
    for (std::size_t at = 0; at < image.pixels.size(); at += width)
        png_write_row(png, reinterpret_cast<png_const_bytep>(image.pixels.data() + at));
    png_write_end(png, info);
    return true;
}

TPngWriter::TPngWriter(const std::string& name, TExisting existing) : path(name), replaced(name, existing)
{
    stream.open(std::filesystem::path(replaced.Temporary()), std::ios::binary);
    if (!stream)
        throw TToolError(path, "cannot be created: " + replaced.Reason(std::generic_category().message(errno)));
}

void TPngWriter::Write(const TImage& image, const TPageMetadata& metadata)
{
    if (++page > 1)
        throw TToolError(path, kOneImage);
    struct {
        const char* keyword;
        std::string text;
    } known[] = {
        {"Title", metadata.documentName},  {"Author", metadata.artist},     {"Description", FullDescription(metadata)},
        {"Copyright", metadata.copyright}, {"Software", metadata.software}, {"Source", metadata.model}};
    std::vector<png_text> texts;
    for (auto& one : known) {
        if (!one.text.empty())
            texts.push_back(TextChunk(one.keyword, one.text));
    }
    TEncoder encoder(stream);
    if (!encoder.Write(image, metadata, texts))
        throw TToolError(path, page, "cannot be written: " + replaced.Reason(encoder.complaint));
}

void TPngWriter::Close()
{
    stream.close();
    if (!stream)
        throw TToolError(path, "cannot be written: " + replaced.Reason("unknown error"));
    replaced.Commit();
}

} // namespace workbench
