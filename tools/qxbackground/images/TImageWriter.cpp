#include "images/TImageWriter.h"

#include "base/TToolError.h"
#include "images/TFitsWriter.h"
#include "images/TPngWriter.h"
#include "images/TTiffWriter.h"

namespace workbench {

const char* const kOneImage = "a PNG holds one image, and there are more pages; TIFF and FITS hold any number";

void RequireRoom(const std::string& path, TImageFormat format, std::uint64_t pages)
{
    if (format == TImageFormat::Png && pages > 1)
        throw TToolError(path, kOneImage);
}

std::unique_ptr<TImageWriter> CreateImage(const std::string& path, TImageFormat format, const TOutputOptions& options,
                                          std::uint64_t expectedBytes, TExisting existing)
{
    if (format == TImageFormat::Png)
        return std::make_unique<TPngWriter>(path, existing);
    if (format == TImageFormat::Fits)
        return std::make_unique<TFitsWriter>(path, options.compress, existing);
    return std::make_unique<TTiffWriter>(path, options.compress, expectedBytes, existing);
}

} // namespace workbench
