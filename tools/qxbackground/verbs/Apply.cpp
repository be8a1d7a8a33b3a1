// qxbackground apply: corrects images with a correction out of a calibration file.
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/Choice.h"
#include "calibration/Doubts.h"
#include "verbs/CorrectionRun.h"
#include "verbs/Verbs.h"

#include <map>
#include <memory>
#include <set>

namespace workbench {

namespace {

struct TApplyOptions {
    std::string file;
    std::string key;
    bool chooses = false;
    TCorrectOptions correct;
};

// Makes turns of one file's corrections.
class TTurnsOfFile {
public:
    TTurnsOfFile(QX_KRLSDK::TBackgroundCorrection& loaded, const TApplyOptions& wanted)
        : object(loaded), options(wanted), day(DayOfChange(wanted.file))
    {}

    // The correction is active then.
    TTurn Take(const std::string& key)
    {
        TTurn turn;
        turn.object = &object;
        turn.key = key;
        turn.what = "'" + Printable(key) + "' of " + options.file;
        turn.darks.day = day;
        Call(options.file, [&] {
            object.SetActive(key);
            const auto reference = object.Reference();
            turn.referenceProduct =
                static_cast<double>(reference.exposureSeconds) * static_cast<double>(reference.lightIntensityPercent);
        });
        active = key;
        TakeRecord(turn, TCalibrationPlace(options.file));
        return turn;
    }

    // Of the correction that fits the image.
    TTurn Choose(const std::vector<TStoredCorrection>& stored, const TShot& shot, TSize size)
    {
        TWantedCorrection wanted;
        wanted.exposureSeconds = *shot.exposureSeconds;
        wanted.lightIntensityPercent = options.correct.conditions.lightIntensityPercent;
        wanted.mayBeLarger = !options.correct.region.empty();
        wanted.width = static_cast<std::uint32_t>(size.width);
        wanted.height = static_cast<std::uint32_t>(size.height);
        const std::vector<TCandidate> candidates = CandidatesOf(options.file, stored);
        const TChoice choice = ChooseCorrection(options.file, candidates, wanted);
        const std::string& key = choice.candidate->correction.key;
        auto known = chosen.find(key);
        if (known == chosen.end()) {
            known = chosen.emplace(key, Take(key)).first;
            for (const std::string& line : HotterThanLonger(options.file, stored, key)) {
                if (told.insert(line).second)
                    warnings.push_back(line);
            }
        }
        TTurn turn = known->second;
        turn.reason = choice.reason;
        return turn;
    }

    const std::string& Active() const { return active; }

    std::vector<std::string> warnings;

private:
    QX_KRLSDK::TBackgroundCorrection& object;
    const TApplyOptions& options;
    const std::optional<std::int64_t> day;
    std::string active;                  // key
    std::map<std::string, TTurn> chosen; // by their keys
    std::set<std::string> told;
};

void RunApply(TContext& context, const TApplyOptions& options)
{
    if (options.key.empty() && !options.chooses)
        throw TToolError("--key or --auto says which correction is meant");
    QX_KRLSDK::TBackgroundCorrection object = context.Library().MakeProcessor();
    LoadWhole(object, options.file);
    TTurnsOfFile turns(object, options);
    TChooseTurn choose;
    if (options.chooses)
        choose = [&, stored = RequireWhole(options.file).corrections](
                     const std::string&, const TShot& shot, TSize size) { return turns.Choose(stored, shot, size); };
    else
        choose = [turn = turns.Take(options.key)](const std::string&, const TShot&, TSize) { return turn; };
    const TCorrectionPlan plan(options.correct, options.chooses, choose);
    const TTurn& first = plan.Turns().front();
    if (turns.Active() != first.key)
        Call(options.file, [&] { object.SetActive(first.key); });
    TCorrectionSetup setup = ReadSetup(options.correct, SizeOf(object));
    setup.warnings.insert(setup.warnings.end(), turns.warnings.begin(), turns.warnings.end());
    CorrectImages(context, plan, options.correct, setup);
}

} // namespace

void AddApplyVerb(TVerb& app, TContext& context)
{
    TVerb& verb = app.AddVerb("apply", "Correct images with a correction from a calibration file");
    const auto options = std::make_shared<TApplyOptions>();
    verb.Reads(TPathKind::Calibration, verb.add_option("file", options->file, "Calibration file")->required());
    CLI::Option* const key = AddKeyOption(verb, options->key);
    verb.add_flag("--auto", options->chooses,
                  "Choose the correction: of exactly the image's exposure x intensity, else the nearest that is scaled "
                  "down, else the nearest; of the images' size. Says which, and by what factor. Where images' headers "
                  "say the exposure, each gets its own")
        ->excludes(key);
    AddCorrectOptions(verb, options->correct);
    verb.AddNote(kSomeFailedHelp);
    verb.Run([&context, options] { RunApply(context, *options); });
}

} // namespace workbench
