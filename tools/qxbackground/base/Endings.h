#ifndef QXBACKGROUND_BASE_ENDINGS_H
#define QXBACKGROUND_BASE_ENDINGS_H

#include <string>
#include <vector>

namespace workbench {

// Of a file that is to be written: throws TToolError when its name ends as files of another kind do. Any other name is
// good, with or without an ending. `ours` are those that belong to it, the usual one first (".html"), `what` is "an
// HTML page", `remedy` what else helps, if anything.
void RefuseOtherEnding(const std::string& path, const std::vector<std::string>& ours, const std::string& what,
                       const std::string& remedy = {});
// For an image whose format --format does not say.
void RefuseOtherEndingOfImage(const std::string& path);

// Whether a name has an ending at all.
bool HasEnding(const std::string& path);

} // namespace workbench

#endif
