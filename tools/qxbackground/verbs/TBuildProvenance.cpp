#include "verbs/TBuildProvenance.h"

#include "base/Clock.h"
#include "base/TToolError.h"
#include "calibration/TCalibrationWalk.h"
#include "calibration/TProvenance.h"
#include "stacks/TFilteredPixels.h"

#include <fmt/format.h>

#include <algorithm>
#include <vector>

namespace workbench {

TBuildProvenance::TBuildProvenance(const TDarkOptions& darkOptions, const TInputOptions& inputOptions, bool left)
    : darks(darkOptions), input(inputOptions)
{
    if (left)
        return;
    std::vector<std::string> files = darks.files;
    files.insert(files.end(), darks.bias.begin(), darks.bias.end());
    digests.emplace(files);
}

TProvenanceOutcome TBuildProvenance::Record(const TCalibrationPlace& place, const std::string& key,
                                            const TFrameStack& stack)
{
    if (!digests)
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
        TFilteredPixels filtered(stack.average);
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
        const std::vector<TFileDigests::TDigest> taken = digests->Take();
        const auto take = [&](const std::vector<std::string>& files, std::size_t from, std::uint64_t frames) {
            TFrameRecord record;
            record.frames = frames;
            for (std::size_t index = 0; index < files.size(); ++index)
                record.files.push_back(
                    {provenance.NameOf(files[index]), taken[from + index].bytes, taken[from + index].sha256});
            return record;
        };
        built.darks = take(darks.files, 0, stack.frames);
        if (!darks.bias.empty())
            built.bias = take(darks.bias, darks.files.size(), stack.biasFrames);
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
