// qxbackground delete: removes one correction from a calibration file.
#include "base/JsonText.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "verbs/Options.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TDeleteOptions {
    std::string file;
    std::string key;
    bool json = false;
};

void RunDelete(const TContext& context, const TDeleteOptions& options)
{
    const TFileState before = StateOf(options.file);
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    Call(options.file, [&] { object.Delete(options.key); });
    SaveReplacing(object, options.file, before);
    if (options.json) {
        std::cout << JsonText({{"file", options.file}, {"deleted", options.key}, {"corrections", object.Count()}});
        return;
    }
    std::cout << "Deleted '" << Printable(options.key) << "': " << options.file << " holds "
              << Counted(object.Count(), "correction") << '\n';
}

} // namespace

void AddDeleteVerb(TVerb& app, const TContext& context)
{
    TVerb& verb = app.AddVerb("delete", "Delete a correction from a calibration file");
    const auto options = std::make_shared<TDeleteOptions>();
    verb.Changes(TPathKind::Calibration, verb.add_option("file", options->file, "Calibration file")->required());
    AddKeyOption(verb, options->key)->required();
    AddJsonOption(verb, options->json);
    verb.Run([&context, options] { RunDelete(context, *options); });
}

} // namespace workbench
