#include "report/DarkStacks.h"

#include "base/TProgress.h"
#include "base/TToolError.h"
#include "images/TImageReader.h"
#include "images/TShot.h"
#include "report/Figures.h"
#include "report/TDarkStack.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <map>

namespace workbench {

namespace {

constexpr double kRoundingVariance = 1.0 / 12; // of whole ADU

nlohmann::json FigureJson(double value, double error)
{
    return {{"value", value}, {"error", error}};
}

// What a person should look at before these frames are used.
std::vector<std::string> Remarks(const TDarkStack& stack)
{
    std::vector<std::string> remarks;
    const std::optional<TLineFit> drift = stack.Drift();
    if (drift && drift->slopeError) {
        constexpr double kLeastAdu = 1, kBeyond = 3; // in all, and in standard errors
        const double inAll = drift->slope * static_cast<double>(stack.Frames() - 1);
        if (std::abs(inAll) > kLeastAdu && std::abs(drift->slope) > kBeyond * *drift->slopeError)
            remarks.push_back(
                fmt::format("The level drifts by {:.2g} ADU from the first frame to the last, more than {:g} "
                            "ADU: had the camera reached its temperature?",
                            inAll, kLeastAdu));
    }
    const std::vector<std::size_t> off = stack.FramesThatAreOff();
    std::string names;
    for (const std::size_t frame : off)
        names += (names.empty() ? "" : ", ") + stack.Names()[frame];
    if (!off.empty())
        remarks.push_back(fmt::format("Off by more than {:.2g} ADU, better left out: {}.", stack.Limit(), names));
    if (stack.Frames() == 1)
        remarks.push_back("One frame alone tells no noise, and brings all of its own into every image.");
    return remarks;
}

nlohmann::json StackJson(const TDarkStack& stack, const std::optional<double>& exposure)
{
    nlohmann::json json{{"exposureSeconds", OptionalJson(exposure)},
                        {"frames", stack.Frames()},
                        {"level", FigureJson(stack.Level(0).y, stack.Level(0).error)},
                        {"levels", stack.Levels()},
                        {"names", stack.Names()},
                        {"off", stack.FramesThatAreOff()},
                        {"offLimit", stack.Limit()},
                        {"remarks", Remarks(stack)},
                        {"noise", nullptr},
                        {"drift", nullptr},
                        {"enough", nullptr}};
    if (const std::optional<TLineFit> drift = stack.Drift())
        json["drift"] = {{"aduPerFrame", drift->slope}, {"error", OptionalJson(drift->slopeError)}};
    if (stack.Pairs() > 0) {
        const TFitPoint variance = stack.Variance(0);
        const double noise = std::sqrt(std::max(0.0, variance.y));
        json["noise"] = FigureJson(noise, noise > 0 ? variance.error / (2 * noise) : 0);
        // An average of n frames brings 1/sqrt(n) of their noise into each image. That adds 5 % to an image's own noise
        // with ten of them; and where it is below that of rounding to whole ADU, further frames change nothing.
        const auto frames = static_cast<double>(stack.Frames());
        json["enough"] = {{"remainingAdu", noise / std::sqrt(frames)},
                          {"addedPercent", 100 * (std::sqrt(1 + 1 / frames) - 1)},
                          {"framesForFivePercent", 10},
                          {"framesToRounding", std::ceil(variance.y / kRoundingVariance)}};
    }
    return json;
}

// From how level and noise grow with exposure.
nlohmann::json CameraJson(const std::map<std::optional<double>, TDarkStack>& stacks)
{
    std::vector<TFitPoint> levels, variances;
    for (const auto& [exposure, stack] : stacks) {
        if (!exposure)
            continue;
        levels.push_back(stack.Level(*exposure));
        if (stack.Pairs() > 0)
            variances.push_back(stack.Variance(*exposure));
    }
    nlohmann::json json{{"offset", nullptr},
                        {"darkCurrentAduPerSecond", nullptr},
                        {"readNoiseAdu", nullptr},
                        {"electronsPerAdu", nullptr},
                        {"readNoiseElectrons", nullptr},
                        {"darkCurrentElectronsPerSecond", nullptr},
                        {"note", ""}};
    const std::optional<TLineFit> level = FitLine(levels), variance = FitLine(variances);
    if (!level) {
        json["note"] = "Read noise and dark current need dark frames of two exposures or more that say their exposure.";
        return json;
    }
    json["offset"] = FigureJson(level->offset, level->offsetError.value_or(0));
    json["darkCurrentAduPerSecond"] = FigureJson(level->slope, level->slopeError.value_or(0));
    if (!variance) {
        json["note"] = "Read noise needs two frames or more of each exposure.";
        return json;
    }
    const double readVariance = variance->offset - kRoundingVariance;
    if (!(readVariance > 0)) {
        json["note"] = "The read noise is too small beside the dark current's to be told; add frames of a shorter "
                       "exposure.";
        return json;
    }
    const double readNoise = std::sqrt(readVariance);
    const double readNoiseError = variance->offsetError.value_or(0) / (2 * readNoise);
    json["readNoiseAdu"] = FigureJson(readNoise, readNoiseError);
    // The dark current's noise is that of counting electrons: its variance is its level, both in electrons.
    const double slopeError = variance->slopeError.value_or(0);
    if (!(variance->slope > 3 * slopeError && level->slope > 0)) {
        json["note"] = "The dark current is too small to tell electrons per ADU from its noise.";
        return json;
    }
    const double gain = level->slope / variance->slope;
    const double gainError =
        gain * std::hypot(slopeError / variance->slope, level->slopeError.value_or(0) / level->slope);
    json["electronsPerAdu"] = FigureJson(gain, gainError);
    json["readNoiseElectrons"] =
        FigureJson(readNoise * gain, readNoise * gain * std::hypot(readNoiseError / readNoise, gainError / gain));
    json["darkCurrentElectronsPerSecond"] =
        FigureJson(level->slope * gain,
                   level->slope * gain * std::hypot(level->slopeError.value_or(0) / level->slope, gainError / gain));
    return json;
}

} // namespace

nlohmann::json DarkFigures(const std::vector<std::string>& paths, const TInputOptions& input,
                           const std::vector<double>& exposures)
{
    if (exposures.size() > 1 && exposures.size() != paths.size())
        throw TToolError(fmt::format("--dark-exposure: {} exposure times are given for {} files; give one for all, or "
                                     "one for each",
                                     exposures.size(), paths.size()));
    std::map<std::optional<double>, TDarkStack> stacks; // of no exposure: it is not known
    std::string unusable;                               // what headers of those say
    TProgress progress("Dark frames", paths.size());
    TImage frame;
    for (std::size_t file = 0; file < paths.size(); ++file) {
        const std::string& path = paths[file];
        std::optional<double> given;
        if (!exposures.empty())
            given = exposures[exposures.size() == 1 ? 0 : file];
        const std::unique_ptr<TImageReader> reader = OpenImage(path, input);
        while (reader->NextPage()) {
            reader->Read(frame);
            const TShot shot = ShotOf(reader->Metadata());
            const std::optional<double> said = shot.SaidSeconds();
            const std::string name = path + ": page " + std::to_string(reader->Page());
            if (!said && !given && unusable.empty() && !shot.unusable.exposure.empty())
                unusable = name + ": " + shot.unusable.exposure + "; --dark-exposure gives it.";
            stacks[said ? said : given].Add(frame, name);
            ThrowIfInterrupted();
        }
        progress.Step();
    }
    nlohmann::json json{{"stacks", nlohmann::json::array()}, {"camera", CameraJson(stacks)}};
    for (const auto& [exposure, stack] : stacks)
        json["stacks"].push_back(StackJson(stack, exposure));
    if (!unusable.empty()) // that stack comes first
        json["stacks"][0]["remarks"].push_back(unusable);
    return json;
}

} // namespace workbench
