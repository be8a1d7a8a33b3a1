// qxbackground correct: dark frames in, corrected images out, nothing kept.
#include "base/TToolError.h"
#include "base/Wording.h"
#include "commandline/Limits.h"
#include "verbs/CorrectionRun.h"
#include "verbs/DarkFrames.h"
#include "verbs/Verbs.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace workbench {

namespace {

constexpr char kKey[] = "dark";

struct TCorrectVerbOptions {
    TDarkOptions darks;
    TConditions darkConditions;
    bool unfiltered = false;
    bool repairsNoisy = false;
    std::string hotSigma; // as it was given; empty: hot pixels stay
    TCorrectOptions correct;
};

void KnowNoise(const TDarkNoise& noise, const TFrameStack& stack, TCorrectionSetup& setup)
{
    constexpr std::uint64_t kFewest = 4;
    if (stack.frames < kFewest)
        throw TToolError("--repair-noisy: needs " + std::to_string(kFewest) + " dark frames or more, not " +
                         std::to_string(stack.frames) + "; their differences tell how noisy a pixel is");
    if (const std::optional<TNoiseLaw> law = noise.Law())
        setup.refinement.noisyPixels = TNoisyPixels(stack.Size(), stack.exact, *law, noise.Measured(), stack.frames);
    else
        setup.warnings.push_back(
            "--repair-noisy did nothing: the dark frames' noise does not grow with their level, as "
            "that of dark current does");
}

void RunCorrect(TContext& context, const TCorrectVerbOptions& options)
{
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    TCorrectionSetup setup;
    TConditions darkConditions = options.darkConditions;
    TShot darks;
    const std::string what = [&] {
        TDarkOptions darkOptions = options.darks;
        darkOptions.stack.keepExact = options.unfiltered;
        TDarkNoise noise;
        // Freed once the correction is built.
        TFrameStack stack = ReadDarks(darkOptions, options.correct.input, "--dark-exposure", darkConditions,
                                      options.repairsNoisy ? &noise : nullptr);
        darks = stack.shot;
        darks.ForgetExposure();
        setup = ReadSetup(options.correct, stack.Size(), options.unfiltered);
        WarnOfOtherCamera(darks, setup.bias, setup.warnings);
        const TCorrectOptions& images = options.correct;
        WarnOfSharedFiles(options.darks.files, "dark frames", images.inputs, "images", setup.warnings);
        WarnOfSharedFiles(images.bias, "bias frames", images.inputs, "images", setup.warnings);
        WarnOfSharedFiles(images.bias, "bias frames", options.darks.files, "dark frames", setup.warnings);
        if (!options.correct.bias.empty()) {
            for (std::size_t i = 0; i < stack.exact.size(); ++i)
                stack.exact[i] -= static_cast<float>(setup.refinement.bias.pixels[i]) + setup.unfiltered.biasRest[i];
            SubtractBias(stack.average, setup.refinement.bias);
        }
        TRefinement& refinement = setup.refinement;
        if (!options.hotSigma.empty()) {
            refinement.hotPixels = THotPixels::Find(stack.average, std::stod(options.hotSigma), options.unfiltered);
            WarnOfManyHotPixels(refinement.hotPixels, setup.warnings);
        }
        if (!options.darks.stack.IsPlain())
            refinement.history.push_back("Dark frames combined: " + DarksText(stack, options.darks));
        Call(options.darks.files.front(), [&] {
            object.Add(kKey, stack.Pointers(), stack.Size().width, stack.Size().height,
                       static_cast<float>(darkConditions.exposureSeconds),
                       static_cast<float>(darkConditions.lightIntensityPercent));
        });
        if (options.repairsNoisy)
            KnowNoise(noise, stack, setup);
        if (options.unfiltered) {
            setup.unfiltered.size = stack.Size();
            setup.unfiltered.dark = std::move(stack.exact);
        }
        setup.notes.insert(setup.notes.begin(), stack.notes.begin(), stack.notes.end());
        setup.warnings.insert(setup.warnings.begin(), stack.warnings.begin(), stack.warnings.end());
        return DarksText(stack, options.darks) + " (" + darkConditions.Text() + ")";
    }();
    Call(what, [&] { object.SetActive(kKey); });
    const TCorrectionPlan plan(options.correct, false, [&](const std::string&, const TShot&, TSize) {
        TTurn turn;
        turn.object = &object;
        turn.key = kKey;
        turn.what = what;
        turn.referenceProduct = darkConditions.Product();
        turn.darks = darks;
        return turn;
    });
    CorrectImages(context, plan, options.correct, setup);
}

} // namespace

void AddCorrectVerb(TVerb& app, TContext& context)
{
    TVerb& verb = app.AddVerb("correct", "Build a correction from dark frames and apply it to images");
    const auto options = std::make_shared<TCorrectVerbOptions>();
    AddFrames(verb, "--dark", options->darks.files, "Dark frames; all pages of all files form the stack")->required();
    AddDarkOptions(verb, options->darks);
    AddConditions(verb, "dark-", "the dark frames", options->darkConditions);
    CLI::Option* const repair =
        verb.add_flag(
                "--repair-hot{5}", options->hotSigma,
                "Replace hot and dead pixels, found in the dark frames, by the median of their good neighbours, after "
                "the correction: the median filter takes them out of it. =SIGMA (5 when left out): how far a pixel "
                "must stand out; see 'hotpixels'")
            ->check(Between(1, 1000));
    verb.add_flag("--unfiltered", options->unfiltered,
                  "Subtract the dark frames as they are, pixel by pixel. Without it the library's 3 x 3 median filter "
                  "smooths them, which is less noisy but leaves what differs from pixel to pixel in the image");
    verb.add_flag(
            "--repair-noisy", options->repairsNoisy,
            "Where dark current makes pixels noisier than most, hot ones or those in a glow, let their neighbours "
            "even that out, as far as they foretell one another: stars and edges stay. Wants --unfiltered and 4 "
            "dark frames or more")
        ->needs(verb.get_option("--unfiltered"));
    AddCorrectOptions(verb, options->correct);
    repair->excludes(verb.get_option("--hot-list"));
    verb.AddNote(kSomeFailedHelp);
    verb.Run([&context, options] { RunCorrect(context, *options); });
}

} // namespace workbench
