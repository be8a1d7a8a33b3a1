#include "calibration/TCalibrationPlace.h"

#include "base/TReplacedFile.h"

namespace workbench {

std::string TCalibrationPlace::ProvenanceFile() const
{
    return LockedName() + ".json";
}

std::string TCalibrationPlace::LockedName() const
{
    return (store ? store->PathOf(store->base) : TargetOf(file)).string();
}

} // namespace workbench
