#include "images/TPageFigures.h"

#include <nlohmann/json.hpp>

namespace workbench {

nlohmann::json TPageFigures::Json() const
{
    return {{"pixels", pixels},
            {"median", median},
            {"mean", mean},
            {"spread", spread},
            {"standardDeviation", standardDeviation},
            {"minimum", minimum},
            {"maximum", maximum},
            {"rowPattern", rowPattern},
            {"columnPattern", columnPattern},
            {"pixelsAtZero", pixelsAtZero}};
}

} // namespace workbench
