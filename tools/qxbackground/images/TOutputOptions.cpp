#include "images/TOutputOptions.h"

#include <cctype>
#include <initializer_list>

namespace workbench {

namespace {

bool EndsIn(const std::string& path, std::initializer_list<const char*> endings)
{
    std::string lower = path;
    for (char& character : lower)
        character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
    for (const std::string ending : endings) {
        if (lower.size() > ending.size() && lower.compare(lower.size() - ending.size(), ending.size(), ending) == 0)
            return true;
    }
    return false;
}

} // namespace

TImageFormat TOutputOptions::FormatFor(const std::string& path, TImageFormat input) const
{
    if (format)
        return *format;
    if (EndsIn(path, {".fits", ".fit", ".fts", ".fz"}))
        return TImageFormat::Fits;
    if (EndsIn(path, {".tif", ".tiff"}))
        return TImageFormat::Tiff;
    if (EndsIn(path, {".png"}))
        return TImageFormat::Png;
    return input == TImageFormat::Fits ? TImageFormat::Fits : TImageFormat::Tiff;
}

} // namespace workbench
