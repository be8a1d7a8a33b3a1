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
#include "verbs/CorrectionPicture.h"
#include "verbs/CorrectionReport.h"

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

namespace workbench {

namespace {

using QX_KRLSDK::TBackgroundCorrection;

// One page waits while one is corrected and one is written: more would only drive each other out of the caches.
constexpr std::size_t kPagesAhead = 1;

TBackgroundCorrection::TRegion ParseRegion(const std::string& text)
{
    TBackgroundCorrection::TRegion region;
    int used = 0;
    const int count =
        std::sscanf(text.c_str(), "%9d,%9d,%9d,%9d%n", &region.left, &region.top, &region.width, &region.height, &used);
    if (count != 4 || static_cast<std::size_t>(used) != text.size())
        throw TToolError("--region: '" + text + "' is not left,top,width,height");
    return region;
}

void Configure(TBackgroundCorrection& object, const TCorrectOptions& options)
{
    Call("--exposure", [&] {
        object.SetExposureAndIntensity(static_cast<float>(options.conditions.exposureSeconds),
                                       static_cast<float>(options.conditions.lightIntensityPercent));
    });
    Call("--level", [&] { object.SetLevel(options.levelPercent); });
    if (!options.region.empty())
        Call("--region", [&] { object.SetRegion(ParseRegion(options.region)); });
}

// A run, once the correction is ready. Pages are read, measured as they come, and corrected on the thread of the page
// source; measured again and written on this one.
class TCorrectionRun {
public:
    TCorrectionRun(TBackgroundCorrection& correction, const TCorrectOptions& wanted, TCorrectionReport& result,
                   const TRefinement& also)
        : object(correction), options(wanted), report(result), refinement(also),
          sample(wanted.noStatistics     ? TStatisticsSample::TExtent::None
                 : wanted.fullStatistics ? TStatisticsSample::TExtent::All
                                         : TStatisticsSample::TExtent::Some)
    {}

    void IntoOneFile();
    void IntoFolder();

    TImage firstBefore, firstAfter; // when there is to be a picture

private:
    TPageSteps Steps();
    void Treat(const std::string& path, TPage& page);
    void Measure(const TPage& page);
    void TakeAll(TSeparateOutputs& outputs, TProgress& progress);

    TBackgroundCorrection& object;
    const TCorrectOptions& options;
    TCorrectionReport& report;
    TRefinement refinement; // of the region
    TStatisticsSample sample;
    bool hasShown = false; // a page that was corrected
};

void TCorrectionRun::Treat(const std::string& path, TPage& page)
{
    page.before.reset();
    if (sample.Takes(page.image.pixels.size())) {
        page.before = report.before.Add(page.image);
        report.bits.Add(page.image, page.metadata);
    }
    page.isShown = !options.picture.empty() && !hasShown;
    if (page.isShown)
        firstBefore = page.image;
    refinement.Before(page.image);
    Call(path + ": page " + std::to_string(page.number),
         [&] { object.Apply(page.image.pixels.data(), static_cast<int>(page.image.pixels.size())); });
    hasShown = true;
    refinement.After(page.image);
    refinement.RecordIn(page.metadata);
}

void TCorrectionRun::Measure(const TPage& page)
{
    if (!page.failure.empty())
        return;
    if (page.before)
        report.measured.push_back({options.inputs[page.file], page.number, *page.before, report.after.Add(page.image)});
    if (page.isShown)
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
        Measure(page);
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
        Measure(page);
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

void CorrectImages(TContext& context, TBackgroundCorrection& object, const TCorrectOptions& options,
                   const std::string& what, const TCorrectionSetup& setup)
{
    Configure(object, options);
    double factor = 0;
    Call(what, [&] {
        const auto reference = object.Reference();
        factor =
            options.conditions.exposureSeconds * options.conditions.lightIntensityPercent /
            (static_cast<double>(reference.exposureSeconds) * static_cast<double>(reference.lightIntensityPercent));
    });
    if (options.dryRun) {
        SayWhatWouldBeDone(context, options, what, SizeOf(object), factor, setup);
        return;
    }
    TCorrectionReport report;
    report.what = what;
    report.notes = setup.notes;
    report.warnings = setup.warnings;
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
    if (!options.noStatistics)
        report.background.Add(background);

    TRefinement refinement;
    Call(what, [&] {
        const TBackgroundCorrection::TRegion region = object.Region();
        refinement = setup.refinement.Cut(region.left, region.top, {region.width, region.height});
        if (isUnfiltered)
            refinement.rest =
                RestOf(setup.unfiltered, region.left, region.top, factor * options.levelPercent / 100, background);
    });
    if (refinement.noisyPixels.Size().width > 0)
        refinement.noisyPixels.Expect(factor, options.levelPercent / 100.0, refinement.hotPixels);
    for (const std::string& note : refinement.Notes())
        report.notes.push_back(note);
    TCorrectionRun run(object, options, report, refinement);
    if (options.IsBatch())
        run.IntoFolder();
    else
        run.IntoOneFile();

    if (!options.picture.empty())
        report.picture = WriteCorrectionPicture(options.picture, run.firstBefore, background, run.firstAfter,
                                                ExistingFor(options.overwrite));
    AddWarnings(report, options, factor);
    PrintReport(report, options);
    if (!report.failures.empty())
        context.status = kSomeFailed;
}

} // namespace workbench
