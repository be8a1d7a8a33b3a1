#include "images/TPicture.h"

#include "base/TToolError.h"

#include <png.h>

namespace workbench {

void WritePng(const std::string& path, const TPicture& picture, TExisting existing)
{
    TReplacedFile replaced(path, existing);
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(picture.width);
    image.height = static_cast<png_uint_32>(picture.height);
    image.format = PNG_FORMAT_GRAY;
    if (png_image_write_to_file(&image, replaced.Temporary().c_str(), 0, picture.pixels.data(), 0, nullptr) == 0)
        throw TToolError(path, "cannot be written: " + replaced.Reason(image.message));
    replaced.Commit();
}

} // namespace workbench
