#include "camera/TCamera.h"

#include "camera/TRandom.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace workbench {

namespace {

constexpr std::size_t kColumnsPerBank = 8;

// Which random sequence a thing is drawn from: adding frames or exposures leaves all others as they were.
enum class TPurpose : std::uint64_t { Columns = 1, Dark = 2, Scene = 3, Frame = 4, Rays = 5 };

std::uint64_t SeedFor(std::uint64_t seed, TPurpose purpose, std::uint64_t detail = 0, std::uint64_t frame = 0)
{
    std::uint64_t mixed = seed;
    for (const std::uint64_t part : {static_cast<std::uint64_t>(purpose), detail, frame})
        mixed = TRandom(mixed ^ (part * 0x9E3779B97F4A7C15u)).Bits();
    return mixed;
}

std::uint64_t BitsOf(double value)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

std::uint16_t ToAdu(double value, int bits = 16)
{
    return static_cast<std::uint16_t>(std::floor(std::clamp(value, 0.0, static_cast<double>((1 << bits) - 1)) + 0.5));
}

} // namespace

TCamera::TCamera(const TCameraSettings& given) : settings(given)
{
    const auto width = static_cast<std::size_t>(settings.size.width);
    const auto height = static_cast<std::size_t>(settings.size.height);

    TRandom columns(SeedFor(settings.seed, TPurpose::Columns));
    std::vector<double> darkOfColumn;
    double bankOffset = 0, bankDark = 0;
    for (std::size_t column = 0; column < width; ++column) {
        if (column % kColumnsPerBank == 0) {
            bankOffset = settings.offsetAdu + settings.columnOffsetSpreadAdu * columns.Normal();
            bankDark = 1 + settings.darkColumnSpread * columns.Normal();
        }
        offsetOfColumn.push_back(bankOffset);
        darkOfColumn.push_back(bankDark);
    }

    TRandom dark(SeedFor(settings.seed, TPurpose::Dark));
    darkCurrent.reserve(width * height);
    for (std::size_t row = 0; row < height; ++row) {
        for (std::size_t column = 0; column < width; ++column) {
            const double toRight = static_cast<double>(column + 1) / static_cast<double>(width);
            const double toBottom = static_cast<double>(row + 1) / static_cast<double>(height);
            const double glow = 1 + settings.glow * (toRight * toRight * toBottom * toBottom);
            double current = settings.darkElectronsPerSecond * glow * darkOfColumn[column];
            current *= 1 + settings.darkPixelSpread * dark.Normal();
            if (dark.Uniform() < settings.hotPixelFraction) {
                current += settings.darkElectronsPerSecond * 20 * ExactExp(dark.Normal());
                ++hotPixels;
            }
            darkCurrent.push_back(std::max(current, 0.0));
        }
    }

    scene.assign(width * height, settings.skyElectronsPerSecond);
    TRandom stars(SeedFor(settings.seed, TPurpose::Scene));
    for (int star = 0; star < settings.stars; ++star) {
        const double x = stars.Uniform() * static_cast<double>(width);
        const double y = stars.Uniform() * static_cast<double>(height);
        const double peak = settings.skyElectronsPerSecond * 2 * ExactExp(1.2 * stars.Normal());
        const double radius = 1.2 + 0.8 * stars.Uniform();
        const auto from = [](double position) { return static_cast<std::size_t>(std::max(position - 12, 0.0)); };
        for (std::size_t row = from(y); row < height && static_cast<double>(row) < y + 12; ++row) {
            for (std::size_t column = from(x); column < width && static_cast<double>(column) < x + 12; ++column) {
                const double dx = static_cast<double>(column) + 0.5 - x, dy = static_cast<double>(row) + 0.5 - y;
                scene[row * width + column] += peak * ExactExp(-(dx * dx + dy * dy) / (2 * radius * radius));
            }
        }
    }
}

TImage TCamera::Blank() const
{
    return {settings.size, std::vector<std::uint16_t>(settings.size.Pixels())};
}

// Electrons of each pixel.
std::vector<double> TCamera::Rays(double exposureSeconds, unsigned frame) const
{
    TRandom random(SeedFor(settings.seed, TPurpose::Rays, BitsOf(exposureSeconds), frame));
    std::vector<double> charge(settings.size.Pixels());
    for (double rays = random.Poisson(settings.cosmicRaysPerSecond * exposureSeconds); rays > 0; --rays) {
        double x = random.Uniform() * settings.size.width, y = random.Uniform() * settings.size.height;
        const double stepX = 2 * random.Uniform() - 1, stepY = 2 * random.Uniform() - 1;
        const double electrons = 2000 + 20000 * random.Uniform();
        for (double length = 2 + 12 * random.Uniform(); length > 0; --length, x += stepX, y += stepY) {
            if (x >= 0 && y >= 0 && x < settings.size.width && y < settings.size.height)
                charge[static_cast<std::size_t>(y) * static_cast<std::size_t>(settings.size.width) +
                       static_cast<std::size_t>(x)] += electrons;
        }
    }
    return charge;
}

TImage TCamera::Take(double exposureSeconds, unsigned frame, bool lit) const
{
    TRandom random(SeedFor(settings.seed, TPurpose::Frame, BitsOf(exposureSeconds) ^ (lit ? 1u : 0u), frame));
    TImage image = Blank();
    const std::size_t width = offsetOfColumn.size();
    const bool isHit = !lit && settings.cosmicRaysPerSecond > 0;
    const std::vector<double> rays = isHit ? Rays(exposureSeconds, frame) : std::vector<double>();
    constexpr unsigned kFramesOfDrift = 10;
    const double drift = lit ? 0 : settings.driftAdu * (2.0 * (frame % kFramesOfDrift) / (kFramesOfDrift - 1) - 1);
    for (std::size_t pixel = 0; pixel < image.pixels.size(); ++pixel) {
        double charge = random.Poisson(darkCurrent[pixel] * exposureSeconds);
        if (lit)
            charge += random.Poisson(scene[pixel] * exposureSeconds);
        charge += settings.readNoiseElectrons * random.Normal();
        if (isHit)
            charge += rays[pixel];
        image.pixels[pixel] =
            ToAdu(offsetOfColumn[pixel % width] + drift + charge / settings.gainElectronsPerAdu, settings.bits);
    }
    return image;
}

TImage TCamera::TrueScene(double exposureSeconds) const
{
    TImage image = Blank();
    for (std::size_t pixel = 0; pixel < image.pixels.size(); ++pixel)
        image.pixels[pixel] = ToAdu(scene[pixel] * exposureSeconds / settings.gainElectronsPerAdu);
    return image;
}

TImage TCamera::TrueBackground(double exposureSeconds) const
{
    TImage image = Blank();
    const std::size_t width = offsetOfColumn.size();
    for (std::size_t pixel = 0; pixel < image.pixels.size(); ++pixel)
        image.pixels[pixel] =
            ToAdu(offsetOfColumn[pixel % width] + darkCurrent[pixel] * exposureSeconds / settings.gainElectronsPerAdu);
    return image;
}

} // namespace workbench
