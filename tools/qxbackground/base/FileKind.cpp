#include "base/FileKind.h"

#include "file/CalibrationFormat.h"

#include <filesystem>
#include <fstream>

namespace workbench {

std::string FileKind(const std::string& path)
{
    static const struct {
        std::string start;
        const char* kind;
    } kKinds[] = {
        {"SIMPLE  =", "a FITS image"},
        {"\x89PNG\r\n\x1a\n", "a PNG image"},
        {"\xff\xd8\xff", "a JPEG image"},
        {"GIF8", "a GIF image"},
        {"BM", "a BMP image"},
        {std::string("II*\0", 4), "a TIFF image"},
        {std::string("MM\0*", 4), "a TIFF image"},
        {std::string("II+\0", 4), "a TIFF image"},
        {std::string("MM\0+", 4), "a TIFF image"},
        {"PK\x03\x04", "a ZIP archive"},
        {"\x1f\x8b", "a gzip archive"},
        {std::string(CalibrationFormat::kSignature, CalibrationFormat::kSignatureLength), "a calibration file"},
    };
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    std::string bytes(32, '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    if (file.eof() && bytes.empty())
        return "empty";
    if (bytes.size() < CalibrationFormat::kSignatureLength &&
        std::string(CalibrationFormat::kSignature).find(bytes) == 0)
        return "a calibration file"; // cut very short
    for (const auto& known : kKinds) {
        if (bytes.compare(0, known.start.size(), known.start) == 0)
            return known.kind;
    }
    return {};
}

} // namespace workbench
