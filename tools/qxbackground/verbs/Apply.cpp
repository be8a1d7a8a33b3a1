// qxbackground apply: corrects images with a correction out of a calibration file.
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/Choice.h"
#include "images/TImageReader.h"
#include "verbs/CorrectionRun.h"
#include "verbs/Verbs.h"

#include <memory>

namespace workbench {

namespace {

struct TApplyOptions {
    std::string file;
    std::string key;
    bool chooses = false;
    TCorrectOptions correct;
};

// Into the options: the key of the correction that fits the images. What it fits by is returned.
std::string Choose(const TApplyOptions& options, std::string& key)
{
    TWantedCorrection wanted;
    wanted.exposureSeconds = options.correct.conditions.exposureSeconds;
    wanted.lightIntensityPercent = options.correct.conditions.lightIntensityPercent;
    wanted.mayBeLarger = !options.correct.region.empty();
    const std::string& first = options.correct.inputs.front();
    const std::unique_ptr<TImageReader> reader = OpenImage(first, options.correct.input);
    if (!reader->NextPage())
        throw TToolError(first, "holds no image");
    wanted.width = static_cast<std::uint32_t>(reader->Size().width);
    wanted.height = static_cast<std::uint32_t>(reader->Size().height);
    const TChoice choice = ChooseCorrection(options.file, RequireWhole(options.file).corrections, wanted);
    key = choice.key;
    return choice.reason;
}

void RunApply(TContext& context, const TApplyOptions& options)
{
    if (options.key.empty() && !options.chooses)
        throw TToolError("--key or --auto says which correction is meant");
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    std::string key = options.key;
    const std::string reason = options.chooses ? Choose(options, key) : std::string();
    Call(options.file, [&] { object.SetActive(key); });
    TCorrectionSetup setup = ReadSetup(options.correct, SizeOf(object));
    if (!reason.empty())
        setup.notes.insert(setup.notes.begin(), reason);
    CorrectImages(context, object, options.correct, "'" + Printable(key) + "' of " + options.file, setup);
}

} // namespace

void AddApplyVerb(TVerb& app, TContext& context)
{
    TVerb& verb = app.AddVerb("apply", "Correct images with a correction from a calibration file");
    const auto options = std::make_shared<TApplyOptions>();
    verb.Reads(TPathKind::Calibration, verb.add_option("file", options->file, "Calibration file")->required());
    CLI::Option* const key = AddKeyOption(verb, options->key);
    verb.add_flag("--auto", options->chooses,
                  "Choose the correction: of exactly the images' exposure x intensity, else the nearest that is scaled "
                  "down, else the nearest; of the images' size. Says which, and by what factor")
        ->excludes(key);
    AddCorrectOptions(verb, options->correct);
    verb.AddNote(kSomeFailedHelp);
    verb.Run([&context, options] { RunApply(context, *options); });
}

} // namespace workbench
