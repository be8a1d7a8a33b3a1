#ifndef QXBACKGROUND_IMAGES_TINPUTFILE_H
#define QXBACKGROUND_IMAGES_TINPUTFILE_H

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>

namespace workbench {

// How the 16 bits of a pixel lie in a file.
struct TPixelLayout {
    bool bigEndian = false;
    std::uint16_t flip = 0; // bits that are turned over: the highest one where unsigned values are stored as signed
};

// Turns pixels as they lie in a file into pixels as this machine has them.
void AsHost(std::uint16_t* pixels, std::size_t count, const TPixelLayout& layout);

// A regular file whose bytes are read at given places. Reading large pieces is one call of the system each, straight
// into the caller's memory.
class TInputFile {
public:
    // Throws TToolError when there is no such file, or none that can be read at any place.
    explicit TInputFile(const std::string& path);

    std::uint64_t Bytes() const { return bytes; }
    // False when the file is shorter, or cannot be read.
    bool ReadAt(std::uint64_t offset, void* target, std::size_t count);
    // What there is of `count` bytes.
    std::string TextAt(std::uint64_t offset, std::size_t count);
    // Pixels without gaps, as this machine has them.
    bool ReadPixels(std::uint64_t offset, std::uint16_t* target, std::size_t count, const TPixelLayout& layout);

private:
    std::ifstream stream;
    std::uint64_t bytes = 0;
};

// Pixels that lie in a file as in memory, row behind row without gaps.
struct TPlainPixels {
    TInputFile& file;
    std::uint64_t offset;
    TPixelLayout layout;
};

} // namespace workbench

#endif
