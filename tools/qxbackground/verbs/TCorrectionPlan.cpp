#include "verbs/TCorrectionPlan.h"

#include "base/Interrupts.h"
#include "base/TProgress.h"
#include "base/TToolError.h"
#include "base/Wording.h"
#include "images/TImageReader.h"
#include "stacks/TFrameWatch.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <set>

namespace workbench {

namespace {

// A page that the run refuses anyway.
constexpr unsigned kNoTurn = std::numeric_limits<unsigned>::max();

// What tells images apart that need turns of their own.
std::vector<double> SignatureOf(const TShot& shot)
{
    constexpr double kNotSaid = std::numeric_limits<double>::max();
    return {shot.exposureSeconds.value_or(kNotSaid), shot.gain.value_or(kNotSaid),
            static_cast<double>(shot.binningX.value_or(0)), static_cast<double>(shot.binningY.value_or(0)),
            shot.sensorCelsius.value_or(kNotSaid)};
}

} // namespace

TCorrectionPlan::TCorrectionPlan(const TCorrectOptions& what, bool looks, const TChooseTurn& choose)
    : options(what), isGiven(what.conditions.exposureSeconds > 0)
{
    if (looks || !isGiven)
        Look(choose);
    else
        TurnFor(options.inputs.front(), 1, {}, {}, choose);
}

unsigned TCorrectionPlan::TurnFor(const std::string& path, unsigned page, const TShot& said, TSize pageSize,
                                  const TChooseTurn& choose)
{
    TShot shot = said;
    if (isGiven)
        shot.exposureSeconds = options.conditions.exposureSeconds;
    if (!shot.exposureSeconds)
        throw TToolError(path, page, shot.WithoutExposure("--exposure"));
    const auto [place, isNew] = known.emplace(SignatureOf(shot), static_cast<unsigned>(turns.size()));
    if (!isNew)
        return place->second;
    try {
        TTurn turn = choose(path, shot, pageSize);
        turn.exposureSeconds = *shot.exposureSeconds;
        turn.factor = turn.exposureSeconds * options.conditions.lightIntensityPercent / turn.referenceProduct;
        // Images that differ in what does not matter here go on with the turn that there is.
        const auto same = std::find_if(turns.begin(), turns.end(), [&](const TTurn& other) {
            return other.object == turn.object && other.key == turn.key &&
                   !(other.exposureSeconds < turn.exposureSeconds) && !(turn.exposureSeconds < other.exposureSeconds);
        });
        place->second = static_cast<unsigned>(same - turns.begin());
        if (same == turns.end())
            turns.push_back(std::move(turn));
    } catch (...) {
        known.erase(place);
        throw;
    }
    return place->second;
}

TCorrectionPlan::TFile TCorrectionPlan::LookAt(const std::string& path, const TChooseTurn& choose)
{
    TFile file;
    try {
        const std::unique_ptr<TImageReader> reader = OpenImage(path, options.input);
        while (reader->NextPage()) {
            ThrowIfInterrupted();
            if (options.region.empty() && size.Pixels() > 0 && reader->Size() != size) {
                file.ofPage.push_back(kNoTurn);
                continue;
            }
            file.ofPage.push_back(TurnFor(path, reader->Page(), ShotOf(reader->Metadata()), reader->Size(), choose));
            if (size.Pixels() == 0)
                size = reader->Size();
        }
        for (const unsigned turn : file.ofPage) {
            if (turn != kNoTurn)
                ++turns[turn].pages;
        }
    } catch (const TToolError& error) {
        if (Interrupted())
            throw;
        file.failure = error.what();
    }
    return file;
}

void TCorrectionPlan::Look(const TChooseTurn& choose)
{
    std::string firstFailure;
    std::size_t failures = 0;
    {
        TProgress progress("Looking at headers", options.inputs.size());
        for (const std::string& input : options.inputs) {
            files.push_back(LookAt(input, choose));
            progress.Step();
            if (files.back().failure.empty())
                continue;
            if (!options.IsBatch())
                throw TToolError(files.back().failure);
            ++failures;
            if (firstFailure.empty())
                firstFailure = files.back().failure;
        }
    }
    if (turns.empty() || failures == files.size())
        throw TToolError(
            firstFailure.empty() ? options.inputs.front() + ": holds no image"
            : failures == 1      ? firstFailure
                            : fmt::format("{} (none of {} can be corrected)", firstFailure, Counted(failures, "file")));
}

const TTurn& TCorrectionPlan::For(const std::string& path, std::size_t file, unsigned page) const
{
    if (files.empty())
        return turns.front();
    if (!files[file].failure.empty())
        throw TToolError(files[file].failure);
    const std::vector<unsigned>& ofPage = files[file].ofPage;
    if (page == 0 || page > ofPage.size() || ofPage[page - 1] == kNoTurn)
        throw TToolError(path, "changed while it was being read");
    return turns[ofPage[page - 1]];
}

std::string TCorrectionPlan::ConditionsText() const
{
    if (isGiven)
        return options.conditions.Text();
    const auto [least, most] =
        std::minmax_element(turns.begin(), turns.end(), [](const TTurn& one, const TTurn& other) {
            return one.exposureSeconds < other.exposureSeconds;
        });
    std::string text = fmt::format("{:g} s", least->exposureSeconds);
    if (least->exposureSeconds < most->exposureSeconds)
        text += fmt::format(" to {:g} s", most->exposureSeconds);
    return text + fmt::format(" by the header{}, {:g} %", options.inputs.size() == 1 ? "" : "s",
                              options.conditions.lightIntensityPercent);
}

std::string TCorrectionPlan::What() const
{
    std::set<std::string> names;
    for (const TTurn& turn : turns)
        names.insert(turn.what);
    return names.size() == 1 ? *names.begin() : Counted(names.size(), "correction");
}

std::vector<TUsedCorrection> TCorrectionPlan::Used() const
{
    std::vector<TUsedCorrection> used;
    for (const TTurn& turn : turns)
        used.push_back({turn.what, turn.exposureSeconds, turn.factor});
    return used;
}

double TCorrectionPlan::LeastFactor() const
{
    double least = turns.front().factor;
    for (const TTurn& turn : turns)
        least = std::min(least, turn.factor);
    return least;
}

double TCorrectionPlan::LargestFactor() const
{
    double largest = turns.front().factor;
    for (const TTurn& turn : turns)
        largest = std::max(largest, turn.factor);
    return largest;
}

std::vector<std::string> TCorrectionPlan::Notes() const
{
    std::vector<std::string> notes;
    if (turns.size() == 1) {
        if (!turns.front().reason.empty())
            notes.push_back(turns.front().reason);
        return notes;
    }
    constexpr std::size_t kMost = 20;
    for (std::size_t index = 0; index < std::min(turns.size(), kMost); ++index) {
        const TTurn& turn = turns[index];
        const std::string how = turn.reason.empty() ? fmt::format("scaled by {:.4g}", turn.factor) : turn.reason;
        notes.push_back(fmt::format("{} of {:g} s: {}", Counted(turn.pages, "page"), turn.exposureSeconds, how));
    }
    if (turns.size() > kMost)
        notes.push_back(fmt::format("and so on for {} more exposures", turns.size() - kMost));
    return notes;
}

std::vector<std::string> TCorrectionPlan::Warnings() const
{
    std::set<std::string> taken, kept;
    for (const TTurn& turn : turns) {
        if (turn.hasBias.has_value())
            (*turn.hasBias ? taken : kept).insert(turn.what);
    }
    std::vector<std::string> warnings;
    const auto named = [](const std::set<std::string>& names) { return FirstOf({names.begin(), names.end()}); };
    if (!taken.empty() && options.bias.empty())
        warnings.push_back(named(taken) + ": built with --bias, which took the camera's offset off the dark frames; "
                                          "without --bias here it stays in the images");
    if (!kept.empty() && !options.bias.empty())
        warnings.push_back(named(kept) +
                           ": built without --bias, so that it holds the camera's offset; with --bias here "
                           "that is taken off the images twice");
    return warnings;
}

TShot TCorrectionPlan::Expected(const TTurn& turn) const
{
    TShot expected = turn.darks;
    if (isGiven)
        expected.exposureSeconds = options.conditions.exposureSeconds;
    return expected;
}

} // namespace workbench
