#ifndef QXBACKGROUND_STACKS_VALUESTEP_H
#define QXBACKGROUND_STACKS_VALUESTEP_H

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

// In which steps the values of a frame come, by some of its pixels: 4, 16 or 64 where 14, 12 or 10 bits stand in the
// high ones of 16; 1 where all 16 are in use, or the low ones; 0 where these pixels do not tell.
unsigned ValueStep(const std::vector<std::uint16_t>& sample);

// For people: "in steps of 16, as of 12 bits in the high ones of 16".
std::string ValueStepText(unsigned step);

} // namespace workbench

#endif
