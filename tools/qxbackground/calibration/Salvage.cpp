#include "calibration/Salvage.h"

#include "base/Names.h"
#include "base/TProgress.h"
#include "base/TReplacedFile.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/CorrectionCopy.h"
#include "calibration/TCalibrationWalk.h"

#include <filesystem>
#include <random>

namespace workbench {

namespace {

using QX_KRLSDK::TBackgroundCorrection;

constexpr std::size_t kMostLines = 10; // of damage; lost corrections are all listed

// A calibration file of its own around one correction. False when the damaged file does not hold all of it.
bool WriteAlone(const TNewFile& alone, const std::string& source, const TStoredCorrection& correction)
{
    bool written = false;
    try {
        written = WriteCorrections(alone.Path(), {}, {{source, correction, correction.key}});
    } catch (const TToolError&) {
        ThrowIfInterrupted();
        return false;
    }
    if (!written)
        throw TToolError(std::filesystem::temp_directory_path().string(),
                         "a temporary file cannot be written: " + alone.CannotGrow().message());
    return true;
}

bool LoadAlone(TBackgroundCorrection& object, const std::string& path)
{
    // Checked twice, because data that only almost follows the format must not be used as a measurement.
    const TCalibrationWalk walk = WalkCalibrationFile(path);
    if (!walk.Whole() || walk.corrections.size() != 1)
        return false;
    try {
        object.Load(LibraryName(path));
    } catch (const QX_KRLSDK::TBackgroundCorrectionError&) {
        return false;
    }
    return object.Count() == 1;
}

} // namespace

TSalvaged LoadWhatIsWhole(const TContext& context, TBackgroundCorrection& object, const std::string& path)
{
    const TCalibrationWalk walk = WalkCalibrationFile(path);
    RefuseForeignFile(path, walk);
    TSalvaged result;
    for (const TDeparture& departure : walk.departures) {
        if (result.losses.size() == kMostLines) {
            result.losses.push_back(Counted(walk.departures.size() - kMostLines, "more departure") +
                                    ", see 'qxbackground check'");
            break;
        }
        result.losses.push_back("byte " + std::to_string(departure.offset) + ": " + Printable(departure.what));
    }

    TProgress progress("Salvaging", walk.corrections.size());
    for (const TStoredCorrection& correction : walk.corrections) {
        // In the system's folder for temporary files: the damaged file's own folder may be full or read-only.
        TNewFile alone(HiddenBeside(std::filesystem::temp_directory_path() / "qxbackground",
                                    "." + std::to_string(std::random_device{}())));
        TBackgroundCorrection single = context.Library().MakeProcessor();
        bool taken = WriteAlone(alone, path, correction) && LoadAlone(single, alone.Path());
        const unsigned before = object.Count();
        if (taken) {
            try {
                object.Import(single, false);
            } catch (const QX_KRLSDK::TBackgroundCorrectionError&) {
                taken = false;
            }
        }
        if (!taken || object.Count() == before)
            result.losses.push_back("correction '" + Printable(correction.key) +
                                    (taken ? "': its key is there already" : "': does not load"));
        progress.Step();
    }
    result.corrections = object.Count();
    if (walk.announced > result.corrections)
        result.losses.push_back(Counted(walk.announced, "correction") + " announced, " +
                                std::to_string(result.corrections) + " saved");
    if (result.corrections == 0)
        throw TToolError(path, "holds no correction that loads" +
                                   (walk.Whole() ? std::string() : " (" + walk.Complaint() + ")"));
    return result;
}

} // namespace workbench
