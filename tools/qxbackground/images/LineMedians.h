#ifndef QXBACKGROUND_IMAGES_LINEMEDIANS_H
#define QXBACKGROUND_IMAGES_LINEMEDIANS_H

#include "images/TImage.h"

#include <vector>

namespace workbench {

// The median of every row, and of every column; halfway between the two middle values of an even count. Exact, and for
// much less than sorting costs: the value is closed in on by counting how many pixels lie at or below it, which
// processors do for many pixels at once.
std::vector<double> RowMedians(const TImage& image);
std::vector<double> ColumnMedians(const TImage& image);

} // namespace workbench

#endif
