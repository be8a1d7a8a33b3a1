#include "verbs/CorrectionSetup.h"

#include "base/JsonText.h"
#include "base/TToolError.h"
#include "base/Wording.h"
#include "images/TImageWriter.h"
#include "stacks/TShotWatch.h"
#include "verbs/CorrectionReport.h"
#include "verbs/DarkFrames.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>
#include <utility>

namespace workbench {

void RequireSize(const std::string& path, const TImageReader& reader, const TSize& wanted)
{
    if (reader.Size() != wanted)
        throw TToolError(path, reader.Page(),
                         "is " + reader.Size().Text() + " pixels, the correction's region is " + wanted.Text());
}

TSize SizeOf(const QX_KRLSDK::TBackgroundCorrection& object)
{
    const QX_KRLSDK::TBackgroundCorrection::TRegion region = object.Region();
    return {region.width, region.height};
}

TCorrectionSetup ReadSetup(const TCorrectOptions& options, TSize size, bool unfiltered)
{
    TCorrectionSetup setup;
    setup.refinement.pedestal = options.pedestal;
    if (!options.bias.empty()) {
        TFrameStack bias = ReadBias(options.bias, options.input, size, unfiltered);
        for (std::size_t i = 0; i < bias.exact.size(); ++i)
            bias.exact[i] -= bias.average.pixels[i];
        setup.unfiltered.biasRest = std::move(bias.exact);
        setup.refinement.bias = std::move(bias.average);
        setup.refinement.biasFrames = bias.frames;
        setup.warnings = bias.warnings;
        setup.bias = bias.shot;
    }
    if (!options.hotList.empty()) {
        setup.refinement.hotPixels = THotPixels::Read(options.hotList);
        if (setup.refinement.hotPixels.Size() != size)
            throw TToolError(options.hotList, "is for frames of " + setup.refinement.hotPixels.Size().Text() +
                                                  " pixels, the dark frames are " + size.Text());
    }
    return setup;
}

// Which images the run would correct, and which of them it could not.
void SayWhatWouldBeDone(TContext& context, const TCorrectOptions& options, const TCorrectionPlan& plan, TSize size,
                        const TCorrectionSetup& setup)
{
    TShotWatch watch(options.toleranceCelsius, options.olderDays);
    TCorrectionReport report;
    report.notes = plan.Notes();
    report.notes.insert(report.notes.end(), setup.notes.begin(), setup.notes.end());
    report.warnings = setup.warnings;
    report.corrections = plan.Used();
    std::string lines;
    for (std::size_t file = 0; file < options.inputs.size(); ++file) {
        const std::string& input = options.inputs[file];
        try {
            std::uint64_t pagesOfFile = 0;
            const std::unique_ptr<TImageReader> reader = OpenImage(input, options.input);
            const std::string& output = options.IsBatch() ? options.outputs[file] : options.output;
            for (; reader->NextPage(); ++pagesOfFile) {
                RequireSize(input, *reader, size);
                const TTurn& turn = plan.For(input, file, reader->Page());
                watch.Add(input, ShotOf(reader->Metadata()), plan.Expected(turn));
            }
            RequireRoom(output, options.outputAs.FormatFor(output, reader->Format()),
                        options.IsBatch() ? pagesOfFile : report.pages + pagesOfFile);
            report.pages += pagesOfFile;
            report.files.push_back({input, output});
            lines += "  " + input + " -> " + output + '\n';
        } catch (const TToolError& error) {
            report.failures.push_back({input, error.what()});
            lines += "  cannot be corrected: " + Printable(error.what()) + '\n';
        }
    }
    for (const std::vector<std::string>& more : {plan.Warnings(), watch.Warnings()})
        report.warnings.insert(report.warnings.end(), more.begin(), more.end());
    AddWarnings(report, options, plan.LargestFactor());
    std::string factors = fmt::format("{:.4g}", plan.LeastFactor());
    if (const std::string largest = fmt::format("{:.4g}", plan.LargestFactor()); largest != factors)
        factors += " to " + largest;
    if (!report.failures.empty())
        context.status = kSomeFailed;
    if (options.json) {
        nlohmann::json json = RunJson(report, options);
        json["dryRun"] = true;
        json["correction"] = plan.What();
        json["factor"] = plan.LargestFactor();
        std::cout << JsonText(json);
        return;
    }
    std::cout << "Would correct " << Counted(report.pages, "page") << " of " << Counted(report.files.size(), "file")
              << " with " << plan.What() << ", scaled by " << factors << "; nothing is written:\n"
              << lines;
    PrintNotes(report.notes);
    PrintWarnings(report.warnings);
}

} // namespace workbench
