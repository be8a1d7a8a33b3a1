#ifndef QXBACKGROUND_VERBS_PROVENANCERECORD_H
#define QXBACKGROUND_VERBS_PROVENANCERECORD_H

#include "calibration/TCalibrationPlace.h"
#include "calibration/TContext.h"
#include "calibration/TProvenance.h"
#include "commandline/TVerb.h"

#include <nlohmann/json_fwd.hpp>

#include <functional>
#include <string>
#include <vector>

namespace workbench {

// How the verbs that change calibration files keep the record beside them in step. All of it happens when the
// calibration file itself is saved, and fails with no more than a warning, because nothing depends on the record. With
// `left`, which --no-provenance sets, nothing happens.
void AddProvenanceOption(TVerb& verb, bool& left);

// What became of the record, for what a verb says.
struct TProvenanceOutcome {
    std::string file;    // where something is recorded; empty: nowhere
    bool isNews = false; // something was added there
    std::vector<std::string> warnings;

    void Print() const;
    void AddTo(nlohmann::json& json) const;
};

// Reads, changes and writes the record.
TProvenanceOutcome ChangeProvenance(const TCalibrationPlace& place, const std::function<void(TProvenance&)>& change);

// A correction was deleted: what is recorded of those that a file does not hold any more is removed.
TProvenanceOutcome DropProvenance(const TCalibrationPlace& place, const std::string& group, bool left);

// A correction got another key, in the same group or in another one.
TProvenanceOutcome RenameProvenance(const TCalibrationPlace& place, const std::string& key, const std::string& newKey,
                                    bool left);

// The keys of `source` that an import into `destination` copies; to be asked before it.
std::vector<std::string> CopiedKeys(const QX_KRLSDK::TBackgroundCorrection& source,
                                    const QX_KRLSDK::TBackgroundCorrection& destination, bool overwrite);

// What becomes of all else that is recorded where corrections are copied to.
enum class TCopyInto { Among, InPlaceOfAll };

// Corrections were copied, with these keys: what is recorded of them goes along.
TProvenanceOutcome CopyProvenance(const TCalibrationPlace& from, const TCalibrationPlace& to,
                                  const std::vector<std::string>& keys, TCopyInto into, bool left);

} // namespace workbench

#endif
