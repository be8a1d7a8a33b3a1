#include "verbs/CorrectionSetup.h"

#include "base/TToolError.h"
#include "base/Wording.h"
#include "stacks/TShotWatch.h"
#include "verbs/CorrectionReport.h"
#include "verbs/DarkFrames.h"

#include <fmt/format.h>

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

TCorrectionSetup ReadSetup(const TCorrectOptions& options, TSize size)
{
    TCorrectionSetup setup;
    setup.refinement.pedestal = options.pedestal;
    if (!options.bias.empty()) {
        TFrameStack bias = ReadBias(options.bias, options.input, size);
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
    std::string lines;
    std::size_t failing = 0;
    std::uint64_t pages = 0;
    for (std::size_t file = 0; file < options.inputs.size(); ++file) {
        const std::string& input = options.inputs[file];
        try {
            const std::unique_ptr<TImageReader> reader = OpenImage(input, options.input);
            for (; reader->NextPage(); ++pages) {
                RequireSize(input, *reader, size);
                const TTurn& turn = plan.For(input, file, reader->Page());
                watch.Add(input, ShotOf(reader->Metadata()), plan.Expected(turn));
            }
            lines += "  " + input + " -> " + (options.IsBatch() ? options.outputs[file] : options.output) + '\n';
        } catch (const TToolError& error) {
            ++failing;
            lines += "  cannot be corrected: " + Printable(error.what()) + '\n';
        }
    }
    std::string factors = fmt::format("{:.4g}", plan.LeastFactor());
    if (const std::string largest = fmt::format("{:.4g}", plan.LargestFactor()); largest != factors)
        factors += " to " + largest;
    std::cout << "Would correct " << Counted(pages, "page") << " of "
              << Counted(options.inputs.size() - failing, "file") << " with " << plan.What() << ", scaled by "
              << factors << "; nothing is written:\n"
              << lines;
    PrintNotes(plan.Notes());
    PrintNotes(setup.notes);
    TCorrectionReport report;
    report.warnings = setup.warnings;
    for (const std::string& warning : plan.Warnings())
        report.warnings.push_back(warning);
    for (const std::string& warning : watch.Warnings())
        report.warnings.push_back(warning);
    AddWarnings(report, options, plan.LargestFactor());
    PrintWarnings(report.warnings);
    if (failing > 0)
        context.status = kSomeFailed;
}

} // namespace workbench
