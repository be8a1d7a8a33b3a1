#ifndef QXBACKGROUND_REPORT_CROSSCHECK_H
#define QXBACKGROUND_REPORT_CROSSCHECK_H

#include "report/CorrectionFigures.h"
#include "report/TCorrectionSet.h"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <vector>

namespace workbench {

// What is done with each correction's pixels when they are at hand: adds its figures.
using TTakeFigures = std::function<void(std::size_t index, const TImage& stored)>;

// Scales every correction to every other's conditions, through the library, and fits a line through the corrections of
// each size. Of more than 64 corrections each is compared with some, evenly spread. `take` is called once for each
// correction, before it is compared; it puts the correction's figures into `figures`, which get the check "scaling" in
// the end. Only one correction's pixels are in memory at a time, besides those that the library keeps.
nlohmann::json CrossCheck(TCorrectionSet& set, std::vector<TCorrectionFigures>& figures, const TTakeFigures& take);

} // namespace workbench

#endif
