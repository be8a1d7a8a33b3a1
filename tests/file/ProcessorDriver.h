// The library's side of the comparisons: filling a processor, loading, and looking at all of its state.
#ifndef TESTS_FILE_PROCESSORDRIVER_H
#define TESTS_FILE_PROCESSORDRIVER_H

#include "file/FileBytes.h"
#include "file/LoadOutcome.h"

#include "processor/TBackgroundCorrectionProcessorUINT16.h"

#include <string>
#include <vector>

namespace ProcessorDriver {

// The code of a file that ends early or is none.
constexpr std::uint32_t kMinusOne = 4294967295u;

// Adds the correction with exactly these pixels; none make an entry without pixels.
void Store(TBackgroundCorrectionProcessorUINT16& processor, const TStoredCorrection& correction);
void Store(TBackgroundCorrectionProcessorUINT16& processor, const std::vector<TStoredCorrection>& corrections);

TStoredCorrection Stored(const TBackgroundCorrectionEntry& entry);
std::vector<TStoredCorrection> Corrections(TBackgroundCorrectionProcessorUINT16& processor);

// Everything but `result`, `groupingNames` and `structureVersion`. Finding out the mode replaces the main text.
TLoadOutcome State(TBackgroundCorrectionProcessorUINT16& processor);

// Loads and tells the state afterwards.
TLoadOutcome Load(TBackgroundCorrectionProcessorUINT16& processor, const char* path, TLoadKind kind);

bool IsHeaderOnly(TBackgroundCorrectionProcessorUINT16& processor);

// Uses everything that a load let through: activates every correction, asks for all there is to ask, corrects an image.
// Nothing is compared; the sanitizers watch.
void UseEverything(TBackgroundCorrectionProcessorUINT16& processor);

// Whether a thread that is not this one gets at the object.
bool LockIsFree(TBackgroundCorrectionProcessorUINT16& processor);

} // namespace ProcessorDriver

#endif
