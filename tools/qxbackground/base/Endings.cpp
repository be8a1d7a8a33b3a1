#include "base/Endings.h"

#include "base/TToolError.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace workbench {

void RefuseOtherEnding(const std::string& path, const std::vector<std::string>& ours, const std::string& what,
                       const std::string& remedy)
{
    static const char* const kKnown[] = {
        ".tif", ".tiff", ".fits", ".fit", ".fts",  ".fz",   ".png", ".pgm",  ".ppm", ".pnm", ".ser", ".jpg", ".jpeg",
        ".jp2", ".gif",  ".bmp",  ".svg", ".webp", ".heic", ".dng", ".cr2",  ".cr3", ".nef", ".arw", ".raw", ".xisf",
        ".avi", ".mp4",  ".pdf",  ".htm", ".html", ".csv",  ".txt", ".json", ".zip", ".gz",  ".qxb"};
    std::string ending = std::filesystem::path(path).extension().string();
    for (char& character : ending)
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    const bool isOurs = std::find(ours.begin(), ours.end(), ending) != ours.end();
    if (!isOurs && std::find(std::begin(kKnown), std::end(kKnown), ending) != std::end(kKnown))
        throw TToolError(path,
                         "ends in " + ending + ", and " + what + " is written; let it end in " + ours.front() + remedy);
}

void RefuseOtherEndingOfImage(const std::string& path)
{
    RefuseOtherEnding(path, {".tif", ".tiff", ".fits", ".fit", ".fts", ".fz", ".png"}, "a TIFF, FITS or PNG image",
                      ", .fits or .png, or say the format with --format");
}

bool HasEnding(const std::string& path)
{
    return std::filesystem::path(path).has_extension();
}

} // namespace workbench
