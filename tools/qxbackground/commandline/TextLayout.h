#ifndef QXBACKGROUND_COMMANDLINE_TEXTLAYOUT_H
#define QXBACKGROUND_COMMANDLINE_TEXTLAYOUT_H

#include <cstddef>
#include <string>
#include <vector>

namespace workbench {

// What help is wrapped at, on a terminal of any width: lines of this length are easily read.
constexpr std::size_t kHelpColumns = 80;

// The pieces, with blanks between them, in lines of at most kHelpColumns. The first line goes on behind `first`, the
// others are indented; each but the last ends in `lineEnd`. No piece is broken.
std::string WrappedPieces(const std::string& first, const std::vector<std::string>& pieces, std::size_t indent,
                          const std::string& lineEnd = {});

// A text, all its lines indented, with a line feed at the end. A line of it that begins with two blanks stays as it is;
// others are wrapped.
std::string WrappedText(const std::string& text, std::size_t indent);
// With the first line behind `first`, which is as wide as the indentation, or has a line of its own.
std::string WrappedText(const std::string& first, const std::string& text, std::size_t indent);

// A command, as it can be pasted into a shell: lines are continued by a backslash, where an option begins if that can
// be.
std::string WrappedCommand(const std::string& command, std::size_t indent);

} // namespace workbench

#endif
