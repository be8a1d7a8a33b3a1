#ifndef QXBACKGROUND_VERBS_CORRECTIONPICTURE_H
#define QXBACKGROUND_VERBS_CORRECTIONPICTURE_H

#include "base/TReplacedFile.h"
#include "images/TImage.h"

#include <string>
#include <vector>

namespace workbench {

// Writes what a correction did to one page: before; after, on a scale of the same range; the background; and once more
// after, on a scale that shows what is left. What is returned says so in words, line by line. Throws TToolError.
std::vector<std::string> WriteCorrectionPicture(const std::string& path, const TImage& before, const TImage& background,
                                                const TImage& after, TExisting existing);

// One image, such as a stored correction. Throws TToolError.
std::vector<std::string> WritePicture(const std::string& path, const std::string& title, const TImage& image,
                                      TExisting existing);

// The lines that either gave, the first behind `what`.
void PrintPicture(const std::string& what, const std::vector<std::string>& lines);

} // namespace workbench

#endif
