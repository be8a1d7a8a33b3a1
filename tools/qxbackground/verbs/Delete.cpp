// qxbackground delete: removes one correction from a calibration file.
#include "base/JsonText.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "verbs/Options.h"
#include "verbs/ProvenanceRecord.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TDeleteOptions {
    std::string file;
    std::string key;
    bool noProvenance = false;
    bool json = false;
};

void RunDelete(const TContext& context, const TDeleteOptions& options)
{
    const TFileState before = StateOf(options.file);
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    Call(options.file, [&] { object.Delete(options.key); });
    SaveReplacing(object, options.file, before);
    const TProvenanceOutcome provenance = DropProvenance(TCalibrationPlace(options.file), {}, options.noProvenance);
    if (options.json) {
        nlohmann::json json{{"file", options.file}, {"deleted", options.key}, {"corrections", object.Count()}};
        provenance.AddTo(json);
        std::cout << JsonText(json);
        return;
    }
    std::cout << "Deleted '" << Printable(options.key) << "': " << options.file << " holds "
              << Counted(object.Count(), "correction") << '\n';
    provenance.Print();
}

} // namespace

void AddDeleteVerb(TVerb& app, const TContext& context)
{
    TVerb& verb = app.AddVerb("delete", "Delete a correction from a calibration file");
    const auto options = std::make_shared<TDeleteOptions>();
    verb.Changes(TPathKind::Calibration, verb.add_option("file", options->file, "Calibration file")->required());
    AddKeyOption(verb, options->key)->required();
    AddProvenanceOption(verb, options->noProvenance);
    AddJsonOption(verb, options->json);
    verb.Run([&context, options] { RunDelete(context, *options); });
}

} // namespace workbench
