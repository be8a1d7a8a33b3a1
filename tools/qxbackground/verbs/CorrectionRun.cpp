#include "verbs/CorrectionRun.h"

#include "base/Color.h"
#include "base/Interrupts.h"
#include "base/TProgress.h"
#include "base/Wording.h"
#include "batch/TOutputFolder.h"
#include "batch/TPageSource.h"
#include "batch/TSeparateOutputs.h"
#include "batch/TStatisticsSample.h"
#include "images/TImageWriter.h"
#include "stacks/TShotWatch.h"
#include "verbs/CorrectionPicture.h"
#include "verbs/CorrectionReport.h"
#include "verbs/TMeasuring.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace workbench {

namespace {

using QX_KRLSDK::TBackgroundCorrection;

// One page waits while one is corrected and one is written: more would only drive each other out of the caches.
constexpr std::size_t kPagesAhead = 1;

// What the median filter took out of the turn's correction, scaled as the library scales the rest.
std::vector<int> RestFor(const TTurn& turn, const TCorrectOptions& options, const TCorrectionSetup& setup,
                         const TImage& background)
{
    const TBackgroundCorrection::TRegion region = turn.object->Region();
    return RestOf(setup.unfiltered, region.left, region.top, turn.factor * options.levelPercent / 100, background);
}

// A run, once the correction is ready. Pages are read and corrected on the thread of the page source, and written on
// this one, which takes longest.
class TCorrectionRun {
public:
    // `planned` for images that are corrected as `wanted`; its first turn is configured.
    TCorrectionRun(const TCorrectionPlan& planned, const TCorrectOptions& wanted, TCorrectionReport& result,
                   TMeasuring& statistics, const TRefinement& also, const TCorrectionSetup& known)
        : plan(planned), turn(&plan.Turns().front()), options(wanted), report(result), measuring(statistics),
          refinement(also), setup(known), watch(wanted.toleranceCelsius, wanted.olderDays),
          sample(wanted.noStatistics     ? TStatisticsSample::TExtent::None
                 : wanted.fullStatistics ? TStatisticsSample::TExtent::All
                                         : TStatisticsSample::TExtent::Some)
    {}

    void IntoOneFile();
    void IntoFolder();

    // Of the first page that was corrected, when there is to be a picture; the background only where it is not that of
    // the first turn.
    TImage firstBefore, firstBackground, firstAfter;
    std::vector<std::string> Warnings() const { return watch.Warnings(); }

private:
    TPageSteps Steps();
    void Take(const TTurn& next, bool isMeasured);
    void Treat(const std::string& path, TPage& page);
    void KeepShown(const TPage& page);
    void TakeAll(TSeparateOutputs& outputs, TProgress& progress);

    const TCorrectionPlan& plan;
    const TTurn* turn; // that the library is configured for; null when that failed
    const TCorrectOptions& options;
    TCorrectionReport& report;
    TMeasuring& measuring;
    TRefinement refinement; // of the region
    const TCorrectionSetup& setup;
    TShotWatch watch;
    TStatisticsSample sample;
    bool hasShown = false; // a page that was corrected
};

// Another exposure, or another correction.
void TCorrectionRun::Take(const TTurn& next, bool isMeasured)
{
    if (&next == turn)
        return;
    const bool isOtherCorrection = turn == nullptr || turn->object != next.object || turn->key != next.key;
    turn = nullptr;
    if (isOtherCorrection)
        Activate(next, options);
    else
        SetExposure(next, options);
    const bool isUnfiltered = setup.unfiltered.size.width > 0;
    if (isMeasured || isUnfiltered) {
        TImage background;
        Call(next.what, [&] { background = ScaledBackground(*next.object); });
        if (isMeasured)
            measuring.Background(background);
        if (isUnfiltered)
            refinement.rest = RestFor(next, options, setup, background);
    }
    if (refinement.noisyPixels.Size().width > 0)
        refinement.noisyPixels.Expect(next.factor, options.levelPercent / 100.0, refinement.hotPixels);
    turn = &next;
}

void TCorrectionRun::Treat(const std::string& path, TPage& page)
{
    const TTurn& next = plan.For(path, page.file, page.number);
    const bool isMeasured = sample.Takes(page.image.pixels.size());
    if (isMeasured) {
        measuring.Before(page.image);
        report.bits.Add(page.image, page.metadata);
    }
    page.isShown = !options.picture.empty() && !hasShown;
    if (page.isShown)
        firstBefore = page.image;
    Take(next, isMeasured);
    if (page.isShown && turn != &plan.Turns().front())
        Call(turn->what, [&] { firstBackground = ScaledBackground(*turn->object); });
    watch.Add(path, ShotOf(page.metadata), plan.Expected(*turn));
    refinement.Before(page.image);
    Call(path + ": page " + std::to_string(page.number),
         [&] { turn->object->Apply(page.image.pixels.data(), static_cast<int>(page.image.pixels.size())); });
    hasShown = true;
    refinement.After(page.image);
    refinement.RecordIn(page.metadata);
    if (isMeasured)
        measuring.After(page.image, path, page.number);
}

void TCorrectionRun::KeepShown(const TPage& page)
{
    if (page.failure.empty() && page.isShown)
        firstAfter = page.image;
}

TPageSteps TCorrectionRun::Steps()
{
    TPageSteps steps;
    steps.check = [this](const std::string& path, const TImageReader& reader) {
        RequireSize(path, reader, report.size);
    };
    steps.treat = [this](const std::string& path, TPage& page) { Treat(path, page); };
    return steps;
}

void TCorrectionRun::IntoOneFile()
{
    // Looks at every page's header before any work: wrong sizes are told at once, and the number of pages is known.
    TImageFormat format = TImageFormat::Tiff;
    for (const std::string& input : options.inputs) {
        const std::unique_ptr<TImageReader> reader = OpenImage(input, options.input);
        for (; reader->NextPage(); ++report.pages) {
            if (report.pages == 0)
                format = reader->Format();
            RequireSize(input, *reader, report.size);
            ThrowIfInterrupted();
        }
    }
    format = options.outputAs.FormatFor(options.output, format);
    RequireRoom(options.output, format, report.pages);
    const std::unique_ptr<TImageWriter> writer =
        CreateImage(options.output, format, options.outputAs, report.pages * report.size.Pixels() * 2,
                    ExistingFor(options.overwrite));
    TProgress progress("Correcting", report.pages);
    TPageSource source(options.inputs, options.input, Steps(), kPagesAhead);
    TPage page;
    while (source.Take(page)) {
        if (!page.failure.empty())
            throw TToolError(page.failure);
        KeepShown(page);
        writer->Write(page.image, page.metadata);
        progress.Step();
    }
    writer->Close();
    report.statisticsPages = sample.Taken();
}

std::uint64_t BytesOf(const std::string& path)
{
    std::error_code error;
    const std::uintmax_t bytes = std::filesystem::file_size(path, error);
    return error ? 0 : bytes;
}

void TCorrectionRun::TakeAll(TSeparateOutputs& outputs, TProgress& progress)
{
    std::size_t told = 0;
    const auto tell = [&] {
        for (; told < outputs.Failures().size(); ++told) {
            if (options.inputs.size() > 1) // otherwise it is what the command ends with
                progress.Say(ErrorMark("qxbackground:") + " " + Printable(outputs.Failures()[told].why));
        }
    };
    TPageSteps steps = Steps();
    steps.headersFirst = true;
    TPageSource source(options.inputs, options.input, steps, kPagesAhead);
    std::vector<std::uint64_t> bytesBefore{0};
    for (const std::string& input : options.inputs)
        bytesBefore.push_back(bytesBefore.back() + BytesOf(input));
    TPage page;
    while (source.Take(page)) {
        KeepShown(page);
        outputs.Take(page);
        tell();
        const std::uint64_t bytes = bytesBefore[page.file + 1] - bytesBefore[page.file];
        progress.Reach(bytesBefore[page.file] +
                       (page.failure.empty() ? bytes / page.pagesOfFile * page.number : bytes));
    }
    outputs.Finish();
    tell();
}

void TCorrectionRun::IntoFolder()
{
    const TOutputFolder folder(options.output);
    TSeparateOutputs outputs(options.outputs, options.outputAs, ExistingFor(options.overwrite));
    std::uint64_t bytes = 0;
    for (const std::string& input : options.inputs)
        bytes += BytesOf(input);
    const std::size_t all = options.inputs.size();
    const auto soFar = [&] {
        return std::to_string(outputs.Done().size()) + " of " + Counted(all, "file") + " had been corrected";
    };
    try {
        TProgress progress("Correcting", bytes);
        TakeAll(outputs, progress);
    } catch (const TToolError& error) {
        if (Interrupted())
            throw TToolError("interrupted; " + soFar() + ", no unfinished file was left");
        throw TToolError(std::string(error.what()) + "; " + soFar());
    }
    if (outputs.Done().empty())
        throw TToolError(all == 1 ? outputs.Failures().front().why
                                  : "none of " + Counted(all, "file") + " could be corrected (see above)");
    for (const std::size_t file : outputs.Done())
        report.files.push_back({options.inputs[file], options.outputs[file]});
    for (const TSeparateOutputs::TFailure& failure : outputs.Failures())
        report.failures.push_back({options.inputs[failure.file], failure.why});
    report.pages = outputs.PagesDone();
    report.statisticsPages = sample.Taken();
}

} // namespace

TImage ScaledBackground(TBackgroundCorrection& object)
{
    const TBackgroundCorrection::TRegion region = object.Region();
    TImage image;
    image.size = {region.width, region.height};
    image.pixels.assign(image.size.Pixels(), 65535);
    object.Apply(image.pixels.data(), static_cast<int>(image.pixels.size()));
    for (std::uint16_t& pixel : image.pixels)
        pixel = static_cast<std::uint16_t>(65535 - pixel);
    return image;
}

void CorrectImages(TContext& context, const TCorrectionPlan& plan, const TCorrectOptions& options,
                   const TCorrectionSetup& setup)
{
    const TTurn& first = plan.Turns().front();
    TBackgroundCorrection& object = *first.object;
    const std::string& what = first.what;
    Configure(first, options);
    if (options.dryRun) {
        SayWhatWouldBeDone(context, options, plan, SizeOf(object), setup);
        return;
    }
    TCorrectionReport report;
    report.what = plan.What();
    report.conditions = plan.ConditionsText();
    report.notes = plan.Notes();
    report.notes.insert(report.notes.end(), setup.notes.begin(), setup.notes.end());
    report.warnings = setup.warnings;
    for (const std::string& warning : plan.Warnings())
        report.warnings.push_back(warning);
    TImage background;
    const bool isUnfiltered = setup.unfiltered.size.width > 0;
    if (options.noStatistics && options.picture.empty() && !isUnfiltered) {
        Call(what, [&] {
            const TBackgroundCorrection::TRegion region = object.Region();
            report.size = {region.width, region.height};
        });
    } else {
        Call(what, [&] { background = ScaledBackground(object); });
        report.size = background.size;
    }
    TMeasuring measuring(report);
    if (!options.noStatistics)
        measuring.Background(background);

    TRefinement refinement;
    Call(what, [&] {
        const TBackgroundCorrection::TRegion region = object.Region();
        refinement = setup.refinement.Cut(region.left, region.top, {region.width, region.height});
        if (isUnfiltered)
            refinement.rest = RestFor(first, options, setup, background);
    });
    if (refinement.noisyPixels.Size().width > 0)
        refinement.noisyPixels.Expect(first.factor, options.levelPercent / 100.0, refinement.hotPixels);
    for (const std::string& note : refinement.Notes())
        report.notes.push_back(note);
    TCorrectionRun run(plan, options, report, measuring, refinement, setup);
    if (options.IsBatch())
        run.IntoFolder();
    else
        run.IntoOneFile();
    measuring.Finish();

    if (!options.picture.empty())
        report.picture = WriteCorrectionPicture(options.picture, run.firstBefore,
                                                run.firstBackground.pixels.empty() ? background : run.firstBackground,
                                                run.firstAfter, ExistingFor(options.overwrite));
    report.corrections = plan.Used();
    for (const std::string& warning : run.Warnings())
        report.warnings.push_back(warning);
    AddWarnings(report, options, plan.LargestFactor());
    PrintReport(report, options);
    if (!report.failures.empty())
        context.status = kSomeFailed;
}

} // namespace workbench
