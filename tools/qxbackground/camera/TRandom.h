#ifndef QXBACKGROUND_CAMERA_TRANDOM_H
#define QXBACKGROUND_CAMERA_TRANDOM_H

#include <cstdint>

namespace workbench {

// Random numbers that are the same on every machine and with every compiler. The standard library's distributions
// differ between vendors and the mathematics library rounds differently between systems, so everything here is made
// of the operations that IEEE 754 rounds exactly: + - * / and sqrt. The engine is none of the standard library's
// either: the files that a seed gives are promised to stay as they are, and people compare results by them.
class TRandom {
public:
    explicit TRandom(std::uint64_t seed);

    std::uint64_t Bits();
    double Uniform(); // above 0, below 1
    double Normal();  // mean 0, standard deviation 1
    // Events counted when `mean` are expected. From 30 on, a normal value with the third moment corrected.
    double Poisson(double mean);

private:
    std::uint64_t state[4];
    double spareNormal = 0;
    bool hasSpare = false;
};

// e to the power x and the natural logarithm, to some 1e-14, by exactly rounded operations.
double ExactExp(double x);
double ExactLog(double x); // x above 0

} // namespace workbench

#endif
