#include "calibration/TCalibrationPlace.h"

#include "base/TReplacedFile.h"

namespace workbench {

std::string TCalibrationPlace::ProvenanceFile() const
{
    return (store ? store->PathOf(store->base) : TargetOf(file)).string() + ".json";
}

} // namespace workbench
