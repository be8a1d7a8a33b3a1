// qxbackground delete: removes one correction from a calibration file.
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "verbs/ProvenanceRecord.h"
#include "verbs/Verbs.h"

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TDeleteOptions {
    std::string file;
    std::string key;
    bool noProvenance = false;
};

void RunDelete(const TContext& context, const TDeleteOptions& options)
{
    const TFileState before = StateOf(options.file);
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    Call(options.file, [&] { object.Delete(options.key); });
    SaveReplacing(object, options.file, before);
    std::cout << "Deleted '" << Printable(options.key) << "': " << options.file << " holds "
              << Counted(object.Count(), "correction") << '\n';
    if (!options.noProvenance)
        DropProvenance(TCalibrationPlace(options.file), {});
}

} // namespace

void AddDeleteVerb(TVerb& app, const TContext& context)
{
    TVerb& verb = app.AddVerb("delete", "Delete a correction from a calibration file");
    const auto options = std::make_shared<TDeleteOptions>();
    verb.Changes(TPathKind::Calibration, verb.add_option("file", options->file, "Calibration file")->required());
    verb.add_option("--key", options->key, "Which correction (letter case ignored)")->required();
    AddProvenanceOption(verb, options->noProvenance);
    verb.Run([&context, options] { RunDelete(context, *options); });
}

} // namespace workbench
