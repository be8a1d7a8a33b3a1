#include "pictures/TPicture.h"

#include "base/TToolError.h"

#include <png.h>

#include <filesystem>
#include <fstream>
#include <vector>

namespace workbench {

void WritePng(const std::string& path, const TPicture& picture, TExisting existing)
{
    TReplacedFile replaced(path, existing);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_GRAY;
    // By way of memory: libpng opens files by narrow names, which do not spell every name on every system.
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    std::vector<char> bytes(size);
    if (png_image_write_to_memory(&image, bytes.data(), &size, 0, picture.pixels.data(), 0, nullptr) == 0)
        throw TToolError(path, std::string("cannot be written: ") + image.message);
    std::ofstream file(std::filesystem::path(replaced.Temporary()), std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(size));
    file.close();
    if (!file)
        throw TToolError(path, "cannot be written: " + replaced.Reason("unknown error"));
    replaced.Commit();
}

} // namespace workbench
