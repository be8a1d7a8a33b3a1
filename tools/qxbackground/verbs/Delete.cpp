// qxbackground delete: removes one correction from a calibration file.
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "verbs/Verbs.h"

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
    const TFileState before = StateOf(options.file);
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    Call(options.file, [&] { object.Delete(options.key); });
    SaveReplacing(object, options.file, before);
    std::cout << "Deleted '" << Printable(options.key) << "': " << options.file << " holds "
              << Counted(object.Get().GetNumberOfCorrections(), "correction") << '\n';
}

} // namespace

void AddDeleteVerb(const TVerb& app, const TContext& context)
{
    const TVerb verb = app.Add("delete", "Delete a correction from a calibration file");
    const auto options = std::make_shared<TOptions>();
    verb.Option("file", options->file, "Calibration file").Required().Changes(TPathKind::Calibration);
    verb.Option("--key", options->key, "Which correction (letter case ignored)").Required();
    verb.Run([&context, options] { Run(context, *options); });
}

} // namespace workbench
