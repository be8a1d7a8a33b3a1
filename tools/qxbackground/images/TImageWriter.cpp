#include "images/TImageWriter.h"

#include "images/TFitsWriter.h"
#include "images/TTiffWriter.h"

namespace workbench {

std::unique_ptr<TImageWriter> CreateImage(const std::string& path, TImageFormat format, const TOutputOptions& options,
                                          std::uint64_t expectedBytes, TExisting existing)
{
    if (format == TImageFormat::Fits)
        return std::make_unique<TFitsWriter>(path, options.compress, existing);
    return std::make_unique<TTiffWriter>(path, options.compress, expectedBytes, existing);
}

} // namespace workbench
