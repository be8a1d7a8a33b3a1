// qxbackground apply: corrects images with a correction out of a calibration file.
#include "calibration/CalibrationFile.h"
#include "verbs/CorrectionRun.h"
#include "verbs/Verbs.h"

#include <memory>

namespace workbench {

namespace {

struct TOptions {
    std::string file;
    std::string key;
    TCorrectOptions correct;
};

void Run(const TContext& context, const TOptions& options)
{
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    Call(options.file, [&] { object.SetActive(options.key); });
    CorrectImages(object, options.correct, "'" + Printable(options.key) + "' of " + options.file);
}

} // namespace

void AddApplyVerb(const TVerb& app, const TContext& context)
{
    const TVerb verb = app.Add("apply", "Correct images with a correction from a calibration file");
    const auto options = std::make_shared<TOptions>();
    verb.Option("file", options->file, "Calibration file").Required().Reads(TPathKind::Calibration);
    verb.Option("--key", options->key, "Which correction (letter case ignored)").Required();
    AddCorrectOptions(verb, options->correct);
    verb.Run([&context, options] { Run(context, *options); });
}

} // namespace workbench
