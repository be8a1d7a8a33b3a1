// qxbackground build: makes a calibration file, or adds a correction to one.
#include "base/JsonText.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/Doubts.h"
#include "calibration/Keys.h"
#include "verbs/DarkFrames.h"
#include "verbs/Options.h"
#include "verbs/ProvenanceRecord.h"
#include "verbs/TBuildProvenance.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TBuildOptions {
    std::string file;
    std::string key;
    TConditions conditions;
    TDarkOptions darks;
    TInputOptions input;
    bool noProvenance = false;
    bool json = false;
};

void RunBuild(const TContext& context, const TBuildOptions& options)
{
    CheckKey(options.key, "--key");
    const TFileState before = StateOf(options.file);
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    if (before.exists)
        LoadWhole(object, options.file);
    TConditions conditions = options.conditions;
    TBuildProvenance recorder(options.darks, options.input, options.noProvenance);
    TFrameStack stack = ReadDarks(options.darks, options.input, "--exposure", conditions, nullptr, recorder.Digests());
    Call(options.file, [&] {
        object.Add(options.key, stack.Pointers(), stack.Size().width, stack.Size().height,
                   static_cast<float>(conditions.exposureSeconds),
                   static_cast<float>(conditions.lightIntensityPercent));
    });
    SaveReplacing(object, options.file, before);
    const std::vector<std::string> doubts =
        HotterThanLonger(options.file, WalkCalibrationFile(options.file).corrections, options.key);
    stack.warnings.insert(stack.warnings.end(), doubts.begin(), doubts.end());
    const TProvenanceOutcome provenance = recorder.Record(TCalibrationPlace(options.file), options.key, stack);
    if (options.json) {
        nlohmann::json json = DarksJson(stack, options.darks, conditions);
        json["file"] = options.file;
        json["key"] = options.key;
        json["corrections"] = object.Count();
        provenance.AddTo(json);
        std::cout << JsonText(json);
        return;
    }
    std::cout << (before.exists ? "Added '" : "Created the file with '") << Printable(options.key) << "' from "
              << DarksText(stack, options.darks) << " of " << stack.Size().Text() << " pixels (" << conditions.Text()
              << "): " << options.file << " holds " << Counted(object.Count(), "correction") << '\n';
    PrintNotes(stack.notes);
    PrintWarnings(stack.warnings);
    provenance.Print();
}

} // namespace

void AddBuildVerb(TVerb& app, const TContext& context)
{
    TVerb& verb = app.AddVerb("build", "Build a correction from dark frames and keep it in a calibration file");
    const auto options = std::make_shared<TBuildOptions>();
    verb.Changes(
        TPathKind::Calibration,
        verb.add_option("file", options->file, "Calibration file: created, or added to when it exists")->required());
    verb.add_option("--key", options->key, kKeyHelp)->required();
    AddConditions(verb, "", "the dark frames", options->conditions);
    AddInputOptions(verb, options->input);
    AddDarkOptions(verb, options->darks);
    AddBiasOption(verb, options->darks.bias);
    AddProvenanceOption(verb, options->noProvenance);
    AddFrames(verb, "darks", options->darks.files, "Dark frames; all pages form the stack")->required();
    AddJsonOption(verb, options->json);
    verb.Run([&context, options] { RunBuild(context, *options); });
}

} // namespace workbench
