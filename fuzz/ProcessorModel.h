// What a live processor is to be after each operation, computed a second time with nothing of the library. Texts are
// left to other tests.
#ifndef FUZZ_PROCESSORMODEL_H
#define FUZZ_PROCESSORMODEL_H

#include "file/FileBytes.h"
#include "file/LoadOutcome.h"
#include "model/LiteralArithmetic.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct TProcessorModel {
    std::vector<TStoredCorrection> corrections;
    std::optional<std::size_t> active; // position of a correction
    float exposure = -1.0f;
    float intensity = -1.0f;
    int percent = 100;
    int left = 0;
    int top = 0;
    int width = 1;
    int height = 1;
    std::optional<std::vector<std::uint16_t>> background;
    bool headerOnly = false;

    // Arguments that are no pointers; those are the caller's to check first.
    unsigned int AddCorrection(const std::string& key, const std::vector<Literal::TImage>& frames, float seconds,
                               float percents);
    unsigned int SetActiveCorrection(const std::string& key);
    void Deactivate() { active.reset(); }
    void ClearCorrections();
    unsigned int DeleteCorrection(const std::string& key);
    unsigned int SetCorrectionLevel(int newPercent);
    unsigned int SetExposureAndIntensity(float seconds, float percents);
    unsigned int SetRegion(int newLeft, int newTop, int newWidth, int newHeight);
    unsigned int ImportCorrections(const TProcessorModel& source, bool overwrite);
    // `bytes` is null when there is no such file. Nothing when the file takes too long to be read literally.
    std::optional<unsigned int> Load(const FileBytes::TBytes* bytes, bool enterHeaderOnly);
    // Gives what is to be in the file afterwards, however far it was written.
    unsigned int Save(FileBytes::TBytes& written) const;

    std::int64_t PixelCount() const { return std::int64_t{width} * height; }
    int Level() const; // as it reads back

private:
    std::optional<std::size_t> Find(const std::string& key) const;
    void Recalculate();
};

#endif
