// qxbackground import: copies the corrections of one calibration file into another.
#include "base/JsonText.h"
#include "calibration/CalibrationFile.h"
#include "calibration/Salvage.h"
#include "verbs/Options.h"
#include "verbs/ProvenanceRecord.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TImportOptions {
    std::string destination;
    std::string source;
    bool overwrite = false;
    bool salvage = false;
    bool noProvenance = false;
    bool json = false;
};

// A damaged group file may be the source of what is salvaged.
TCalibrationPlace SourceOf(const std::string& path)
{
    try {
        if (!WalkCalibrationFile(path).groupingNames.empty())
            return TCalibrationPlace(FindStore(path, {}));
    } catch (const TToolError&) {
        // a group file that lost its name, or the names in it
    }
    return TCalibrationPlace(path);
}

void RunImport(const TContext& context, const TImportOptions& options)
{
    const TFileState before = StateOf(options.destination);
    const QX_KRLSDK::TBackgroundCorrectionLibrary library = context.Library();
    QX_KRLSDK::TBackgroundCorrection destination = library.MakeProcessor();
    QX_KRLSDK::TBackgroundCorrection source = library.MakeProcessor();
    if (before.exists)
        LoadWhole(destination, options.destination);
    TSalvaged salvaged;
    if (options.salvage)
        salvaged = LoadWhatIsWhole(context, source, options.source);
    else
        LoadWhole(source, options.source);
    const unsigned int had = destination.Count();
    const std::vector<std::string> copied = CopiedKeys(source, destination, options.overwrite);
    Call(options.source, [&] { destination.Import(source, options.overwrite); });
    SaveReplacing(destination, options.destination, before);
    const TProvenanceOutcome provenance =
        CopyProvenance(SourceOf(options.source), TCalibrationPlace(options.destination), copied, TCopyInto::Among,
                       options.noProvenance);
    const unsigned int added = destination.Count() - had;
    const unsigned int present = source.Count() - added;
    if (options.json) {
        nlohmann::json json{{"file", options.destination},
                            {"source", options.source},
                            {"added", added},
                            {options.overwrite ? "overwritten" : "kept", present},
                            {"lost", salvaged.losses}};
        provenance.AddTo(json);
        std::cout << JsonText(json);
        return;
    }
    std::cout << "Imported into " << options.destination << ": " << added << " added, " << present
              << (options.overwrite ? " overwritten" : " already there and kept") << '\n';
    if (options.salvage && salvaged.losses.empty())
        std::cout << "Nothing was lost: " << options.source << " loads whole.\n";
    for (const std::string& loss : salvaged.losses)
        std::cout << "Damaged or lost in " << options.source << ": " << loss << '\n';
    provenance.Print();
}

} // namespace

void AddImportVerb(TVerb& app, const TContext& context)
{
    TVerb& verb = app.AddVerb("import", "Copy corrections from one calibration file into another");
    const auto options = std::make_shared<TImportOptions>();
    verb.Changes(TPathKind::Calibration,
                 verb.add_option("file", options->destination, "File to add to; created when missing")->required());
    verb.Reads(TPathKind::Calibration,
               verb.add_option("source", options->source, "File to copy from; not changed")->required());
    verb.add_flag("--overwrite", options->overwrite, "Replace corrections whose key is there already");
    verb.add_flag("--salvage", options->salvage,
                  "Take what is whole out of a damaged file, or a damaged group file, and say what is lost");
    AddProvenanceOption(verb, options->noProvenance);
    AddJsonOption(verb, options->json);
    verb.Run([&context, options] { RunImport(context, *options); });
}

} // namespace workbench
