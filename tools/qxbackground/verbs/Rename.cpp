// qxbackground rename: gives a correction of a calibration file another key. All else in the file stays as it is.
#include "base/JsonText.h"
#include "base/TReplacedFile.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/CorrectionCopy.h"
#include "calibration/Keys.h"
#include "verbs/Options.h"
#include "verbs/ProvenanceRecord.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>
#include <vector>

namespace workbench {

namespace {

struct TRenameOptions {
    std::string file;
    std::string key;
    std::string newKey;
    bool noProvenance = false;
    bool json = false;
};

void RunRename(const TContext& context, const TRenameOptions& options)
{
    CheckKey(options.newKey, "new-key");
    const TFileState before = StateOf(options.file);
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    object.Clear();
    const TCalibrationWalk walk = RequireWhole(options.file);
    const TStoredCorrection* const renamed = FindKey(walk.corrections, options.key);
    if (renamed == nullptr)
        throw TToolError(options.file, "has no correction '" + Printable(options.key) + "'; 'list' shows its keys");
    const TStoredCorrection* const taken = FindKey(walk.corrections, options.newKey);
    if (taken != nullptr && taken != renamed)
        throw TToolError(options.file, "has a correction '" + Printable(taken->key) +
                                           "' already (letter case is ignored); choose another key");
    std::vector<TCopiedCorrection> corrections = CopiesOf(options.file, walk.corrections);
    corrections[static_cast<std::size_t>(renamed - walk.corrections.data())].key = options.newKey;

    TReplacedFile replaced(options.file, before);
    if (!WriteCorrections(replaced.Temporary(), {}, corrections))
        throw TToolError(options.file,
                         "cannot be written: " + replaced.Reason("unknown error") + "; the old file is unchanged");
    const TCalibrationWalk after = WalkCalibrationFile(replaced.Temporary());
    if (!after.Whole() || after.corrections.size() != walk.corrections.size())
        throw TToolError(options.file, "was not written correctly; the old file is unchanged");
    replaced.Commit();
    const TProvenanceOutcome provenance =
        RenameProvenance(TCalibrationPlace(options.file), renamed->key, options.newKey, options.noProvenance);
    if (options.json) {
        nlohmann::json json{{"file", options.file}, {"renamed", renamed->key}, {"key", options.newKey}};
        provenance.AddTo(json);
        std::cout << JsonText(json);
        return;
    }
    std::cout << "Renamed '" << Printable(renamed->key) << "' to '" << Printable(options.newKey) << "' in "
              << options.file << '\n';
    provenance.Print();
}

} // namespace

void AddRenameVerb(TVerb& app, const TContext& context)
{
    TVerb& verb = app.AddVerb("rename", "Give a correction of a calibration file another key");
    const auto options = std::make_shared<TRenameOptions>();
    verb.Changes(TPathKind::Calibration, verb.add_option("file", options->file, "Calibration file")->required());
    AddKeyOption(verb, options->key)->required();
    verb.add_option("new-key", options->newKey, kKeyHelp)->required();
    AddProvenanceOption(verb, options->noProvenance);
    AddJsonOption(verb, options->json);
    verb.Run([&context, options] { RunRename(context, *options); });
}

} // namespace workbench
