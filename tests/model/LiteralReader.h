// The reader of calibration files as it is written down, step by step, with nothing of the library: what the library's
// reader is compared with.
#ifndef TESTS_FILE_LITERALREADER_H
#define TESTS_FILE_LITERALREADER_H

#include "file/FileBytes.h"
#include "file/LoadOutcome.h"

#include <cstdint>
#include <optional>
#include <string>

// Reads and repositionings that fail on purpose, counted from 1; 0 for none.
struct TLiteralFaults {
    std::uint64_t failedRead = 0;
    bool everyLaterReadToo = false;
    std::uint64_t movedBytes = 0; // that a failing read still gets, when it asks for more
    std::uint64_t failedSeek = 0;
    bool everyLaterSeekToo = false;
};

// What a load of a file with these bytes leaves behind. `before` is the state of the processor that loads it.
//
// Nothing when the loop over the corrections would run more often than `mostAttempts` without standing at the end of
// the file: there is no shortcut here that could be wrong.
std::optional<TLoadOutcome> LoadLiterally(const FileBytes::TBytes& bytes, const std::string& path, TLoadKind kind,
                                          const TLoadOutcome& before, const TLiteralFaults& faults = {},
                                          std::int64_t mostAttempts = 2'000'000);

#endif
