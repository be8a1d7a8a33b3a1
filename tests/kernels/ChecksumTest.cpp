// The same bits on every processor, under every system and from every compiler: what comes out of the kernels and of
// the interface for many inputs, as checksums that are written down here. All other tests compare with a model that the
// same compiler made for the same processor; an error that both share, such as a contracted product or another integer
// for a number that is too large, shows here alone.
#include "file/FileBytes.h"
#include "kernels/ForcedInstructionSet.h"
#include "kernels/Kernels.h"
#include "support/RandomImages.h"
#include "support/ScopedRounding.h"
#include "support/TemporaryFolder.h"
#include "support/TestObject.h"

#include <cmath>
#include <vector>

namespace {

// FNV-1a, of 64 bits.
class TChecksum {
public:
    void AddBytes(const void* bytes, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i) {
            value = (value ^ static_cast<const unsigned char*>(bytes)[i]) * 0x100000001B3u;
        }
    }
    void AddPixels(const std::vector<std::uint16_t>& pixels) { AddBytes(pixels.data(), 2 * pixels.size()); }
    template <class T> void Add(T number)
    {
        AddBytes(&number, sizeof number);
    } // all systems here store the low byte first
    std::uint64_t Value() const { return value; }

private:
    std::uint64_t value = 0xCBF29CE484222325u;
};

// Factors of every size, and what is none.
std::vector<float> Factors(TRandomImages& random)
{
    std::vector<float> factors = {0.0f,  -1.0f,    1.0f,     0.5f,     2.0f,  1e-45f,    1e-38f,
                                  1e-5f, 16383.9f, 16384.0f, 65536.0f, 3e38f, HUGE_VALF, std::nanf("")};
    for (int i = 0; i < 60; ++i) {
        const float mantissa = static_cast<float>(random.Number(1, 0xFFFFFF)) / 8388608.0f;
        factors.push_back(std::ldexp(mantissa, static_cast<int>(random.Number(0, 34)) - 17));
    }
    return factors;
}

class Checksums : public TForcedInstructionSet {};
QXBC_FOR_EVERY_INSTRUCTION_SET(Checksums);

TEST_P(Checksums, OfScaledPixels)
{
    TChecksum sum;
    for (const int mode : kRoundingModes) {
        TRandomImages random(11);
        const Literal::TImage image = random.Image(4099, 1);
        for (const float factor : Factors(random)) {
            std::vector<std::uint16_t> output(image.pixels.size());
            {
                const TScopedRounding rounding(mode);
                Kernels::Scale(output.data(), image.pixels.data(), output.size(), factor);
            }
            sum.AddPixels(output);
        }
    }
    EXPECT_EQ(sum.Value(), 0x15D908FD4A7543D7u);
}

TEST_P(Checksums, OfAverages)
{
    TChecksum sum;
    for (const int mode : kRoundingModes) {
        TRandomImages random(12);
        for (const int frameCount : {1, 2, 3, 5, 10, 29, 256, 257, 300}) {
            const std::vector<Literal::TImage> stack = random.Stack(frameCount, 1021, 1, frameCount > 256 ? 60000 : 0);
            std::vector<const std::uint16_t*> frames;
            for (const Literal::TImage& frame : stack) {
                frames.push_back(frame.pixels.data());
            }
            std::vector<std::uint16_t> output(1021);
            std::vector<float> scratch(Kernels::AverageScratchLength(output.size()));
            {
                const TScopedRounding rounding(mode);
                Kernels::Average(output.data(), frames.data(), frames.size(), output.size(), scratch.data());
            }
            sum.AddPixels(output);
        }
    }
    EXPECT_EQ(sum.Value(), 0x8BB8FEE92A3B3272u);
}

TEST_P(Checksums, OfMediansDifferencesAndStatistics)
{
    TChecksum sum;
    TRandomImages random(13);
    for (const TImageSize size : kAwkwardSizes) {
        for (const std::uint16_t highest : {std::uint16_t{3}, std::uint16_t{40000}, std::uint16_t{65535}}) {
            Literal::TImage image = random.Image(size.width, size.height, 0, highest);
            const Literal::TImage other = random.Image(size.width, size.height);
            const std::size_t count = image.pixels.size();
            const auto width = static_cast<std::size_t>(size.width);
            std::vector<std::uint16_t> scratch(Kernels::MedianScratchLength(width));
            Kernels::Median3x3(image.pixels.data(), width, static_cast<std::size_t>(size.height), scratch.data());
            sum.AddPixels(image.pixels);
            const Kernels::TStatistics statistics = Kernels::CalculateStatistics(image.pixels.data(), count);
            sum.Add(statistics.minimum);
            sum.Add(statistics.maximum);
            sum.Add(statistics.average);
            Kernels::SubtractInPlace(image.pixels.data(), other.pixels.data(), count);
            sum.AddPixels(image.pixels);
        }
    }
    EXPECT_EQ(sum.Value(), 0x0BA2D40179D40917u);
}

// One object, as a host uses it: what it refuses, what it stores, what it subtracts, and the file that it writes.
void UseObject(TChecksum& sum, int mode, const std::string& file)
{
    TRandomImages random(14);
    const TTestObject object;
    const float exposures[] = {0.1f, 1.0f / 3.0f, 1e-30f, 1e30f, 3e38f, 7.25f, std::nanf(""), HUGE_VALF, 0.0f, -2.0f};
    const TScopedRounding rounding(mode);
    int number = 0;
    for (const float exposure : exposures) {
        for (const float intensity : {100.0f, 0.7f, 1e-20f}) {
            const std::string key = "dark" + std::to_string(number);
            sum.Add(object.AddFrames(key.c_str(), random.Stack(1 + number % 7, 21, 9), exposure, intensity));
            ++number;
        }
    }
    const unsigned int count = object->GetNumberOfCorrections();
    sum.Add(count);
    for (unsigned int i = 0; i < count; ++i) {
        sum.Add(object->SetActiveCorrection(object->GetCorrectionKey(i)));
        for (const float exposure : exposures) {
            sum.Add(object->SetExposureAndIntensity(exposure, 33.3f));
            sum.Add(object->SetCorrectionLevel(static_cast<int>(random.Number(0, 100))));
            sum.Add(object->GetCorrectionLevel());
            sum.Add(object->SetRegion(static_cast<int>(random.Number(0, 5)), 1, 13, 7));
            sum.AddPixels(object.Background());
        }
        unsigned short statistics[3] = {};
        sum.Add(object->GetCorrectionStatistics(&statistics[0], &statistics[1], &statistics[2]));
        sum.AddBytes(statistics, sizeof statistics);
    }
    sum.Add(object->SaveFile(file.c_str()));
    const FileBytes::TBytes bytes = FileBytes::ReadFile(file);
    sum.AddBytes(bytes.data(), bytes.size());
}

TEST(ChecksumsOfTheInterface, OfBackgroundsCodesAndFiles)
{
    const TTemporaryFolder folder;
    TChecksum sum;
    for (const int mode : kRoundingModes) {
        UseObject(sum, mode, folder.File("file"));
    }
    EXPECT_EQ(sum.Value(), 0xB6E584AE151B8619u);
}

} // namespace
