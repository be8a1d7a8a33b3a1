// qxbackground apply: corrects images with a correction out of a calibration file.
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "verbs/CorrectionRun.h"
#include "verbs/Verbs.h"

#include <memory>

namespace workbench {

namespace {

struct TApplyOptions {
    std::string file;
    std::string key;
    TCorrectOptions correct;
};

void RunApply(TContext& context, const TApplyOptions& options)
{
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    Call(options.file, [&] { object.SetActive(options.key); });
    CorrectImages(context, object, options.correct, "'" + Printable(options.key) + "' of " + options.file);
}

} // namespace

void AddApplyVerb(TVerb& app, TContext& context)
{
    TVerb& verb = app.AddVerb("apply", "Correct images with a correction from a calibration file");
    const auto options = std::make_shared<TApplyOptions>();
    verb.Reads(TPathKind::Calibration, verb.add_option("file", options->file, "Calibration file")->required());
    verb.add_option("--key", options->key, "Which correction (letter case ignored)")->required();
    AddCorrectOptions(verb, options->correct);
    verb.footer("Examples:\n"
                "  qxbackground apply night.qxb --key dark60 --exposure 60 --intensity 100 light.tif -o corrected.tif\n"
                "  qxbackground apply night.qxb --key dark60 --exposure 60 --intensity 100 lights/ -o corrected/\n" +
                std::string(kSomeFailedHelp));
    verb.Run([&context, options] { RunApply(context, *options); });
}

} // namespace workbench
