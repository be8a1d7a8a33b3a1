// Timing of rivals that take turns: noise of the machine hits all of them alike.
#ifndef BENCH_COMPARE_MEASURE_H
#define BENCH_COMPARE_MEASURE_H

#include <functional>
#include <string>
#include <vector>

struct TRival {
    std::string name; // "library", "literal", "opencv", "limit", "avx2"; of several with one name the fastest counts
    std::function<void()> run;
    int images; // that one run works on
};

struct TTiming {
    std::string rival;
    double medianSeconds; // an image
    double leastSeconds;
    double greatestSeconds;
};

// Runs the rivals in turn, `rounds` times each; a sample is as many runs as take two milliseconds. Every rival runs
// once untimed before each of its samples, so that none finds the caches as another left them.
std::vector<TTiming> Measure(const std::vector<TRival>& rivals, int rounds);

#endif
