// qxbackground apply: corrects images with a correction out of a calibration file.
#include "CalibrationFile.h"
#include "CorrectionRun.h"
#include "Verbs.h"

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
    RefuseSameFile(options.correct.output, {options.file});
    RefuseSameFile(options.correct.output, options.correct.inputs);
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    Call(options.file, [&] { object.SetActive(options.key); });
    CorrectImages(object, options.correct, "'" + Printable(options.key) + "' of " + options.file);
}

} // namespace

void AddApplyVerb(CLI::App& app, const TContext& context)
{
    CLI::App* const verb = app.add_subcommand("apply", "Correct images with a correction from a calibration file");
    const auto options = std::make_shared<TOptions>();
    verb->add_option("file", options->file, "Calibration file")->required();
    verb->add_option("--key", options->key, "Which correction (letter case ignored)")->required();
    AddCorrectOptions(*verb, options->correct);
    verb->callback([&context, options] { Run(context, *options); });
}

} // namespace workbench
