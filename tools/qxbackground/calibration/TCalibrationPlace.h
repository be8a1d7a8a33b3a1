#ifndef QXBACKGROUND_CALIBRATION_TCALIBRATIONPLACE_H
#define QXBACKGROUND_CALIBRATION_TCALIBRATIONPLACE_H

#include "calibration/TStorePlace.h"

#include <optional>
#include <string>

namespace workbench {

// Where corrections lie: in a calibration file of their own, or in the group files of a store.
class TCalibrationPlace {
public:
    explicit TCalibrationPlace(const std::string& calibrationFile) : file(calibrationFile) {}
    explicit TCalibrationPlace(const TStorePlace& offlineStore) : store(offlineStore) {}

    bool IsStore() const { return store.has_value(); }
    std::string Text() const { return store ? store->Text() : file; } // as it is named in messages

    // The group file's name; empty for a single calibration file. Throws TToolError, see GroupFileOf.
    std::string GroupOf(const std::string& key) const { return store ? GroupFileOf(*store, key) : std::string(); }
    // The file that holds a group.
    std::string FileOf(const std::string& group) const { return store ? store->PathOf(group).string() : file; }
    // Where it is recorded what the corrections were built from, see TProvenance: FILE.json, behind links as the file
    // is; of a store BASE.json, which its naming rule does not take for a group file.
    std::string ProvenanceFile() const;
    // What is locked while something is changed there, see LockFileOf.
    std::string LockedName() const;

private:
    std::string file;
    std::optional<TStorePlace> store;
};

} // namespace workbench

#endif
