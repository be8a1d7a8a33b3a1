// qxbackground store apply: corrects images with corrections of an offline store, named or found by the images'
// headers.
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/Doubts.h"
#include "calibration/StoreChoice.h"
#include "verbs/CorrectionRun.h"
#include "verbs/StoreGroups.h"
#include "verbs/StoreVerbs.h"

#include <algorithm>
#include <map>
#include <memory>

namespace workbench {

namespace {

using QX_KRLSDK::TBackgroundCorrection;

struct TStoreApplyOptions {
    TStoreOptions store;
    std::string key;
    bool chooses = false;
    std::vector<std::pair<std::string, std::string>> values; // of groups, by their names
    TCorrectOptions correct;
};

// The groups that a run needs, each in an object of its own: an object holds one at a time, and nothing is read while
// images are corrected.
class TOpenGroups {
public:
    TOpenGroups(const TContext& known, const TStorePlace& where) : context(known), place(where) {}

    // The turn of the correction with this key, which is active then.
    TTurn Take(const std::string& key)
    {
        const std::string file = place.PathOf(GroupFileOf(place, key)).string();
        auto object = objects.find(file);
        if (object == objects.end())
            object = objects.emplace(file, OpenInStore(context, place, key)).first;
        TTurn turn;
        turn.object = &object->second;
        turn.key = key;
        turn.what = "'" + Printable(key) + "' of " + file;
        Call(file, [&] {
            turn.object->SetActive(key);
            const auto reference = turn.object->Reference();
            turn.referenceProduct =
                static_cast<double>(reference.exposureSeconds) * static_cast<double>(reference.lightIntensityPercent);
        });
        turn.darks = ShotOf(ConditionsOfKey(place, key));
        turn.darks.ForgetExposure();
        turn.darks.day = DayOfChange(file);
        TakeRecord(turn, TCalibrationPlace(place));
        return turn;
    }

private:
    const TContext& context;
    const TStorePlace& place;
    std::map<std::string, TBackgroundCorrection> objects; // by group file
};

TCorrectionPlan PlanByHeaders(const TStoreApplyOptions& options, const TStorePlace& place, TOpenGroups& groups,
                              std::vector<std::string>& warnings)
{
    TWantedGroup wanted;
    wanted.toleranceCelsius = options.correct.toleranceCelsius;
    wanted.values = options.values;
    RequireGroupingNames(place, wanted);
    const std::vector<TCandidate> all = CandidatesOf(place);
    std::map<std::string, TTurn> turns; // by their keys
    return {options.correct, true, [&, wanted](const std::string& path, const TShot& shot, TSize size) mutable {
                wanted.images = ConditionsOf(shot);
                TWantedCorrection image;
                image.exposureSeconds = *shot.exposureSeconds;
                image.lightIntensityPercent = options.correct.conditions.lightIntensityPercent;
                image.width = static_cast<std::uint32_t>(size.width);
                image.height = static_cast<std::uint32_t>(size.height);
                image.mayBeLarger = !options.correct.region.empty();
                const std::vector<TCandidate> fitting = InFittingGroups(place, all, wanted, path);
                const TChoice choice = ChooseCorrection(place.Text(), fitting, image);
                const TCandidate& chosen = *choice.candidate;
                auto known = turns.find(chosen.correction.key);
                if (known == turns.end()) {
                    known = turns.emplace(chosen.correction.key, groups.Take(chosen.correction.key)).first;
                    for (const std::string& line :
                         HotterThanLonger(chosen.file, RequireWhole(chosen.file).corrections, chosen.correction.key)) {
                        if (std::find(warnings.begin(), warnings.end(), line) == warnings.end())
                            warnings.push_back(line);
                    }
                }
                TTurn turn = known->second;
                turn.reason = choice.reason;
                return turn;
            }};
}

void ApplyFromStore(TContext& context, const TStoreApplyOptions& options)
{
    if (options.key.empty() && !options.chooses)
        throw TToolError("--key or --auto says which correction is meant");
    const TStorePlace place = FindStore(options.store.base, options.store.groups);
    TOpenGroups groups(context, place);
    std::vector<std::string> warnings;
    const TCorrectionPlan plan =
        options.chooses ? PlanByHeaders(options, place, groups, warnings)
                        : TCorrectionPlan(options.correct, false,
                                          [turn = groups.Take(options.key)](const std::string&, const TShot&, TSize) {
                                              return turn;
                                          });
    const TTurn& first = plan.Turns().front();
    if (options.chooses)
        Call(first.what, [&] { first.object->SetActive(first.key); });
    TCorrectionSetup setup = ReadSetup(options.correct, SizeOf(*first.object));
    setup.warnings.insert(setup.warnings.end(), warnings.begin(), warnings.end());
    CorrectImages(context, plan, options.correct, setup);
}

} // namespace

void AddStoreApplyVerb(TVerb& store, TContext& context)
{
    TVerb& verb = store.AddVerb("apply", "Correct images with corrections of a store");
    const auto options = std::make_shared<TStoreApplyOptions>();
    AddStoreOptions(verb, options->store, TPathUse::Reads);
    CLI::Option* const key = AddKeyOption(verb, options->key);
    CLI::Option* const chooses =
        verb.add_flag(
                "--auto", options->chooses,
                "Choose the correction for each image by its header: of the group of exactly its gain and binning, "
                "of the nearest temperature within --temperature-tolerance, and in there of exactly its exposure x "
                "intensity, else the nearest that is scaled down, else the nearest. Says which, and by what "
                "factor. Grouping names that mean these: Gain, Binning, Temperature")
            ->excludes(key);
    AddWhereOption(verb, options->values,
                   "With --auto, where headers do not say it: which group, by a grouping name and its value. It counts "
                   "whatever headers say")
        ->needs(chooses);
    AddCorrectOptions(verb, options->correct);
    verb.AddNote(kSomeFailedHelp);
    verb.Run([&context, options] { ApplyFromStore(context, *options); });
}

} // namespace workbench
