// qxbackground rename: gives a correction of a calibration file another key. All else in the file stays as it is.
#include "base/TReplacedFile.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "verbs/Options.h"
#include "verbs/ProvenanceRecord.h"
#include "verbs/Verbs.h"

#include "file/CalibrationFormat.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <memory>

namespace workbench {

namespace {

struct TRenameOptions {
    std::string file;
    std::string key;
    std::string newKey;
    bool noProvenance = false;
};

bool IsSameKey(const std::string& one, const std::string& other)
{
    const auto folded = [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
    };
    return one.size() == other.size() &&
           std::equal(one.begin(), one.end(), other.begin(), [&](char a, char b) { return folded(a) == folded(b); });
}

// Where the text of a correction's key lies: the record of the key follows the one that opens the correction.
std::uint64_t KeyOffset(const TStoredCorrection& correction)
{
    return correction.offset + 2 * CalibrationFormat::kRecordHeaderLength;
}

void RunRename(const TContext& context, const TRenameOptions& options)
{
    CheckKey(options.newKey);
    const TFileState before = StateOf(options.file);
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    object.Clear();
    const TCalibrationWalk walk = RequireWhole(options.file);
    const TStoredCorrection* renamed = nullptr;
    for (const TStoredCorrection& correction : walk.corrections) {
        if (IsSameKey(correction.key, options.key))
            renamed = &correction;
        else if (IsSameKey(correction.key, options.newKey))
            throw TToolError(options.file,
                             "has a correction '" + Printable(correction.key) + "' already (letter case is ignored)");
    }
    if (renamed == nullptr)
        throw TToolError(options.file, "has no correction '" + Printable(options.key) + "'");
    TReplacedFile replaced(options.file, before);
    {
        std::ifstream from(options.file, std::ios::binary);
        std::fstream to(replaced.Temporary(), std::ios::binary | std::ios::in | std::ios::out | std::ios::trunc);
        to << from.rdbuf();
        std::string text = options.newKey;
        text.resize(CalibrationFormat::kKeyLength, '\0');
        to.seekp(static_cast<std::streamoff>(KeyOffset(*renamed)));
        to.write(text.data(), static_cast<std::streamsize>(text.size()));
        to.close();
        if (!from || !to)
            throw TToolError(options.file,
                             "cannot be written: " + replaced.Reason("unknown error") + "; the old file is unchanged");
    }
    const TCalibrationWalk after = WalkCalibrationFile(replaced.Temporary());
    const std::size_t place = static_cast<std::size_t>(renamed - walk.corrections.data());
    if (!after.Whole() || after.corrections.size() != walk.corrections.size() ||
        after.corrections[place].key != options.newKey)
        throw TToolError(options.file, "was not written correctly; the old file is unchanged");
    replaced.Commit();
    std::cout << "Renamed '" << Printable(renamed->key) << "' to '" << Printable(options.newKey) << "' in "
              << options.file << '\n';
    if (!options.noProvenance)
        RenameProvenance(TCalibrationPlace(options.file), renamed->key, options.newKey);
}

} // namespace

void AddRenameVerb(TVerb& app, const TContext& context)
{
    TVerb& verb = app.AddVerb("rename", "Give a correction of a calibration file another key");
    const auto options = std::make_shared<TRenameOptions>();
    verb.Changes(TPathKind::Calibration, verb.add_option("file", options->file, "Calibration file")->required());
    verb.add_option("--key", options->key, "Which correction (letter case ignored)")->required();
    verb.add_option("new", options->newKey, kKeyHelp)->required();
    AddProvenanceOption(verb, options->noProvenance);
    verb.Run([&context, options] { RunRename(context, *options); });
}

} // namespace workbench
