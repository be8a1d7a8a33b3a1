#ifndef QXBACKGROUND_BASE_SHA256BLOCKS_H
#define QXBACKGROUND_BASE_SHA256BLOCKS_H

#include <cstddef>
#include <cstdint>

namespace workbench {

// Takes `count` blocks of 64 bytes into the eight words of a SHA-256.
using TSha256Blocks = void (*)(std::uint32_t* state, const unsigned char* blocks, std::size_t count);

extern const std::uint32_t kSha256Constants[64];

// The definition.
void PlainSha256Blocks(std::uint32_t* state, const unsigned char* blocks, std::size_t count);

// The same by the processor's own instructions, some five times as fast; null where it has none.
TSha256Blocks Sha256BlocksOfProcessor();

// Two messages at once. The instructions wait for one another's results, and do the second message meanwhile.
using TSha256PairBlocks = void (*)(std::uint32_t* state, const unsigned char* blocks, std::uint32_t* otherState,
                                   const unsigned char* otherBlocks, std::size_t count);
TSha256PairBlocks Sha256PairBlocksOfProcessor(); // null where it has none

} // namespace workbench

#endif
