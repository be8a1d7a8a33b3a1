#include "verbs/CorrectionSetup.h"

#include "base/JsonText.h"
#include "base/TToolError.h"
#include "base/Wording.h"
#include "images/TImageWriter.h"
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
    TCorrectionReport report;
    report.notes = setup.notes;
    report.warnings = setup.warnings;
    AddWarnings(report, options, factor);
    std::string lines;
    for (std::size_t file = 0; file < options.inputs.size(); ++file) {
        const std::string& input = options.inputs[file];
        try {
            std::uint64_t pagesOfFile = 0;
            const std::unique_ptr<TImageReader> reader = OpenImage(input, options.input);
            const std::string& output = options.IsBatch() ? options.outputs[file] : options.output;
            for (; reader->NextPage(); ++pagesOfFile)
                RequireSize(input, *reader, size);
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
    if (!report.failures.empty())
        context.status = kSomeFailed;
    if (options.json) {
        nlohmann::json json = RunJson(report, options);
        json["dryRun"] = true;
        json["correction"] = what;
        json["factor"] = factor;
        std::cout << JsonText(json);
        return;
    }
    std::cout << "Would correct " << Counted(report.pages, "page") << " of " << Counted(report.files.size(), "file")
              << " with " << what << ", scaled by " << fmt::format("{:.4g}", factor) << "; nothing is written:\n"
              << lines;
    PrintNotes(report.notes);
    PrintWarnings(report.warnings);
}

} // namespace workbench
