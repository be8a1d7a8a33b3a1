#include "report/LineFit.h"

#include <algorithm>
#include <cmath>

namespace workbench {

std::optional<TLineFit> FitLine(const std::vector<TFitPoint>& points)
{
    const bool weighted =
        std::all_of(points.begin(), points.end(), [](const TFitPoint& point) { return point.error > 0; });
    double sum = 0, sumX = 0, sumY = 0;
    const auto weightOf = [weighted](const TFitPoint& point) {
        return weighted ? 1 / (point.error * point.error) : 1.0;
    };
    for (const TFitPoint& point : points) {
        const double weight = weightOf(point);
        sum += weight;
        sumX += weight * point.x;
        sumY += weight * point.y;
    }
    if (points.size() < 2)
        return {};
    const double meanX = sumX / sum, meanY = sumY / sum;
    double xx = 0, xy = 0;
    for (const TFitPoint& point : points) {
        const double weight = weightOf(point);
        xx += weight * (point.x - meanX) * (point.x - meanX);
        xy += weight * (point.x - meanX) * (point.y - meanY);
    }
    if (!(xx > 0))
        return {};
    TLineFit fit;
    fit.slope = xy / xx;
    fit.offset = meanY - fit.slope * meanX;
    double scatter = 1; // of a point of weight 1
    if (!weighted) {
        if (points.size() < 3)
            return fit;
        double squares = 0;
        for (const TFitPoint& point : points)
            squares += (point.y - fit.At(point.x)) * (point.y - fit.At(point.x));
        scatter = squares / static_cast<double>(points.size() - 2);
    }
    fit.slopeError = std::sqrt(scatter / xx);
    fit.offsetError = std::sqrt(scatter * (1 / sum + meanX * meanX / xx));
    return fit;
}

} // namespace workbench
