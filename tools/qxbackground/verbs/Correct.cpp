// qxbackground correct: dark frames in, corrected images out, nothing kept.
#include "base/Wording.h"
#include "verbs/CorrectionRun.h"
#include "verbs/DarkFrames.h"
#include "verbs/Verbs.h"

#include <memory>

namespace workbench {

namespace {

constexpr char kKey[] = "dark";

struct TCorrectVerbOptions {
    TDarkOptions darks;
    TConditions darkConditions;
    TCorrectOptions correct;
};

void RunCorrect(TContext& context, const TCorrectVerbOptions& options)
{
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    TRunNotes notes;
    const std::string what = [&] {
        const TFrameStack stack = ReadDarks(options.darks, options.correct.input); // freed once the correction is built
        Call(options.darks.files.front(), [&] {
            object.Add(kKey, stack.Pointers(), stack.Size().width, stack.Size().height,
                       static_cast<float>(options.darkConditions.exposureSeconds),
                       static_cast<float>(options.darkConditions.lightIntensityPercent));
        });
        notes = {stack.notes, stack.warnings};
        return DarksText(stack, options.darks) + " (" + options.darkConditions.Text() + ")";
    }();
    Call(what, [&] { object.SetActive(kKey); });
    CorrectImages(context, object, options.correct, what, notes);
}

} // namespace

void AddCorrectVerb(TVerb& app, TContext& context)
{
    TVerb& verb = app.AddVerb("correct", "Build a correction from dark frames and apply it to images");
    const auto options = std::make_shared<TCorrectVerbOptions>();
    AddFrames(verb, "--dark", options->darks.files, "Dark frames; all pages of all files form the stack")->required();
    AddDarkOptions(verb, options->darks);
    AddConditions(verb, "dark-", "the dark frames", options->darkConditions);
    AddCorrectOptions(verb, options->correct);
    verb.footer(
        "Examples:\n"
        "  one image:           qxbackground correct --dark dark.tif --dark-exposure 60 --dark-intensity 100 \\\n"
        "                           --exposure 60 --intensity 100 light.tif -o corrected.tif\n"
        "  a night, by folders: ... --dark darks/ ... lights/ -o corrected/\n"
        "  by a pattern:        ... 'lights/m31*.fits' -o corrected/ --name '{stem}_corrected{ext}'\n" +
        std::string(kSomeFailedHelp));
    verb.Run([&context, options] { RunCorrect(context, *options); });
}

} // namespace workbench
