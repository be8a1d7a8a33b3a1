// qxbackground simulate: frames of a camera whose true scene and background are known.
#include "base/JsonText.h"
#include "base/TProgress.h"
#include "base/TToolError.h"
#include "base/TextFile.h"
#include "batch/TOutputFolder.h"
#include "camera/TCamera.h"
#include "commandline/Limits.h"
#include "images/TImageWriter.h"
#include "verbs/Options.h"
#include "verbs/Verbs.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <iostream>
#include <memory>
#include <set>

namespace workbench {

namespace {

struct TSimulateOptions {
    std::string folder;
    TCameraSettings camera;
    unsigned frames = 10;
    unsigned lights = 1;
    std::vector<double> exposures{1, 2};
    bool overwrite = false;
    bool json = false;
    TOutputOptions outputAs;

    TImageFormat Format() const { return outputAs.format.value_or(TImageFormat::Tiff); }
};

std::string Number(double value)
{
    return fmt::format("{:g}", value);
}

constexpr char kDescriptionName[] = "simulation.json";

// What one exposure gives: name, and how many pages.
struct TSimulatedFile {
    std::string name;
    unsigned pages = 0;
};

std::vector<TSimulatedFile> FilesOf(const TSimulateOptions& options, double exposure)
{
    const char* const ending = options.Format() == TImageFormat::Fits  ? "s.fits"
                               : options.Format() == TImageFormat::Png ? "s.png"
                                                                       : "s.tif";
    const std::string suffix = "_" + Number(exposure) + ending;
    return {{"dark" + suffix, options.frames},
            {"light" + suffix, options.lights},
            {"truth_scene" + suffix, 1},
            {"truth_background" + suffix, 1}};
}

std::string PathOf(const TSimulateOptions& options, const std::string& name)
{
    return (std::filesystem::path(options.folder) / name).string();
}

void AddFiles(const TSimulateOptions& options, const std::string& option, TPathPlan& plan)
{
    if (options.folder == "-")
        RefuseUnwritable(options.folder);
    std::set<std::string> names{kDescriptionName};
    for (const double exposure : options.exposures) {
        for (const TSimulatedFile& file : FilesOf(options, exposure)) {
            if (file.pages > 0)
                names.insert(file.name);
        }
    }
    for (const std::string& name : names)
        plan.AddFileInNewFolder(option, TPathUse::Creates, PathOf(options, name));
}

std::string Describe(const TSimulateOptions& options, const TCamera& camera, const std::vector<std::string>& files)
{
    const TCameraSettings& settings = options.camera;
    nlohmann::json description{
        {"model", "value[ADU] = offset + column offset + (Poisson(dark * t) + Poisson(scene * t) + read noise) / gain"},
        {"seed", settings.seed},
        {"width", settings.size.width},
        {"height", settings.size.height},
        {"exposuresSeconds", options.exposures},
        {"lightIntensityPercent", 100},
        {"gainElectronsPerAdu", settings.gainElectronsPerAdu},
        {"offsetAdu", settings.offsetAdu},
        {"columnOffsetSpreadAdu", settings.columnOffsetSpreadAdu},
        {"darkElectronsPerSecond", settings.darkElectronsPerSecond},
        {"hotPixels", camera.HotPixels()},
        {"readNoiseElectrons", settings.readNoiseElectrons},
        {"skyElectronsPerSecond", settings.skyElectronsPerSecond},
        {"files", files}};
    // Of a camera without them the description stays as it always was.
    const TCameraSettings usual;
    if (settings.glow != usual.glow)
        description["glow"] = settings.glow;
    if (settings.cosmicRaysPerSecond != usual.cosmicRaysPerSecond)
        description["cosmicRaysPerSecond"] = settings.cosmicRaysPerSecond;
    if (settings.driftAdu != usual.driftAdu)
        description["driftAdu"] = settings.driftAdu;
    if (settings.bits != usual.bits)
        description["bits"] = settings.bits;
    return JsonText(description);
}

void RunSimulate(const TSimulateOptions& options)
{
    std::set<std::string> names;
    for (const double exposure : options.exposures) {
        if (!names.insert(Number(exposure)).second)
            throw TToolError("--exposure: " + Number(exposure) + " s is given twice");
        for (const TSimulatedFile& file : FilesOf(options, exposure))
            RequireRoom(PathOf(options, file.name), options.Format(), file.pages);
    }
    const TOutputFolder folder(options.folder);
    const TCamera camera(options.camera);
    const std::uint64_t frameBytes = options.camera.size.Pixels() * 2;
    TProgress progress("Simulating", options.exposures.size() * (options.frames + options.lights + 2));
    std::vector<std::string> files;
    TPageMetadata metadata;
    const auto write = [&](const TSimulatedFile& file, auto&& take) {
        if (file.pages == 0)
            return;
        const std::unique_ptr<TImageWriter> writer =
            CreateImage(PathOf(options, file.name), options.Format(), options.outputAs, file.pages * frameBytes,
                        ExistingFor(options.overwrite));
        for (unsigned frame = 0; frame < file.pages; ++frame) {
            writer->Write(take(frame), metadata);
            progress.Step();
        }
        writer->Close();
        files.push_back(file.name);
    };
    for (const double exposure : options.exposures) {
        metadata.exposureSeconds = exposure;
        const std::vector<TSimulatedFile> wanted = FilesOf(options, exposure);
        write(wanted[0], [&](unsigned n) { return camera.Take(exposure, n, false); });
        write(wanted[1], [&](unsigned n) { return camera.Take(exposure, n, true); });
        write(wanted[2], [&](unsigned) { return camera.TrueScene(exposure); });
        write(wanted[3], [&](unsigned) { return camera.TrueBackground(exposure); });
    }
    const std::string description = Describe(options, camera, files);
    WriteText(PathOf(options, kDescriptionName), description, ExistingFor(options.overwrite));
    if (options.json) {
        std::cout << description;
        return;
    }
    std::cout << "Simulated a camera of " << options.camera.size.Text() << " pixels, seed " << options.camera.seed
              << ", in " << options.folder << ":\n";
    for (const std::string& name : files)
        std::cout << "  " << name << '\n';
    std::cout << "  " << kDescriptionName << " (the model's numbers)\n";
}

} // namespace

void AddSimulateVerb(TVerb& app)
{
    TVerb& verb = app.AddVerb("simulate", "Make dark stacks, light images and their noise-free truth");
    const auto options = std::make_shared<TSimulateOptions>();
    TCameraSettings& camera = options->camera;
    verb.AddNote("The model, for each pixel and an exposure of t seconds:\n"
                 "  charge [e-]  = Poisson(dark current * t) + Poisson(scene * t)\n"
                 "  value  [ADU] = offset + column offset + (charge + read noise) / gain,\n"
                 "                 rounded, cut to 0 ... 65535\n"
                 "Dark current grows with exposure, the offset does not. Light intensity is 100 % throughout. "
                 "truth_scene is the light alone, truth_background offset and dark current alone, both without noise. "
                 "The same options give the same files on every machine.");
    verb.Creates(TPathKind::Folder,
                 verb.add_option("-o,--output", options->folder, "Folder for the files; made when missing")->required(),
                 options->overwrite,
                 [options](const std::string& option, TPathPlan& plan) { AddFiles(*options, option, plan); });
    verb.add_option("--seed", camera.seed, "Which camera and which noise")->capture_default_str();
    verb.add_option("--width", camera.size.width, "Width of the frames")
        ->check(BetweenWhole(1, 32767))
        ->capture_default_str();
    verb.add_option("--height", camera.size.height, "Height of the frames")
        ->check(BetweenWhole(1, 32767))
        ->capture_default_str();
    verb.add_option("--frames", options->frames, "Dark frames of each exposure")
        ->check(BetweenWhole(1, 1000000))
        ->capture_default_str();
    verb.add_option("--lights", options->lights, "Light images of each exposure")
        ->check(BetweenWhole(0, 1000000))
        ->capture_default_str();
    verb.add_option("--exposure,--exposures", options->exposures,
                    "Exposure times in seconds, separated by blanks or commas")
        ->delimiter(',')
        ->check(AboveZero())
        ->capture_default_str();
    verb.add_option("--gain", camera.gainElectronsPerAdu, "Electrons for each ADU")
        ->check(AboveZero())
        ->capture_default_str();
    verb.add_option("--offset", camera.offsetAdu, "What the camera adds to every pixel")
        ->check(Between(0.0, 65535.0))
        ->capture_default_str();
    verb.add_option("--column-offset", camera.columnOffsetSpreadAdu, "Spread of the offset between columns")
        ->check(Between(0.0, 10000.0))
        ->capture_default_str();
    verb.add_option("--dark-current", camera.darkElectronsPerSecond, "Mean dark current")
        ->check(Between(0.0, 1e6))
        ->capture_default_str();
    verb.add_option("--hot-pixels", camera.hotPixelFraction, "Fraction of hot pixels")
        ->check(Between(0.0, 1.0))
        ->capture_default_str();
    verb.add_option("--read-noise", camera.readNoiseElectrons, "Noise of reading a pixel")
        ->check(Between(0.0, 10000.0))
        ->capture_default_str();
    verb.add_option("--sky", camera.skyElectronsPerSecond, "Light of the sky")
        ->check(Between(0.0, 1e6))
        ->capture_default_str();
    verb.add_option("--glow", camera.glow, "How much of the dark current a glow adds in one corner")
        ->check(Between(0.0, 1000.0))
        ->capture_default_str();
    verb.add_option("--cosmic-rays", camera.cosmicRaysPerSecond,
                    "Mean number of cosmic rays in each second of a dark frame")
        ->check(Between(0.0, 10000.0))
        ->capture_default_str();
    verb.add_option("--drift", camera.driftAdu,
                    "By how much the level of dark frames drifts, from below to above the camera's own within ten "
                    "frames")
        ->check(Between(0.0, 10000.0))
        ->capture_default_str();
    verb.add_option("--bits", camera.bits, "Bits of a pixel; higher values are cut off")
        ->check(BetweenWhole(8, 16))
        ->capture_default_str();
    AddOutputOptions(verb, options->outputAs);
    AddJsonOption(verb, options->json);
    verb.Run([options] { RunSimulate(*options); });
}

} // namespace workbench
