// qxbackground convert: images from one format to another, nothing else changed.
#include "base/JsonText.h"
#include "base/TProgress.h"
#include "base/TToolError.h"
#include "base/Wording.h"
#include "batch/TPageSource.h"
#include "images/TImageWriter.h"
#include "verbs/Options.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TConvertOptions {
    std::vector<std::string> inputs;
    std::string output;
    TInputOptions input;
    TOutputOptions outputAs;
    bool overwrite = false;
    bool json = false;
};

void RunConvert(const TConvertOptions& options)
{
    // The headers first: how large the file gets, and in which format where its name does not tell.
    std::uint64_t pages = 0, bytes = 0;
    TImageFormat format = TImageFormat::Tiff;
    for (const std::string& input : options.inputs) {
        const std::unique_ptr<TImageReader> reader = OpenImage(input, options.input);
        for (; reader->NextPage(); ++pages) {
            if (pages == 0)
                format = reader->Format();
            bytes += reader->Size().Pixels() * 2;
            ThrowIfInterrupted();
        }
    }
    if (pages == 0)
        throw TToolError(options.inputs.front(), "holds no image");
    format = options.outputAs.FormatFor(options.output, format);
    RequireRoom(options.output, format, pages);
    const std::unique_ptr<TImageWriter> writer =
        CreateImage(options.output, format, options.outputAs, bytes, ExistingFor(options.overwrite));
    TProgress progress("Converting", pages);
    TPageSource source(options.inputs, options.input, {}, 1);
    TPage page;
    while (source.Take(page)) {
        if (!page.failure.empty())
            throw TToolError(page.failure);
        writer->Write(page.image, page.metadata);
        progress.Step();
    }
    writer->Close();
    if (options.json) {
        std::cout << JsonText({{"files", options.inputs}, {"pages", pages}, {"output", options.output}});
        return;
    }
    std::cout << "Converted " << Counted(pages, "page") << " of " << Counted(options.inputs.size(), "file") << ": "
              << options.output << '\n';
}

} // namespace

void AddConvertVerb(TVerb& app)
{
    TVerb& verb = app.AddVerb("convert", "Write images in another format, with the same pixels");
    const auto options = std::make_shared<TConvertOptions>();
    AddInputOptions(verb, options->input);
    AddFrames(verb, "images", options->inputs, "Images; all pages go into one file, in order")->required();
    verb.Creates(TPathKind::Image,
                 verb.add_option("-o,--output", options->output, "16-bit grayscale TIFF, FITS or PNG")->required(),
                 options->overwrite);
    AddOutputOptions(verb, options->outputAs);
    AddJsonOption(verb, options->json);
    verb.Run([options] { RunConvert(*options); });
}

} // namespace workbench
