#include "CalibrationFile.h"

#include "CalibrationWalk.h"
#include "Progress.h"
#include "ReplacedFile.h"

#include "file/CalibrationFormat.h"

namespace workbench {

void RefuseGroupFile(const std::string& path, std::uint32_t structureVersion)
{
    if (structureVersion == CalibrationFormat::kGroupedVersion)
        throw TToolError(path, "belongs to an offline store (structure version 2); use 'qxbackground store'");
}

void LoadWhole(QX_KRLSDK::TBackgroundCorrection& object, const std::string& path)
{
    // The library skips what it cannot read and may still call the load a success; here that would lose corrections.
    const TCalibrationWalk walk = RequireWhole(path);
    RefuseGroupFile(path, walk.structureVersion);
    Call(path, [&] { object.Load(path); });
    if (object.Get().GetNumberOfCorrections() != walk.corrections.size())
        throw TToolError(path, "changed while it was being read");
    ThrowIfInterrupted();
}

void SaveReplacing(QX_KRLSDK::TBackgroundCorrection& object, const std::string& path)
{
    TReplacedFile replaced(path);
    const std::string temporary = replaced.Temporary().string();
    Call(path, [&] { object.Save(temporary); });
    ThrowIfInterrupted();
    const TCalibrationWalk walk = WalkCalibrationFile(temporary);
    if (!walk.Whole() || walk.corrections.size() != object.Get().GetNumberOfCorrections())
        throw TToolError(path, "was not written correctly (" + walk.Complaint() + "); the old file is unchanged");
    replaced.Commit();
}

std::string Printable(std::string text)
{
    for (char& character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 32 || byte == 127)
            character = '?';
    }
    return text;
}

} // namespace workbench
