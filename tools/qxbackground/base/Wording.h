#ifndef QXBACKGROUND_BASE_WORDING_H
#define QXBACKGROUND_BASE_WORDING_H

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

// "1 correction", "2 corrections".
std::string Counted(std::uint64_t count, const std::string& noun);

// A text with everything that is not printable shown as '?'.
std::string Printable(std::string text);

// Whether a text holds characters that cannot be seen: tabs, line feeds, what terminals take for commands.
bool HasControlCharacter(const std::string& text);

// A text without what is easily mistyped: blanks, and the case of letters.
std::string WithoutSlips(const std::string& text);

// The one of `names` that `word` was probably meant to be, or nothing when none is near.
std::string Nearest(const std::string& word, const std::vector<std::string>& names);

} // namespace workbench

#endif
