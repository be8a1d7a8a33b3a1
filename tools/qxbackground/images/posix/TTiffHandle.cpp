#include "images/TTiffHandle.h"

namespace workbench {

TIFF* OpenTiff(const std::filesystem::path& path, const char* mode, TIFFOpenOptions* options)
{
    return TIFFOpenExt(path.c_str(), mode, options);
}

} // namespace workbench
