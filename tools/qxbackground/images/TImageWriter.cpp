#include "images/TImageWriter.h"

#include "images/TTiffWriter.h"

namespace workbench {

std::unique_ptr<TImageWriter> CreateImage(const std::string& path, TImageFormat format, const TOutputOptions& options,
                                          std::uint64_t expectedBytes, TExisting existing)
{
    static_cast<void>(format);
    static_cast<void>(options);
    return std::make_unique<TTiffWriter>(path, expectedBytes, existing);
}

} // namespace workbench
