// qxbackground simulate: a camera whose every secret is known.
#include "Camera.h"
#include "Options.h"
#include "Progress.h"
#include "TiffImage.h"
#include "ToolError.h"
#include "Verbs.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <set>

namespace workbench {

namespace {

struct TOptions {
    std::string folder;
    TCameraSettings camera;
    unsigned frames = 10;
    unsigned lights = 1;
    std::vector<double> exposures{1, 2};
};

std::string Number(double value)
{
    char text[40];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

void WriteFile(const std::string& path, const std::string& text)
{
    TReplacedFile replaced(path);
    std::ofstream file(replaced.Temporary(), std::ios::binary);
    file << text;
    file.close();
    if (!file)
        throw TToolError(path, "cannot be written");
    replaced.Commit();
}

std::string Describe(const TOptions& options, const TCamera& camera, const std::vector<std::string>& files)
{
    const TCameraSettings& settings = options.camera;
    const nlohmann::json description{
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
    return description.dump(2) + "\n";
}

void Run(const TOptions& options)
{
    std::set<std::string> names;
    for (const double exposure : options.exposures) {
        if (!names.insert(Number(exposure)).second)
            throw TToolError("--exposures: " + Number(exposure) + " s is given twice");
    }
    std::error_code error;
    std::filesystem::create_directories(options.folder, error);
    if (!std::filesystem::is_directory(options.folder))
        throw TToolError(options.folder, "cannot be made a folder" + (error ? ": " + error.message() : std::string()));

    const TCamera camera(options.camera);
    const std::uint64_t frameBytes = options.camera.size.Pixels() * 2;
    TProgress progress("Simulating", options.exposures.size() * (options.frames + options.lights + 2));
    std::vector<std::string> files;
    const auto write = [&](const std::string& name, unsigned count, auto&& take) {
        if (count == 0)
            return;
        TTiffWriter writer((std::filesystem::path(options.folder) / name).string(), count * frameBytes);
        for (unsigned frame = 0; frame < count; ++frame) {
            writer.Write(take(frame));
            progress.Step();
        }
        writer.Close();
        files.push_back(name);
    };
    for (const double exposure : options.exposures) {
        const std::string suffix = "_" + Number(exposure) + "s.tif";
        write("dark" + suffix, options.frames, [&](unsigned n) { return camera.Take(exposure, n, false); });
        write("light" + suffix, options.lights, [&](unsigned n) { return camera.Take(exposure, n, true); });
        write("truth_scene" + suffix, 1, [&](unsigned) { return camera.TrueScene(exposure); });
        write("truth_background" + suffix, 1, [&](unsigned) { return camera.TrueBackground(exposure); });
    }
    WriteFile((std::filesystem::path(options.folder) / "simulation.json").string(), Describe(options, camera, files));
    std::cout << "Simulated a camera of " << options.camera.size.Text() << " pixels, seed " << options.camera.seed
              << ", in " << options.folder << ":\n";
    for (const std::string& name : files)
        std::cout << "  " << name << '\n';
    std::cout << "  simulation.json (the model's numbers)\n";
}

} // namespace

void AddSimulateVerb(const TVerb& app)
{
    const TVerb verb = app.Add("simulate", "Make dark stacks, light images and their noise-free truth");
    const auto options = std::make_shared<TOptions>();
    TCameraSettings& camera = options->camera;
    verb.Footer("The model, for each pixel and an exposure of t seconds:\n"
                "  charge [e-]  = Poisson(dark current * t) + Poisson(scene * t)\n"
                "  value  [ADU] = offset + column offset + (charge + read noise) / gain, rounded, cut to 0 ... 65535\n"
                "Dark current grows with exposure, the offset does not. Light intensity is 100 % throughout.\n"
                "truth_scene is the light alone, truth_background offset and dark current alone, both without noise.\n"
                "The same options give the same files on every machine.");
    verb.Option("-o,--output", options->folder, "Folder for the files; made when missing").Required();
    verb.Option("--seed", camera.seed, "Which camera and which noise").ShowDefault();
    verb.Option("--width", camera.size.width, "Pixels").BetweenWhole(1, 32767).ShowDefault();
    verb.Option("--height", camera.size.height, "Pixels").BetweenWhole(1, 32767).ShowDefault();
    verb.Option("--frames", options->frames, "Dark frames of each exposure").BetweenWhole(1, 1000000).ShowDefault();
    verb.Option("--lights", options->lights, "Light images of each exposure").BetweenWhole(0, 1000000).ShowDefault();
    verb.Option("--exposures", options->exposures, "Exposure times in seconds, separated by blanks or commas")
        .SplitAt(',')
        .AboveZero()
        .ShowDefault();
    verb.Option("--gain", camera.gainElectronsPerAdu, "e-/ADU").AboveZero().ShowDefault();
    verb.Option("--offset", camera.offsetAdu, "ADU").Between(0.0, 65535.0).ShowDefault();
    verb.Option("--column-offset", camera.columnOffsetSpreadAdu, "Spread of the offset between columns, ADU")
        .Between(0.0, 10000.0)
        .ShowDefault();
    verb.Option("--dark-current", camera.darkElectronsPerSecond, "Mean dark current, e-/s")
        .Between(0.0, 1e6)
        .ShowDefault();
    verb.Option("--hot-pixels", camera.hotPixelFraction, "Fraction of hot pixels").Between(0.0, 1.0).ShowDefault();
    verb.Option("--read-noise", camera.readNoiseElectrons, "e-").Between(0.0, 10000.0).ShowDefault();
    verb.Option("--sky", camera.skyElectronsPerSecond, "Light of the sky, e-/s").Between(0.0, 1e6).ShowDefault();
    verb.Run([options] { Run(*options); });
}

} // namespace workbench
