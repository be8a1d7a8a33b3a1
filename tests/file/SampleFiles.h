// Calibration files written out byte by byte, and what they hold.
#ifndef TESTS_FILE_SAMPLEFILES_H
#define TESTS_FILE_SAMPLEFILES_H

#include "file/FileBytes.h"
#include "file/LoadOutcome.h"

#include <string>
#include <vector>

struct TSampleFile {
    const char* name;
    FileBytes::TBytes bytes;
    std::uint32_t structureVersion;
    std::vector<std::string> groupingNames; // structure version 2 only
    std::vector<TStoredCorrection> corrections;
};

namespace SampleFiles {

TSampleFile EmptyList();           // version 1
TSampleFile OneCorrection();       // version 1
TSampleFile TwoCorrections();      // version 1
TSampleFile WithoutPixels();       // version 1, an entry of 3 x 0 pixels before another one
TSampleFile LongestKey();          // version 1, a key of 512 characters
TSampleFile GroupedEmptyList();    // version 2, one name, no corrections
TSampleFile GroupedWithoutNames(); // version 2, no names, one correction
TSampleFile Grouped();             // version 2, two names, two corrections

std::vector<TSampleFile> All();

// One correction's seven records, for files that are put together in a test. The length of the pixels' record is that
// of `width` and `height`, and the pixels may be fewer or more.
FileBytes::TBytes Correction(const std::string& key, std::uint32_t width, std::uint32_t height, float exposureSeconds,
                             float intensityPercent, const FileBytes::TBytes& pixels);
// Signature, structure version 1 and the count.
FileBytes::TBytes Beginning(std::uint32_t correctionCount);

} // namespace SampleFiles

#endif
