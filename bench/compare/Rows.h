// The rows of the comparison: an operation at a size, and who takes part in it.
#ifndef BENCH_COMPARE_ROWS_H
#define BENCH_COMPARE_ROWS_H

#include "compare/Measure.h"

#include <functional>
#include <string>
#include <vector>

struct TRow {
    std::string operation;
    int size; // images of size x size pixels
    // Makes the images and whoever works on them; called only in the process that measures this row.
    std::function<std::vector<TRival>()> makeRivals;
};

// One image (and one stack of ten frames) again and again, in the caches as far as they reach.
void AppendSteadyRows(std::vector<TRow>& rows, int size);

// The same at addresses and regions that no line of the cache begins with.
void AppendOddRows(std::vector<TRow>& rows, int size);

// A live view: `frameCount` frames in turn, together larger than the caches, at every address that allocators give.
void AppendRingRows(std::vector<TRow>& rows, int size, int frameCount);

#endif
