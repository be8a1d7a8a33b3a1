#ifndef QXBACKGROUND_VERBS_PROVENANCERECORD_H
#define QXBACKGROUND_VERBS_PROVENANCERECORD_H

#include "calibration/TCalibrationPlace.h"
#include "calibration/TContext.h"
#include "calibration/TProvenance.h"
#include "commandline/TVerb.h"

#include <functional>
#include <string>
#include <vector>

namespace workbench {

// How the verbs that change calibration files keep the record beside them in step. All of it happens when the
// calibration file itself is saved, and fails with no more than a warning, because nothing depends on the record.

// --no-provenance, which sets `left`: the record is not touched.
void AddProvenanceOption(TVerb& verb, bool& left);

// Reads, changes and writes the record. A failure is a warning. True when something is recorded there.
bool ChangeProvenance(const TCalibrationPlace& place, const std::function<void(TProvenance&)>& change);

// A correction was deleted, or whatever else lets corrections go: what is recorded of those that a file does not hold
// any more is removed.
void DropProvenance(const TCalibrationPlace& place, const std::string& group);

// A correction got another key, in the same group or in another one.
void RenameProvenance(const TCalibrationPlace& place, const std::string& key, const std::string& newKey);

// The keys of `source` that an import into `destination` copies; to be asked before it.
std::vector<std::string> CopiedKeys(const QX_KRLSDK::TBackgroundCorrection& source,
                                    const QX_KRLSDK::TBackgroundCorrection& destination, bool overwrite);

// Corrections were copied, with these keys: what is recorded of them goes along. With `replaces`, all else that `to`
// says goes.
void CopyProvenance(const TCalibrationPlace& from, const TCalibrationPlace& to, const std::vector<std::string>& keys,
                    bool replaces);

} // namespace workbench

#endif
