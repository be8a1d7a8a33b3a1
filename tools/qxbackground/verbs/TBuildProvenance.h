#ifndef QXBACKGROUND_VERBS_TBUILDPROVENANCE_H
#define QXBACKGROUND_VERBS_TBUILDPROVENANCE_H

#include "batch/TFileDigests.h"
#include "calibration/TCalibrationPlace.h"
#include "verbs/DarkFrames.h"
#include "verbs/ProvenanceRecord.h"

#include <optional>
#include <string>

namespace workbench {

// Records what a correction is built from. Made before the frames are read, because it notes what their files are.
class TBuildProvenance {
public:
    // With `left`, nothing is recorded.
    TBuildProvenance(const TDarkOptions& darks, const TInputOptions& input, bool left);

    // What wants to be fed while the frames are read.
    TDarkDigests Digests();

    // To be called once. `stack` is what became of the frames; its pixels are used up.
    TProvenanceOutcome Record(const TCalibrationPlace& place, const std::string& key, TFrameStack& stack);

private:
    const TDarkOptions& darks;
    const TInputOptions& input;
    std::optional<TFileDigests> darkDigests, biasDigests;
};

} // namespace workbench

#endif
