#include "verbs/ProvenanceCheck.h"

#include "base/TProgress.h"
#include "base/TReplacedFile.h"
#include "base/TToolError.h"
#include "base/Wording.h"
#include "batch/TFileDigests.h"
#include "calibration/SteadyRead.h"
#include "calibration/TProvenance.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iostream>
#include <optional>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <unordered_set>

namespace workbench {

namespace {

namespace fs = std::filesystem;

constexpr auto kPatienceWithWriters = std::chrono::seconds(1); // a killed one leaves its lock file
constexpr auto kPauseForWriters = std::chrono::milliseconds(5);

// Looks at one calibration file.
class TComparison {
public:
    TComparison(const TProvenance& record, const std::string& calibrationFile, const std::string& groupName)
        : provenance(record), file(calibrationFile), group(groupName)
    {}

    TProvenanceCheck Run()
    {
        TCalibrationWalk walk;
        ReadFileSteadily(file, [&] { walk = WalkCalibrationFile(file); });
        check.record = provenance.Path();
        check.corrections = walk.corrections.size();
        std::unordered_set<std::string> there;
        for (const TStoredCorrection& correction : walk.corrections) {
            there.insert(RecordedKey(correction.key));
            if (const TProvenanceEntry* const entry = provenance.Find(correction.key, group))
                Compare(correction, *entry);
            else
                Note(correction.key, "nothing is recorded");
        }
        for (const TProvenanceEntry& entry : provenance.Entries()) {
            if (entry.group == group && there.count(RecordedKey(entry.key)) == 0)
                Differs(entry.key, "is recorded, but not in " + file);
        }
        return check;
    }

private:
    void Compare(const TStoredCorrection& correction, const TProvenanceEntry& entry)
    {
        ++check.recorded;
        const std::string difference = entry.DifferenceTo(file, correction);
        if (!difference.empty()) {
            Differs(entry.key, difference + ": what is recorded is not true of it");
        } else if (!entry.built) {
            Note(entry.key, "copied from " + entry.importedFrom + "; what it was built from is not known");
        } else {
            CompareFrames(entry.key, entry.built->darks);
            if (entry.built->bias)
                CompareFrames(entry.key, *entry.built->bias);
        }
    }

    void CompareFrames(const std::string& key, const TFrameRecord& frames)
    {
        for (const TFrameRecord::TFile& frame : frames.files) {
            ThrowIfInterrupted();
            const std::string path = provenance.PathOf(frame.name);
            std::error_code error;
            if (!fs::is_regular_file(path, error)) {
                ++check.framesMissing;
                continue;
            }
            ++check.framesCompared;
            const std::uintmax_t bytes = fs::file_size(path, error);
            if (bytes != frame.bytes) {
                Differs(key, path + " has " + Counted(bytes, "byte") + ", not " + std::to_string(frame.bytes));
                continue;
            }
            const std::string found = frame.sha256.empty() ? std::string() : Sha256Of(path);
            ThrowIfInterrupted();
            if (found.empty() && !frame.sha256.empty())
                Differs(key, path + " cannot be read, or changes all the time");
            else if (found != frame.sha256)
                Differs(key, path + " has other content than the frame that was used (its SHA-256 differs)");
        }
    }

    // Frames that several corrections were built from are read once.
    const std::string& Sha256Of(const std::string& path)
    {
        const auto [place, isNew] = digests.try_emplace(path);
        if (isNew)
            place->second = TFileDigests({path}).Take().front().sha256;
        return place->second;
    }

    void Note(const std::string& key, const std::string& text) { check.remarks.push_back({key, text, false}); }
    void Differs(const std::string& key, const std::string& text) { check.remarks.push_back({key, text, true}); }

    const TProvenance& provenance;
    const std::string& file;
    const std::string& group;
    TProvenanceCheck check;
    std::unordered_map<std::string, std::string> digests; // by path
};

// A group file belongs to the store that it names.
std::optional<TCalibrationPlace> PlaceOfChecked(const std::string& file, const TCalibrationWalk& walk)
{
    if (walk.groupingNames.empty())
        return TCalibrationPlace(file);
    try {
        return TCalibrationPlace(FindStore(file, {}));
    } catch (const TToolError&) {
        return std::nullopt; // it was given another name
    }
}

} // namespace

bool TProvenanceCheck::FoundDifference() const
{
    return !complaint.empty() ||
           std::any_of(remarks.begin(), remarks.end(), [](const TRemark& remark) { return remark.isDifference; });
}

void TProvenanceCheck::Print() const
{
    if (!complaint.empty())
        std::cout << Printable(complaint) << '\n';
    else if (!record.empty()) {
        for (const TRemark& remark : remarks)
            std::cout << record << ": " << Printable("'" + remark.key + "': " + remark.text) << '\n';
        std::cout << record << ": " << Counted(recorded, "correction") << " of " << corrections << " recorded; "
                  << Counted(framesCompared, "frame file") << " compared";
        if (framesMissing > 0)
            std::cout << ", " << framesMissing << " not found";
        std::cout << (FoundDifference() ? "" : "; nothing differs") << '\n';
    }
}

nlohmann::json TProvenanceCheck::Json() const
{
    if (!complaint.empty())
        return {{"complaint", complaint}};
    if (record.empty())
        return nullptr;
    nlohmann::json list = nlohmann::json::array();
    for (const TRemark& remark : remarks)
        list.push_back({{"key", remark.key}, {"text", remark.text}, {"differs", remark.isDifference}});
    return {{"file", record},
            {"recorded", recorded},
            {"framesCompared", framesCompared},
            {"framesNotFound", framesMissing},
            {"remarks", list}};
}

TProvenanceCheck CheckProvenance(const std::string& file, const TCalibrationWalk& walk)
{
    const std::optional<TCalibrationPlace> place = PlaceOfChecked(file, walk);
    if (!place)
        return {};
    const std::string group = place->IsStore() ? fs::path(file).filename().string() : std::string();
    const std::string record = place->ProvenanceFile();
    const auto start = std::chrono::steady_clock::now();
    for (;;) {
        const auto states = [&] { return TFileStates{{file, StateOf(file)}, {record, StateOf(record)}}; };
        const TFileStates before = states();
        TProvenanceCheck check;
        try {
            const TProvenance provenance(record);
            if (!provenance.Exists())
                return {};
            check = TComparison(provenance, file, group).Run();
        } catch (const TToolError& error) {
            ThrowIfInterrupted();
            check.complaint = error.what();
            return check;
        }
        // The two files are replaced one after the other: what differs meanwhile does not count.
        const bool mayBeInWork =
            std::chrono::steady_clock::now() - start < kPatienceWithWriters &&
            (states() != before || fs::exists(fs::symlink_status(LockFileOf(fs::path(place->LockedName())))));
        if (!check.FoundDifference() || !mayBeInWork)
            return check;
        ThrowIfInterrupted();
        std::this_thread::sleep_for(kPauseForWriters);
    }
}

} // namespace workbench
