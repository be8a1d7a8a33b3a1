// qxbackground correct: dark frames in, corrected images out, nothing kept.
#include "base/Wording.h"
#include "images/TFrameStack.h"
#include "images/TImageReader.h"
#include "verbs/CorrectionRun.h"
#include "verbs/Verbs.h"

#include <memory>

namespace workbench {

namespace {

constexpr char kKey[] = "dark";

struct TOptions {
    std::vector<std::string> darks;
    TConditions darkConditions;
    TCorrectOptions correct;
};

void Run(const TContext& context, const TOptions& options)
{
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    const std::string what = [&] {
        const TFrameStack stack =
            ReadFrames(options.darks, options.correct.input); // freed once the correction is built
        Call(options.darks.front(), [&] {
            object.Add(kKey, stack.Pointers(), stack.size.width, stack.size.height,
                       static_cast<float>(options.darkConditions.exposureSeconds),
                       static_cast<float>(options.darkConditions.lightIntensityPercent));
        });
        return Counted(stack.frames.size(), "dark frame") + " (" + options.darkConditions.Text() + ")";
    }();
    Call(what, [&] { object.SetActive(kKey); });
    CorrectImages(object, options.correct, what);
}

} // namespace

void AddCorrectVerb(TVerb& app, const TContext& context)
{
    TVerb& verb = app.AddVerb("correct", "Build a correction from dark frames and apply it to images");
    const auto options = std::make_shared<TOptions>();
    verb.Reads(TPathKind::Image,
               verb.add_option("--dark", options->darks,
                               std::string("Dark frames: ") + kReadable + "; all pages of all files form the stack")
                   ->required());
    AddConditions(verb, "dark-", "the dark frames", options->darkConditions);
    AddCorrectOptions(verb, options->correct);
    verb.Run([&context, options] { Run(context, *options); });
}

} // namespace workbench
