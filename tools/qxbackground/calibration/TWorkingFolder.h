#ifndef QXBACKGROUND_CALIBRATION_TWORKINGFOLDER_H
#define QXBACKGROUND_CALIBRATION_TWORKINGFOLDER_H

#include <filesystem>

namespace workbench {

// The process works in `folder` while this object lives. The library lists a store's folder from the text before its
// base name; a bare base name means the current folder, whatever characters the folder's own path holds.
class TWorkingFolder {
public:
    explicit TWorkingFolder(const std::filesystem::path& folder);
    ~TWorkingFolder();
    TWorkingFolder(const TWorkingFolder&) = delete;
    TWorkingFolder& operator=(const TWorkingFolder&) = delete;

private:
    std::filesystem::path old;
};

} // namespace workbench

#endif
