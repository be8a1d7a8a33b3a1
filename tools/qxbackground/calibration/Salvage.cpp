#include "calibration/Salvage.h"

#include "base/Names.h"
#include "base/TProgress.h"
#include "base/TReplacedFile.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/TCalibrationWalk.h"

#include "file/CalibrationFormat.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>

namespace workbench {

namespace {

namespace format = CalibrationFormat;
using QX_KRLSDK::TBackgroundCorrection;

constexpr std::size_t kMostLines = 10; // of damage; lost corrections are all listed

void Put32(std::ofstream& file, std::uint32_t value)
{
    unsigned char bytes[4];
    format::Store32(bytes, value);
    file.write(reinterpret_cast<const char*>(bytes), sizeof bytes);
}

// A calibration file of its own around the bytes of one correction. False when it cannot be written.
bool WriteAlone(const std::string& path, std::ifstream& source, const TStoredCorrection& correction)
{
    std::ofstream file(std::filesystem::path(path), std::ios::binary | std::ios::trunc);
    file.write(format::kSignature, static_cast<std::streamsize>(format::kSignatureLength));
    Put32(file, format::kUngroupedVersion);
    Put32(file, format::kCorrectionCount.identifier);
    Put32(file, format::kCorrectionCount.version);
    Put32(file, format::kCorrectionCount.dataLength);
    Put32(file, 1);
    std::uint64_t left =
        correction.pixelOffset + std::uint64_t{2} * correction.width * correction.height - correction.offset;
    source.clear();
    source.seekg(static_cast<std::streamoff>(correction.offset));
    std::vector<char> block(1 << 20);
    while (left > 0 && source && file) {
        const auto count = static_cast<std::streamsize>(std::min<std::uint64_t>(left, block.size()));
        source.read(block.data(), count);
        file.write(block.data(), source.gcount());
        left -= static_cast<std::uint64_t>(count);
    }
    file.close();
    return file.good();
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

    std::ifstream source(std::filesystem::path(path), std::ios::binary);
    TProgress progress("Salvaging", walk.corrections.size());
    for (const TStoredCorrection& correction : walk.corrections) {
        // In the system's folder for temporary files: the damaged file's own folder may be full or read-only.
        TNewFile alone(HiddenBeside(std::filesystem::temp_directory_path() / "qxbackground",
                                    "." + std::to_string(std::random_device{}())));
        if (!WriteAlone(alone.Path(), source, correction))
            throw TToolError(std::filesystem::temp_directory_path().string(),
                             "a temporary file cannot be written: " + alone.CannotGrow().message());
        TBackgroundCorrection single = context.Library().MakeProcessor();
        bool taken = LoadAlone(single, alone.Path());
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
