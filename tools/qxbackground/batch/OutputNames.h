#ifndef QXBACKGROUND_BATCH_OUTPUTNAMES_H
#define QXBACKGROUND_BATCH_OUTPUTNAMES_H

#include "images/TInputOptions.h"
#include "images/TOutputOptions.h"

#include <string>
#include <vector>

namespace workbench {

// How the outputs of many inputs are called: {stem} and {ext} of the input's name, its {number} in the order of the
// inputs, from 1, with as many digits as the last one has.
extern const char* const kNamesKept;

// Whether an output is meant to be a folder: it is one, or is written with a separator at its end.
bool IsFolderName(const std::string& output);

// One path in `folder` for each input. {ext} is the input's own where the output gets that format, otherwise .tif,
// .fits or .png. Throws TToolError when the pattern makes no sense, or two inputs would get the same output.
std::vector<std::string> OutputNames(const std::vector<std::string>& inputs, const std::string& folder,
                                     const std::string& pattern, const TInputOptions& inputOptions,
                                     const TOutputOptions& outputOptions);

} // namespace workbench

#endif
