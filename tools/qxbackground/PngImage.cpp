#include "PngImage.h"

#include "ReplacedFile.h"
#include "ToolError.h"

#include <png.h>

namespace workbench {

void WritePng(const std::string& path, const TPicture& picture)
{
    TReplacedFile replaced(path);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_GRAY;
    const std::string temporary = replaced.Temporary().string();
    if (png_image_write_to_file(&image, temporary.c_str(), 0, picture.pixels.data(), 0, nullptr) == 0)
        throw TToolError(path, std::string("cannot be written: ") + image.message);
    replaced.Commit();
}

} // namespace workbench
