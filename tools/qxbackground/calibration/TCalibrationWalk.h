#ifndef QXBACKGROUND_CALIBRATION_TCALIBRATIONWALK_H
#define QXBACKGROUND_CALIBRATION_TCALIBRATIONWALK_H

#include <cstdint>
#include <string>
#include <vector>

namespace workbench {

// One correction as its records state it; pixels are not read.
struct TStoredCorrection {
    std::string key;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    float exposureSeconds = 0;
    float lightIntensityPercent = 0;
    std::uint64_t offset = 0;      // of the record that opens it
    std::uint64_t pixelOffset = 0; // of its first pixel

    // Exposure x intensity, which the background is in proportion to.
    double Product() const { return static_cast<double>(exposureSeconds) * static_cast<double>(lightIntensityPercent); }
};

struct TDeparture {
    std::uint64_t offset = 0;
    std::string what;
};

// What a calibration file holds, record by record, found without the library and without reading pixels.
struct TCalibrationWalk {
    std::uint64_t fileBytes = 0;
    std::uint32_t structureVersion = 0; // 0: not even that could be read
    std::vector<std::string> groupingNames;
    std::vector<TStoredCorrection> corrections; // those whose records are all there
    std::uint32_t announced = 0;                // how many corrections the file says it holds
    std::vector<TDeparture> departures;         // empty: the file loads whole

    bool Whole() const { return departures.empty(); }
    // The first departure in one line.
    std::string Complaint() const;
};

// Walks `path`. A damaged record is reported and stepped over as far as its neighbours tell where it ends.
// Throws TToolError only when the file cannot be read at all.
TCalibrationWalk WalkCalibrationFile(const std::string& path);

// Throws TToolError when the file is something else altogether, and says what.
void RefuseForeignFile(const std::string& path, const TCalibrationWalk& walk);

// Throws TToolError when the file does not load whole: the library would skip what it cannot read, and a save would
// then drop it.
TCalibrationWalk RequireWhole(const std::string& path);

} // namespace workbench

#endif
