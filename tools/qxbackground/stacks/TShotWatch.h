#ifndef QXBACKGROUND_STACKS_TSHOTWATCH_H
#define QXBACKGROUND_STACKS_TSHOTWATCH_H

#include "images/TShot.h"

#include <string>
#include <vector>

namespace workbench {

// Holds the headers of images against how they are corrected, and says which of them do not belong to the dark frames.
class TShotWatch {
public:
    // What passes without a word: degrees between the sensors, days that the dark frames are older.
    TShotWatch(double degrees, int days) : toleranceCelsius(degrees), mostDays(days) {}

    // `expected`: how the dark frames were taken, and the exposure that was given for the images; as far as known.
    void Add(const std::string& path, const TShot& image, const TShot& expected);

    // One line for each setting that differs.
    std::vector<std::string> Warnings() const;

private:
    struct TFound {
        TShotDifference difference; // of the first such image
        std::vector<std::string> paths;
    };

    void Note(const std::string& path, const TShotDifference& difference);

    double toleranceCelsius;
    int mostDays;
    std::vector<TFound> found;
};

} // namespace workbench

#endif
