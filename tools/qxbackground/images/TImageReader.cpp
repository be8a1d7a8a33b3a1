#include "images/TImageReader.h"

#include "base/TToolError.h"
#include "images/TTiffReader.h"

#include <limits>
#include <new>

namespace workbench {

void TImageReader::Fail(const std::string& what) const
{
    if (page == 0)
        throw TToolError(path, what);
    throw TToolError(path, page, what);
}

void TImageReader::SetSize(std::uint64_t width, std::uint64_t height, std::uint64_t mostBytes)
{
    // Image lengths cross the library's interface as int.
    constexpr std::uint64_t kMost = std::numeric_limits<int>::max();
    if (width == 0 || height == 0 || width > kMost || height > kMost || width * height > kMost)
        Fail("has an impossible size of " + std::to_string(width) + " x " + std::to_string(height));
    if (width * height * 2 > mostBytes)
        Fail("claims more pixels than the file holds");
    size = {static_cast<int>(width), static_cast<int>(height)};
}

void TImageReader::Prepare(TImage& image) const
{
    try {
        image.size = size;
        image.pixels.resize(size.Pixels());
    } catch (const std::bad_alloc&) {
        Fail("there is not enough memory for " + size.Text() + " pixels");
    }
}

std::unique_ptr<TImageReader> OpenImage(const std::string& path, const TInputOptions& options)
{
    static_cast<void>(options);
    return std::make_unique<TTiffReader>(path);
}

} // namespace workbench
