#include "verbs/TTurn.h"

#include "base/TToolError.h"
#include "calibration/TProvenance.h"
#include "images/FitsCards.h"

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace workbench {

namespace {

QX_KRLSDK::TBackgroundCorrection::TRegion ParseRegion(const std::string& text)
{
    QX_KRLSDK::TBackgroundCorrection::TRegion region;
    int used = 0;
    const int count =
        std::sscanf(text.c_str(), "%9d,%9d,%9d,%9d%n", &region.left, &region.top, &region.width, &region.height, &used);
    if (count != 4 || static_cast<std::size_t>(used) != text.size())
        throw TToolError("--region: '" + text + "' is not left,top,width,height");
    return region;
}

} // namespace

void SetExposure(const TTurn& turn, const TCorrectOptions& options)
{
    Call("--exposure", [&] {
        turn.object->SetExposureAndIntensity(static_cast<float>(turn.exposureSeconds),
                                             static_cast<float>(options.conditions.lightIntensityPercent));
    });
}

void Configure(const TTurn& turn, const TCorrectOptions& options)
{
    SetExposure(turn, options);
    Call("--level", [&] { turn.object->SetLevel(options.levelPercent); });
    if (!options.region.empty())
        Call("--region", [&] { turn.object->SetRegion(ParseRegion(options.region)); });
}

void Activate(const TTurn& turn, const TCorrectOptions& options)
{
    Call(turn.what, [&] { turn.object->SetActive(turn.key); });
    Configure(turn, options);
}

void TakeRecord(TTurn& turn, const TCalibrationPlace& place)
{
    std::error_code ignored; // nothing depends on the record: where it cannot be seen, there is none
    if (!std::filesystem::exists(std::filesystem::path(place.ProvenanceFile()), ignored))
        return;
    const std::optional<std::string> key = turn.object->ActiveKey(); // as it is spelled in the file
    if (!key)
        return;
    for (const TStoredCorrection& stored : WalkCalibrationFile(place.FileOf(place.GroupOf(*key))).corrections) {
        if (stored.key != *key)
            continue;
        const std::optional<TProvenanceEntry> entry = KnownProvenance(place, stored);
        if (!entry || !entry->built)
            return;
        turn.hasBias = entry->built->bias.has_value();
        if (const std::optional<std::int64_t> day = DayIn(entry->built->date))
            turn.darks.day = day;
        return;
    }
}

} // namespace workbench
