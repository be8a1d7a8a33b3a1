#ifndef QXBACKGROUND_CALIBRATION_TPROVENANCE_H
#define QXBACKGROUND_CALIBRATION_TPROVENANCE_H

#include "calibration/TCalibrationPlace.h"
#include "calibration/TCalibrationWalk.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace workbench {

// Frames as they were when a correction was built from them.
struct TFrameRecord {
    struct TFile {
        std::string name; // absolute, or seen from the folder of the record; with / on every system
        std::uint64_t bytes = 0;
        std::string sha256; // empty: it changed while it was read
    };

    std::uint64_t frames = 0; // in all files
    std::vector<TFile> files;
};

// How a correction was built.
struct TBuildRecord {
    std::string date; // UTC, 2026-11-22T06:35:00Z
    std::string tool; // its name and version
    std::string combined, rejection;
    std::string rawLayout; // how frames without a format were read: WIDTHxHEIGHT+OFFSET; empty: none were
    TFrameRecord darks;
    std::optional<TFrameRecord> bias; // where it was subtracted from the dark frames
    // Pixels that the library's median filter took out of the correction, so many times the spread off the pixels
    // around them.
    double hotSigma = 0;
    std::uint64_t hot = 0, dead = 0;
    std::vector<std::string> notes, warnings;
};

// What is recorded of one correction.
struct TProvenanceEntry {
    std::string key;
    std::string group; // the name of the group file; empty for a single calibration file
    // What tells whether the record is of this correction still.
    std::uint32_t width = 0, height = 0;
    float exposureSeconds = 0, lightIntensityPercent = 0;
    std::string pixelsSha256; // of the pixels as they lie in the file

    std::optional<TBuildRecord> built; // not known for a correction that another program made
    std::string importedFrom;          // the file or store it was copied from last, named as frames are; or empty

    // Takes what the file says of the correction, and its pixels, of which `look` gets piece after piece, two bytes
    // each, the lower one first.
    using TLook = std::function<void(const unsigned char* bytes, std::size_t count)>;
    void Describe(const std::string& file, const TStoredCorrection& correction, const TLook& look = {});
    // In what the correction in the file is another one: "its exposure is 60 s, not 30 s". Nothing when it is the one.
    // Reads the pixels when all else agrees. Throws TToolError when they cannot be read.
    std::string DifferenceTo(const std::string& file, const TStoredCorrection& correction) const;
};

// Keys that the library takes for the same give the same text. It is UTF-8, as keys are in the record.
std::string RecordedKey(const std::string& key);

// What this program keeps beside calibration files, which have no room for it: what their corrections were built from,
// and how. Nothing depends on it. Other programs change calibration files without it, so that an entry is to be
// believed only where it does not differ from the correction.
class TProvenance {
public:
    // Reads what is there, see TCalibrationPlace::ProvenanceFile; no file is an empty record. Throws TToolError when
    // the file is no record, or is damaged.
    explicit TProvenance(const std::string& path);

    const std::string& Path() const { return path; }
    bool Exists() const { return exists; } // it did when it was read
    const std::vector<TProvenanceEntry>& Entries() const { return entries; }
    // Letter case of keys is ignored, that of groups is not. Null where there is none; valid until the next change.
    const TProvenanceEntry* Find(const std::string& key, const std::string& group = {}) const;

    void Put(const TProvenanceEntry& entry); // in place of one of the same key and group
    void Remove(const std::string& key, const std::string& group = {});
    void Clear();
    // Removes those of a group whose corrections are not among these.
    void Keep(const std::vector<TStoredCorrection>& corrections, const std::string& group = {});

    // Whole or not at all; nothing when nothing was changed. Throws TToolError.
    void Write() const;

    // How a path is written in this record: absolute paths as they are, others as seen from the record's folder, so
    // that a tree of folders may be moved.
    std::string NameOf(const std::string& file) const;
    // The path that such a name means.
    std::string PathOf(const std::string& name) const;
    // An entry of another record, for this one.
    TProvenanceEntry Moved(TProvenanceEntry entry, const TProvenance& from) const;

private:
    std::string Text() const;
    template <class TWhich> void RemoveThose(TWhich&& which);
    void Count();

    std::string path;
    bool exists = false;
    std::string before; // what was read, as it would be written
    std::vector<TProvenanceEntry> entries;
    std::unordered_map<std::string, std::size_t> places; // of entries, by what tells them apart
};

// What is recorded of a correction, and is true of it. Nothing where nothing is recorded, where the record cannot be
// read, or where it is of another correction. Reads the correction's pixels.
std::optional<TProvenanceEntry> KnownProvenance(const TCalibrationPlace& place, const TStoredCorrection& correction);

} // namespace workbench

#endif
