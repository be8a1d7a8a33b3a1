#include "images/TFitsTiles.h"

#include "images/FitsCards.h"

#include <fitsio.h>

#include <cstdlib>
#include <cstring>
#include <mutex>

namespace workbench {

namespace {

std::string StatusText(int status)
{
    char text[FLEN_STATUS] = "";
    fits_get_errstatus(status, text);
    fits_clear_errmsg();
    return text;
}

// For a cfitsio that was not built for several threads.
std::unique_lock<std::mutex> Alone()
{
    static std::mutex one;
    return fits_is_reentrant() != 0 ? std::unique_lock<std::mutex>() : std::unique_lock<std::mutex>(one);
}

// What a file has to begin with.
std::string EmptyPrimary()
{
    std::string header =
        Card("SIMPLE", "T", "") + Card("BITPIX", "8", "") + Card("NAXIS", "0", "") + Card("EXTEND", "T", "") + "END";
    header.resize(kFitsBlock, ' ');
    return header;
}

// Memory that grows with zeros, which a file does and realloc does not: before cfitsio writes a tile it looks whether
// there is one. What was asked for stands in front of it.
constexpr std::size_t kInFront = 16;

void ReleaseZeroed(void* memory)
{
    if (memory != nullptr)
        std::free(static_cast<char*>(memory) - kInFront);
}

void* GrowZeroed(void* old, std::size_t size)
{
    std::size_t before = 0;
    char* const oldStart = old == nullptr ? nullptr : static_cast<char*>(old) - kInFront;
    if (oldStart != nullptr)
        std::memcpy(&before, oldStart, sizeof before);
    char* const start = static_cast<char*>(std::realloc(oldStart, size + kInFront));
    if (start == nullptr)
        return nullptr;
    std::memcpy(start, &size, sizeof size);
    if (size > before)
        std::memset(start + kInFront + before, 0, size - before);
    return start + kInFront;
}

} // namespace

// A file in memory, which may be cfitsio's own to grow.
struct TCfitsioFile {
    TCfitsioFile() = default;
    TCfitsioFile(const TCfitsioFile&) = delete;
    TCfitsioFile& operator=(const TCfitsioFile&) = delete;
    ~TCfitsioFile()
    {
        Close();
        if (grows)
            ReleaseZeroed(memory);
    }
    void Close()
    {
        int ignored = 0;
        if (handle != nullptr)
            fits_close_file(handle, &ignored);
        handle = nullptr;
        fits_clear_errmsg();
    }

    fitsfile* handle = nullptr;
    std::string bytes; // what is read
    void* memory = nullptr;
    std::size_t size = 0;
    bool grows = false;
    int status = 0;
};

TFitsTiles::TFitsTiles(const std::string& unit) : file(std::make_unique<TCfitsioFile>())
{
    const auto alone = Alone();
    file->bytes = EmptyPrimary() + unit;
    file->bytes.resize((file->bytes.size() + kFitsBlock - 1) / kFitsBlock * kFitsBlock, '\0');
    file->memory = file->bytes.data();
    file->size = file->bytes.size();
    fits_open_memfile(&file->handle, "tiles", READONLY, &file->memory, &file->size, 0, nullptr, &file->status);
    fits_movabs_hdu(file->handle, 2, nullptr, &file->status);
}

TFitsTiles::~TFitsTiles()
{
    const auto alone = Alone();
    file.reset();
}

std::string TFitsTiles::Read(std::uint64_t first, std::uint16_t* pixels, std::size_t count)
{
    const auto alone = Alone();
    int any = 0;
    fits_read_img(file->handle, TUSHORT, static_cast<LONGLONG>(first) + 1, static_cast<LONGLONG>(count), nullptr,
                  pixels, &any, &file->status);
    if (file->status == NUM_OVERFLOW)
        return "there are negative ones; unsigned ones are needed (BZERO = 32768)";
    return file->status == 0 ? std::string() : StatusText(file->status);
}

std::string TFitsTiles::Complaint(const std::vector<std::string>& cards)
{
    const std::string kind = CardText(cards, "ZCMPTYPE").value_or("");
    if (kind != "RICE_1" && kind != "RICE_ONE" && kind != "GZIP_1" && kind != "GZIP_2")
        return "is compressed by " + (kind.empty() ? "no named method" : "'" + kind + "'") +
               ", which is not read here; funpack makes a plain FITS file of it";
    // A row of the table for each tile: held against each other, because cfitsio takes it on trust.
    const double axes = CardNumber(cards, "ZNAXIS").value_or(0);
    double tiles = 1, tilePixels = 1;
    for (int axis = 1; axis <= axes; ++axis) {
        const double length = CardNumber(cards, "ZNAXIS" + std::to_string(axis)).value_or(0);
        const double tile = CardNumber(cards, "ZTILE" + std::to_string(axis)).value_or(axis == 1 ? length : 1);
        if (tile < 1 || tile > length)
            return "has tiles of an impossible size";
        tiles *= static_cast<double>((static_cast<std::uint64_t>(length) + static_cast<std::uint64_t>(tile) - 1) /
                                     static_cast<std::uint64_t>(tile));
        tilePixels *= tile;
    }
    if (CardNumber(cards, "NAXIS2") != tiles || tilePixels > 2147483647.0)
        return "has another number of tiles than its size asks for";
    return {};
}

std::uint64_t TFitsTiles::MostBytes(std::uint64_t compressed)
{
    constexpr std::uint64_t kMostByDeflate = 1032;
    return compressed * kMostByDeflate;
}

std::string TFitsTiles::Compress(const TImage& image, const std::vector<std::string>& cards, std::string& complaint)
{
    const auto alone = Alone();
    TCfitsioFile made;
    made.grows = true;
    int& status = made.status;
    fits_create_memfile(&made.handle, &made.memory, &made.size, 1 << 20, GrowZeroed, &status);
    long axes[] = {image.size.width, image.size.height};
    fits_set_compression_type(made.handle, RICE_1, &status);
    fits_create_img(made.handle, USHORT_IMG, 2, axes, &status);
    for (const std::string& card : cards)
        fits_write_record(made.handle, card.c_str(), &status);
    fits_write_img(made.handle, TUSHORT, 1, static_cast<LONGLONG>(image.pixels.size()),
                   const_cast<std::uint16_t*>(image.pixels.data()), &status);
    fits_flush_file(made.handle, &status);
    LONGLONG header = 0, data = 0, end = 0;
    fits_get_hduaddrll(made.handle, &header, &data, &end, &status);
    if (status != 0) {
        complaint = StatusText(status);
        return {};
    }
    return std::string(static_cast<const char*>(made.memory) + header, static_cast<std::size_t>(end - header));
}

} // namespace workbench
