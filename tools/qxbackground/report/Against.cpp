#include "report/Against.h"

#include "base/Wording.h"
#include "images/TImageReader.h"
#include "images/TSeriesStatistics.h"
#include "report/PictureData.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>

namespace workbench {

namespace {

struct TLight {
    TImage image;
    std::optional<double> exposureSeconds;
    std::string unusableExposure;
};

TLight ReadLight(const std::string& path, const TInputOptions& input)
{
    const std::unique_ptr<TImageReader> reader = OpenImage(path, input);
    if (!reader->NextPage())
        throw TToolError(path, "holds no image");
    TLight light;
    reader->Read(light.image);
    const TPageMetadata metadata = reader->Metadata();
    light.exposureSeconds = metadata.exposureSeconds;
    light.unusableExposure = metadata.unusable.exposure;
    return light;
}

bool SameKey(std::string one, std::string other)
{
    // As the library folds them: A to Z only.
    const auto fold = [](std::string& text) {
        for (char& character : text) {
            if (character >= 'A' && character <= 'Z')
                character = static_cast<char>(character - 'A' + 'a');
        }
    };
    fold(one);
    fold(other);
    return one == other;
}

std::size_t ByKey(const TCorrectionSet& set, const std::string& key)
{
    for (std::size_t index = 0; index < set.Keys().size(); ++index) {
        if (SameKey(set.Keys()[index], key))
            return index;
    }
    throw TToolError(set.Path(), "has no correction '" + Printable(key) + "'");
}

// The correction of that size which has to be scaled least.
std::size_t Nearest(const TCorrectionSet& set, const std::vector<TCorrectionFigures>& figures, const std::string& path,
                    const TSize& size, const std::optional<double>& exposure, const std::optional<double>& intensity)
{
    std::optional<std::size_t> best;
    double bestDistance = 0;
    for (std::size_t index = 0; index < figures.size(); ++index) {
        if (figures[index].size != size)
            continue;
        const TReference& reference = figures[index].reference;
        const double wanted = exposure.value_or(static_cast<double>(reference.exposureSeconds)) *
                              intensity.value_or(static_cast<double>(reference.lightIntensityPercent));
        const double distance = std::abs(std::log(wanted / figures[index].Product()));
        if (!best || distance < bestDistance) {
            best = index;
            bestDistance = distance;
        }
    }
    if (!best)
        throw TToolError(path, "is " + size.Text() + " pixels; no correction of " + set.Path() + " has that size");
    return *best;
}

nlohmann::json StatisticsJson(const TImage& image)
{
    TSeriesStatistics statistics;
    statistics.Add(image);
    return statistics.Json();
}

nlohmann::json OneJson(TCorrectionSet& set, const std::vector<TCorrectionFigures>& figures,
                       const TAgainstOptions& options, const std::string& path, std::size_t pictureText)
{
    TLight light = ReadLight(path, options.input);
    const std::optional<double> exposure = options.exposureSeconds ? options.exposureSeconds : light.exposureSeconds;
    const std::size_t index =
        options.key.empty() ? Nearest(set, figures, path, light.image.size, exposure, options.lightIntensityPercent)
                            : ByKey(set, options.key);
    const TSize size = set.Activate(index);
    if (light.image.size != size)
        throw TToolError(path, "is " + light.image.size.Text() + " pixels, the correction '" +
                                   Printable(set.Keys()[index]) + "' is " + size.Text());
    const TReference reference = set.Reference();
    TReference conditions = reference;
    if (exposure)
        conditions.exposureSeconds = static_cast<float>(*exposure);
    if (options.lightIntensityPercent)
        conditions.lightIntensityPercent = static_cast<float>(*options.lightIntensityPercent);

    nlohmann::json json{{"file", path},
                        {"correction", index},
                        {"width", size.width},
                        {"height", size.height},
                        {"exposureSeconds", conditions.exposureSeconds},
                        {"exposureFrom", options.exposureSeconds ? "option"
                                         : light.exposureSeconds ? "image"
                                                                 : "correction"},
                        {"exposureNote", exposure ? std::string() : light.unusableExposure},
                        {"lightIntensityPercent", conditions.lightIntensityPercent},
                        {"referenceExposureSeconds", reference.exposureSeconds},
                        {"referenceLightIntensityPercent", reference.lightIntensityPercent},
                        {"factor", (conditions.lightIntensityPercent * conditions.exposureSeconds) /
                                       (reference.lightIntensityPercent * reference.exposureSeconds)},
                        {"before", StatisticsJson(light.image)}};
    TImage stored;
    set.CopyStored(stored);
    set.SetConditions(conditions);
    std::uint64_t clipped = 0;
    set.LookAtBackground(light.image, [&](const std::uint16_t* background) {
        for (std::size_t i = 0; i < light.image.pixels.size(); ++i)
            clipped += background[i] > light.image.pixels[i] ? 1U : 0U;
    });
    if (pictureText > 0) {
        const TSampling sampling = SampleWhole({&light.image, &stored}, pictureText);
        json["picture"] = PictureJson(light.image, sampling);
        json["stored"] = PictureJson(stored, sampling);
    }
    set.Apply(light.image);
    json["after"] = StatisticsJson(light.image);
    json["clipped"] = clipped;
    json["clippedPercent"] = 100 * static_cast<double>(clipped) / static_cast<double>(size.Pixels());
    return json;
}

} // namespace

nlohmann::json AgainstJson(TCorrectionSet& set, const std::vector<TCorrectionFigures>& figures,
                           const TAgainstOptions& options, std::size_t pictureText)
{
    nlohmann::json json = nlohmann::json::array();
    for (const std::string& path : options.images)
        json.push_back(OneJson(set, figures, options, path, pictureText));
    return json;
}

} // namespace workbench
