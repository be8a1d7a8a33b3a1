// qxbackground hotpixels: which pixels of a camera are hot or dead, as a list to be edited.
#include "base/JsonText.h"
#include "base/TextFile.h"
#include "commandline/Limits.h"
#include "verbs/DarkFrames.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct THotPixelsOptions {
    TDarkOptions darks;
    TInputOptions input;
    double sigma = kUsualHotSigma;
    std::string output;
    bool overwrite = false;
    bool json = false;
};

nlohmann::json PixelsJson(const THotPixels& found)
{
    nlohmann::json pixels = nlohmann::json::array();
    for (const THotPixels::TPixel& pixel : found.Pixels())
        pixels.push_back({{"x", pixel.x}, {"y", pixel.y}, {"kind", pixel.dead ? "dead" : "hot"}});
    return pixels;
}

void RunHotPixels(const THotPixelsOptions& options)
{
    const TFrameStack stack = ReadDarks(options.darks, options.input);
    const THotPixels found = THotPixels::Find(stack.average, options.sigma);
    std::vector<std::string> warnings = stack.warnings;
    WarnOfManyHotPixels(found, warnings);
    if (!options.output.empty())
        WriteText(options.output, found.Text(), ExistingFor(options.overwrite));
    if (options.json) {
        nlohmann::json json{{"frames", stack.frames},        {"width", found.Size().width},
                            {"height", found.Size().height}, {"pixels", PixelsJson(found)},
                            {"notes", stack.notes},          {"warnings", warnings}};
        if (!options.output.empty())
            json["output"] = options.output;
        std::cout << JsonText(json);
        return;
    }
    if (options.output.empty()) {
        for (const std::string& warning : warnings)
            std::cout << "# Warning: " << warning << '\n';
        std::cout << found.Text();
        return;
    }
    std::cout << found.Counts() << " of " << found.Size().Text() << " pixels, in " << DarksText(stack, options.darks)
              << ": " << options.output << '\n';
    PrintNotes(stack.notes);
    PrintWarnings(warnings);
}

} // namespace

void AddHotPixelsVerb(TVerb& app)
{
    TVerb& verb = app.AddVerb("hotpixels", "Find hot and dead pixels in dark frames, for --hot-list");
    const auto options = std::make_shared<THotPixelsOptions>();
    verb.Creates(TPathKind::PixelList,
                 verb.add_option("-o,--output", options->output,
                                 "File for the list (default: it is printed). Lines may be added and removed"),
                 options->overwrite);
    verb.add_option("--sigma", options->sigma, kHotSigmaHelp)->check(Between(1, 1000))->capture_default_str();
    AddInputOptions(verb, options->input);
    AddDarkOptions(verb, options->darks);
    AddFrames(verb, "darks", options->darks.files, "Dark frames; all pages form the stack")->required();
    AddJsonOption(verb, options->json);
    verb.Run([options] { RunHotPixels(*options); });
}

} // namespace workbench
