#ifndef QXBACKGROUND_IMAGES_RICECODE_H
#define QXBACKGROUND_IMAGES_RICECODE_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace workbench {

// The code of FITS's RICE_1 for integers of 16 bits: differences of neighbours in blocks, each block with its own
// number of bits that are stored as they are, what is above them counted out in zeros.

constexpr std::size_t kRiceBlock = 32; // pixels

// Appends the code of `count` pixels.
void RiceEncode(const std::uint16_t* pixels, std::size_t count, std::vector<std::uint8_t>& code);

// False where the code ends before the pixels, or holds none that may stand there.
bool RiceDecode(const std::uint8_t* code, std::size_t codeBytes, std::size_t blockPixels, std::uint16_t* pixels,
                std::size_t count);

} // namespace workbench

#endif
