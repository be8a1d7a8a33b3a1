// Saving and loading, against plain writes and reads of the same bytes.
#ifndef BENCH_COMPARE_FILES_H
#define BENCH_COMPARE_FILES_H

#include "compare/Measure.h"

#include <string>
#include <utility>
#include <vector>

// Operations on a file of `corrections` images of `size` x `size` pixels in the current folder, each with its timings:
// "save", "load", "list (header only)", per file. The limits are plain fwrite of the same bytes, and plain fread into
// newly allocated memory of the same sizes.
std::vector<std::pair<std::string, std::vector<TTiming>>> MeasureFiles(int corrections, int size, int rounds);

#endif
