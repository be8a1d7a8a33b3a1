// qxbackground import: copies the corrections of one calibration file into another.
#include "CalibrationFile.h"
#include "Options.h"
#include "Verbs.h"

#include <filesystem>
#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TOptions {
    std::string destination;
    std::string source;
    bool overwrite = false;
};

void Run(const TContext& context, const TOptions& options)
{
    RefuseSameFile(options.destination, {options.source});
    const QX_KRLSDK::TBackgroundCorrectionLibrary library = context.Library();
    QX_KRLSDK::TBackgroundCorrection destination = library.MakeProcessor();
    QX_KRLSDK::TBackgroundCorrection source = library.MakeProcessor();
    if (std::filesystem::exists(options.destination))
        LoadWhole(destination, options.destination);
    LoadWhole(source, options.source);
    const unsigned int before = destination.Get().GetNumberOfCorrections();
    Call(options.source, [&] { destination.Import(source, options.overwrite); });
    SaveReplacing(destination, options.destination);
    const unsigned int added = destination.Get().GetNumberOfCorrections() - before;
    const unsigned int present = source.Get().GetNumberOfCorrections() - added;
    std::cout << "Imported into " << options.destination << ": " << added << " added, " << present
              << (options.overwrite ? " overwritten" : " already there and kept") << '\n';
}

} // namespace

void AddImportVerb(const TVerb& app, const TContext& context)
{
    const TVerb verb = app.Add("import", "Copy corrections from one calibration file into another");
    const auto options = std::make_shared<TOptions>();
    verb.Option("dest", options->destination, "File to add to; created when missing").Required();
    verb.Option("src", options->source, "File to copy from; not changed").Required();
    verb.Flag("--overwrite", options->overwrite, "Replace corrections whose key is there already");
    verb.Run([&context, options] { Run(context, *options); });
}

} // namespace workbench
