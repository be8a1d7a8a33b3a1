// qxbackground export: one stored correction as an image, for other programs.
#include "base/JsonText.h"
#include "base/TToolError.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "images/TImageWriter.h"
#include "verbs/CorrectionRun.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TExportOptions {
    std::string file;
    std::string key;
    std::string output;
    TOutputOptions outputAs;
    bool overwrite = false;
    bool json = false;
};

void RunExport(const TContext& context, const TExportOptions& options)
{
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    TImage background;
    TConditions conditions;
    Call(options.file + ": key '" + Printable(options.key) + "'", [&] {
        object.SetActive(options.key);
        const auto reference = object.Reference();
        // At its own exposure and intensity the background is scaled by exactly 1.
        object.SetExposureAndIntensity(reference.exposureSeconds, reference.lightIntensityPercent);
        background = ScaledBackground(object);
        conditions = {static_cast<double>(reference.exposureSeconds),
                      static_cast<double>(reference.lightIntensityPercent)};
    });
    TPageMetadata metadata;
    if (conditions.exposureSeconds > 0)
        metadata.exposureSeconds = conditions.exposureSeconds;
    metadata.description = "Background correction '" + Printable(options.key) + "' (" + conditions.Text() + ")";
    const std::unique_ptr<TImageWriter> writer =
        CreateImage(options.output, options.outputAs.FormatFor(options.output, TImageFormat::Tiff), options.outputAs,
                    background.pixels.size() * 2, ExistingFor(options.overwrite));
    writer->Write(background, metadata);
    writer->Close();
    if (options.json) {
        std::cout << JsonText({{"file", options.file},
                               {"key", options.key},
                               {"exposureSeconds", conditions.exposureSeconds},
                               {"lightIntensityPercent", conditions.lightIntensityPercent},
                               {"width", background.size.width},
                               {"height", background.size.height},
                               {"output", options.output}});
        return;
    }
    std::cout << "Exported '" << Printable(options.key) << "' (" << conditions.Text() << ", " << background.size.Text()
              << " pixels): " << options.output << '\n';
}

} // namespace

void AddExportVerb(TVerb& app, const TContext& context)
{
    TVerb& verb = app.AddVerb("export", "Write a stored correction as an image, with the values that are stored");
    const auto options = std::make_shared<TExportOptions>();
    verb.Reads(TPathKind::Calibration, verb.add_option("file", options->file, "Calibration file")->required());
    AddKeyOption(verb, options->key)->required();
    verb.Creates(TPathKind::Image,
                 verb.add_option("-o,--output", options->output, "16-bit grayscale TIFF, FITS or PNG")->required(),
                 options->overwrite);
    AddOutputOptions(verb, options->outputAs);
    AddJsonOption(verb, options->json);
    verb.Run([&context, options] { RunExport(context, *options); });
}

} // namespace workbench
