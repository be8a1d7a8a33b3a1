#include "images/TInputFile.h"

#include "base/TToolError.h"
#include "images/ByteOrder.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

namespace workbench {

void AsHost(std::uint16_t* pixels, std::size_t count, const TPixelLayout& layout)
{
    if (layout.bigEndian != kHostIsBigEndian)
        CopySwapped(pixels, pixels, count, layout.flip);
    else if (layout.flip != 0)
        std::transform(pixels, pixels + count, pixels,
                       [&layout](std::uint16_t pixel) { return static_cast<std::uint16_t>(pixel ^ layout.flip); });
}

TInputFile::TInputFile(const std::string& path)
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status))
        throw TToolError(path,
                         "cannot be opened: " + (error ? error.message() : std::generic_category().message(ENOENT)));
    if (!std::filesystem::is_regular_file(status))
        throw TToolError(path, "is not a regular file");
    stream.rdbuf()->pubsetbuf(nullptr, 0);
    errno = 0;
    stream.open(std::filesystem::path(path), std::ios::binary);
    if (!stream)
        throw TToolError(path, "cannot be opened: " + std::generic_category().message(errno));
    bytes = std::filesystem::file_size(path, error);
    if (error)
        throw TToolError(path, "cannot be opened: " + error.message());
}

bool TInputFile::ReadAt(std::uint64_t offset, void* target, std::size_t count)
{
    if (offset > bytes || count > bytes - offset)
        return false;
    stream.clear();
    stream.seekg(static_cast<std::streamoff>(offset));
    stream.read(static_cast<char*>(target), static_cast<std::streamsize>(count));
    return static_cast<bool>(stream);
}

std::string TInputFile::TextAt(std::uint64_t offset, std::size_t count)
{
    std::string text(offset < bytes ? static_cast<std::size_t>(std::min<std::uint64_t>(count, bytes - offset)) : 0,
                     '\0');
    if (!ReadAt(offset, text.data(), text.size()))
        text.clear();
    return text;
}

bool TInputFile::ReadPixels(std::uint64_t offset, std::uint16_t* target, std::size_t count, const TPixelLayout& layout)
{
    if (offset > bytes || count > (bytes - offset) / 2)
        return false;
    if (layout.bigEndian == kHostIsBigEndian && layout.flip == 0)
        return ReadAt(offset, target, count * 2);
    // In pieces that stay in the processor's cache until they are converted.
    constexpr std::size_t kPiece = 1 << 17;
    for (std::size_t done = 0; done < count; done += kPiece) {
        const std::size_t pixels = std::min(kPiece, count - done);
        if (!ReadAt(offset + done * 2, target + done, pixels * 2))
            return false;
        AsHost(target + done, pixels, layout);
    }
    return true;
}

} // namespace workbench
