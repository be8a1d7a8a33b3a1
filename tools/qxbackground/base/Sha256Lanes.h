#ifndef QXBACKGROUND_BASE_SHA256LANES_H
#define QXBACKGROUND_BASE_SHA256LANES_H

#include <cstddef>
#include <cstdint>

namespace workbench {

// SHA-256 of so many messages side by side, a word of each in every register: faster still than in pairs. The plain
// arithmetic, not the processor's own instructions for it.
constexpr std::size_t kSha256Lanes = 16;
using TSha256LaneBlocks = void (*)(std::uint32_t* const* states, const unsigned char* const* blocks, std::size_t count);
TSha256LaneBlocks Sha256LaneBlocksOfProcessor(); // null where it has none that are wide enough

} // namespace workbench

#endif
