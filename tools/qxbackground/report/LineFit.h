#ifndef QXBACKGROUND_REPORT_LINEFIT_H
#define QXBACKGROUND_REPORT_LINEFIT_H

#include <optional>
#include <vector>

namespace workbench {

// A point with the standard error of its height; 0 where that is not known.
struct TFitPoint {
    double x = 0, y = 0, error = 0;
};

struct TLineFit {
    double offset = 0, slope = 0;
    // Standard errors: from the points' own when those are known, else from how the points scatter about the line,
    // which takes more than two of them.
    std::optional<double> offsetError, slopeError;

    double At(double x) const { return offset + slope * x; }
};

// The line of least squares, weighted where the points' errors are known. Nothing with fewer than two different x.
std::optional<TLineFit> FitLine(const std::vector<TFitPoint>& points);

} // namespace workbench

#endif
