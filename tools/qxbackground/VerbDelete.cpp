// qxbackground delete: removes one correction from a calibration file.
#include "CalibrationFile.h"
#include "Verbs.h"

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TOptions {
    std::string file;
    std::string key;
};

void Run(const TContext& context, const TOptions& options)
{
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    Call(options.file, [&] { object.Delete(options.key); });
    SaveReplacing(object, options.file);
    std::cout << "Deleted '" << Printable(options.key) << "': " << options.file << " holds "
              << object.Get().GetNumberOfCorrections() << " corrections\n";
}

} // namespace

void AddDeleteVerb(CLI::App& app, const TContext& context)
{
    CLI::App* const verb = app.add_subcommand("delete", "Delete a correction from a calibration file");
    const auto options = std::make_shared<TOptions>();
    verb->add_option("file", options->file, "Calibration file")->required();
    verb->add_option("--key", options->key, "Which correction (letter case ignored)")->required();
    verb->callback([&context, options] { Run(context, *options); });
}

} // namespace workbench
