#include "verbs/TBuildProvenance.h"

#include "base/Clock.h"
#include "base/TToolError.h"
#include "calibration/TCalibrationWalk.h"
#include "calibration/TProvenance.h"
#include "stacks/TFilteredPixels.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace workbench {

TBuildProvenance::TBuildProvenance(const TDarkOptions& darkOptions, const TInputOptions& inputOptions, bool left)
    : darks(darkOptions), input(inputOptions)
{
    if (left)
        return;
    darkDigests.emplace(darks.files);
    biasDigests.emplace(darks.bias);
}

TDarkDigests TBuildProvenance::Digests()
{
    if (!darkDigests)
        return {};
    return {&*darkDigests, &*biasDigests};
}

TProvenanceOutcome TBuildProvenance::Record(const TCalibrationPlace& place, const std::string& key, TFrameStack& stack)
{
    if (!darkDigests)
        return {};
    TProvenanceEntry entry;
    TProvenanceOutcome outcome = ChangeProvenance(place, [&](TProvenance& provenance) {
        entry.group = place.GroupOf(key);
        const std::string file = place.FileOf(entry.group);
        const TCalibrationWalk walk = WalkCalibrationFile(file);
        const auto stored = std::find_if(walk.corrections.begin(), walk.corrections.end(),
                                         [&key](const TStoredCorrection& one) { return one.key == key; });
        if (stored == walk.corrections.end())
            throw TToolError(file, "was changed by another program at once");
        TFilteredPixels filtered(std::move(stack.average));
        entry.Describe(file, *stored,
                       [&filtered](const unsigned char* bytes, std::size_t count) { filtered.Add(bytes, count); });
        filtered.Count(kUsualHotSigma);
        TBuildRecord built;
        built.date = TimeText();
        built.tool = std::string("qxbackground ") + QXBACKGROUND_VERSION;
        built.combined = darks.stack.CombinationText();
        built.rejection = darks.stack.RejectionText();
        if (input.raw)
            built.rawLayout = fmt::format("{}x{}+{}", input.raw->size.width, input.raw->size.height, input.raw->offset);
        built.hotSigma = kUsualHotSigma;
        built.hot = filtered.Hot();
        built.dead = filtered.Dead();
        built.notes = stack.notes;
        built.warnings = stack.warnings;
        const auto take = [&](const std::vector<std::string>& files, TFileDigests& digests, std::uint64_t frames) {
            TFrameRecord record;
            record.frames = frames;
            const std::vector<TFileDigests::TDigest> taken = digests.Take();
            for (std::size_t index = 0; index < files.size(); ++index)
                record.files.push_back({provenance.NameOf(files[index]), taken[index].bytes, taken[index].sha256});
            return record;
        };
        built.darks = take(darks.files, *darkDigests, stack.frames);
        if (!darks.bias.empty())
            built.bias = take(darks.bias, *biasDigests, stack.biasFrames);
        entry.built = built;
        provenance.Put(entry);
        provenance.Keep(walk.corrections, entry.group);
    });
    outcome.isNews = !outcome.file.empty();
    const auto isUnknown = [](const TFrameRecord::TFile& file) { return file.sha256.empty(); };
    const auto hasUnknown = [&isUnknown](const TFrameRecord& record) {
        return std::any_of(record.files.begin(), record.files.end(), isUnknown);
    };
    if (entry.built && (hasUnknown(entry.built->darks) || (entry.built->bias && hasUnknown(*entry.built->bias))))
        outcome.warnings.push_back(
            "frames changed while they were read, or the run was interrupted; their SHA-256 is not recorded");
    return outcome;
}

} // namespace workbench
