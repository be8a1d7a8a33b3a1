#ifndef QXBACKGROUND_IMAGES_TTIFFHANDLE_H
#define QXBACKGROUND_IMAGES_TTIFFHANDLE_H

#include <tiffio.h>

#include <filesystem>
#include <string>

namespace workbench {

// As libtiff's TIFFOpenExt, by the system's own kind of name.
TIFF* OpenTiff(const std::filesystem::path& path, const char* mode, TIFFOpenOptions* options);

// libtiff's file, with the first message since `complaint` was last cleared.
struct TTiffHandle {
    TIFF* tiff = nullptr;
    std::string complaint;

    TTiffHandle() = default;
    TTiffHandle(const TTiffHandle&) = delete;
    TTiffHandle& operator=(const TTiffHandle&) = delete;
    ~TTiffHandle()
    {
        if (tiff != nullptr)
            TIFFClose(tiff);
    }

    void Open(const std::filesystem::path& path, const char* mode);
};

} // namespace workbench

#endif
