#include "calibration/CalibrationFile.h"

#include "base/Names.h"
#include "base/TProgress.h"
#include "base/TReplacedFile.h"
#include "calibration/SteadyRead.h"

#include "file/CalibrationFormat.h"

namespace workbench {

void RefuseOtherFiles(const std::string& path, const TCalibrationWalk& walk)
{
    RefuseForeignFile(path, walk);
    if (walk.structureVersion == CalibrationFormat::kGroupedVersion)
        throw TToolError(path, "belongs to an offline store (structure version 2); use 'qxbackground store'");
}

void LoadWhole(QX_KRLSDK::TBackgroundCorrection& object, const std::string& path)
{
    ReadFileSteadily(path, [&] {
        // The library skips what it cannot read and may still call the load a success; here that would lose
        // corrections.
        const TCalibrationWalk walk = RequireWhole(path);
        RefuseOtherFiles(path, walk);
        Call(path, [&] { object.Load(LibraryName(path)); });
        if (object.Count() != walk.corrections.size())
            throw TToolError(path, "changed while it was being read");
    });
    ThrowIfInterrupted();
}

void SaveReplacing(QX_KRLSDK::TBackgroundCorrection& object, const std::string& path, const TFileState& before)
{
    TReplacedFile replaced(path, before);
    try {
        object.Save(LibraryName(replaced.Temporary()));
    } catch (const QX_KRLSDK::TBackgroundCorrectionError& error) {
        throw TToolError(path, "cannot be written: " + replaced.Reason(error.what()) +
                                   (before.exists ? "; the old file is unchanged" : ""));
    }
    ThrowIfInterrupted();
    const TCalibrationWalk walk = WalkCalibrationFile(replaced.Temporary());
    if (!walk.Whole() || walk.corrections.size() != object.Count())
        throw TToolError(path, "was not written correctly (" + walk.Complaint() + "); the old file is unchanged");
    replaced.Commit();
}

} // namespace workbench
