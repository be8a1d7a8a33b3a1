// What the literal model makes of a load, in the words that the library's side of a comparison has as well.
#ifndef TESTS_FILE_LITERALLOAD_H
#define TESTS_FILE_LITERALLOAD_H

#include "file/FileBytes.h"
#include "file/LoadOutcome.h"
#include "model/LiteralProcessor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The model's processor that holds these corrections, with nothing else done to it.
Literal::TProcessor LiteralProcessorWith(const std::vector<TStoredCorrection>& corrections);

// What a load of a file with these bytes leaves behind. `before` is the state of the processor that loads it. Nothing
// when the model is not willing to read for so long.
std::optional<TLoadOutcome> LoadLiterally(const FileBytes::TBytes& bytes, const std::string& path, TLoadKind kind,
                                          const TLoadOutcome& before, const Literal::TReadFaults& faults = {},
                                          std::int64_t mostAttempts = Literal::kMostAttempts);

#endif
