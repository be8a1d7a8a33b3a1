#ifndef QXBACKGROUND_REPORT_TDARKSTACK_H
#define QXBACKGROUND_REPORT_TDARKSTACK_H

#include "images/TImage.h"
#include "report/LineFit.h"

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

// Dark frames of one exposure, added one after the other; the last one is kept until it has a partner.
class TDarkStack {
public:
    void Add(TImage& frame, const std::string& name);

    std::size_t Frames() const { return levels.size(); }
    std::size_t Pairs() const { return variances.size(); }
    // The mean over the frames, hot pixels left out, with the error that their scatter gives it.
    TFitPoint Level(double x) const;
    // Of one pixel from frame to frame, in ADU squared, with its error. Not without a pair.
    TFitPoint Variance(double x) const;
    const std::vector<double>& Levels() const { return levels; }
    const std::vector<std::string>& Names() const { return names; }
    // A line through the levels, over the frames' numbers from 0.
    std::optional<TLineFit> Drift() const;
    // Numbers of the frames whose level differs from the others' by more than `Limit` ADU.
    std::vector<std::size_t> FramesThatAreOff() const;
    double Limit() const;

private:
    std::vector<double> levels;
    std::vector<std::string> names;
    std::vector<double> variances; // of each pair
    std::uint64_t pixels = 0;
    TImage waiting;
    int waitingLimit = 0;
};

} // namespace workbench

#endif
