#include "verbs/CorrectionSetup.h"

#include "base/TToolError.h"
#include "base/Wording.h"
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
void SayWhatWouldBeDone(TContext& context, const TCorrectOptions& options, const std::string& what, TSize size,
                        double factor, const TCorrectionSetup& setup)
{
    std::string lines;
    std::size_t failing = 0;
    std::uint64_t pages = 0;
    for (std::size_t file = 0; file < options.inputs.size(); ++file) {
        const std::string& input = options.inputs[file];
        try {
            const std::unique_ptr<TImageReader> reader = OpenImage(input, options.input);
            for (; reader->NextPage(); ++pages)
                RequireSize(input, *reader, size);
            lines += "  " + input + " -> " + (options.IsBatch() ? options.outputs[file] : options.output) + '\n';
        } catch (const TToolError& error) {
            ++failing;
            lines += "  cannot be corrected: " + Printable(error.what()) + '\n';
        }
    }
    std::cout << "Would correct " << Counted(pages, "page") << " of "
              << Counted(options.inputs.size() - failing, "file") << " with " << what << ", scaled by "
              << fmt::format("{:.4g}", factor) << "; nothing is written:\n"
              << lines;
    PrintNotes(setup.notes);
    TCorrectionReport report;
    report.warnings = setup.warnings;
    AddWarnings(report, options, factor);
    PrintWarnings(report.warnings);
    if (failing > 0)
        context.status = kSomeFailed;
}

} // namespace workbench
