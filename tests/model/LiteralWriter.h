// The calibration file as it is written. Shares no code with the library.
#ifndef TESTS_MODEL_LITERALWRITER_H
#define TESTS_MODEL_LITERALWRITER_H

#include "model/LiteralReader.h"

namespace Literal {

// The file that holds these corrections: structure version 2 with grouping names, 1 without. False when it breaks off,
// since an entry has no pixels.
bool Written(const TProcessor& processor, const std::optional<TTexts>& groupingNames, TBytes& bytes);

} // namespace Literal

#endif
