#ifndef QXBACKGROUND_VERBS_PROVENANCECHECK_H
#define QXBACKGROUND_VERBS_PROVENANCECHECK_H

#include "calibration/TCalibrationWalk.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

// In what the record beside a calibration file or group file differs from it, and from the frames as far as they are
// found.
struct TProvenanceCheck {
    struct TRemark {
        std::string key, text;
        bool isDifference = false;
    };

    std::string record;    // empty: there is none
    std::string complaint; // why it cannot be read, with its name; the rest then says nothing
    std::vector<TRemark> remarks;
    std::uint64_t corrections = 0, recorded = 0;
    std::uint64_t framesCompared = 0, framesMissing = 0; // files

    bool FoundDifference() const;
    void Print() const;
    nlohmann::json Json() const;
};

// `walk` is of the file. What differs only because another program is at work is looked at again.
TProvenanceCheck CheckProvenance(const std::string& file, const TCalibrationWalk& walk);

} // namespace workbench

#endif
