// qxbackground diff: what two calibration files have in common, and what not.
#include "base/JsonText.h"
#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/Keys.h"
#include "verbs/CorrectionRun.h"
#include "verbs/Verbs.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>

namespace workbench {

namespace {

struct TDiffOptions {
    std::string one, other;
    bool json = false;
};

struct TStored {
    TConditions conditions;
    TImage pixels;
};

TStored Stored(QX_KRLSDK::TBackgroundCorrection& object, const std::string& key)
{
    TStored stored;
    Call("key '" + Printable(key) + "'", [&] {
        object.SetActive(key);
        const auto reference = object.Reference();
        object.SetExposureAndIntensity(reference.exposureSeconds, reference.lightIntensityPercent);
        stored.conditions = {static_cast<double>(reference.exposureSeconds),
                             static_cast<double>(reference.lightIntensityPercent)};
        stored.pixels = ScaledBackground(object);
    });
    return stored;
}

// Nothing when they are the same.
std::string Difference(const TStored& one, const TStored& other)
{
    if (one.pixels.size != other.pixels.size)
        return one.pixels.size.Text() + " and " + other.pixels.size.Text() + " pixels";
    std::string text;
    if (one.conditions.Text() != other.conditions.Text())
        text = "(" + one.conditions.Text() + ") and (" + other.conditions.Text() + ")";
    std::size_t differing = 0;
    int most = 0;
    for (std::size_t i = 0; i < one.pixels.pixels.size(); ++i) {
        const int distance = std::abs(one.pixels.pixels[i] - other.pixels.pixels[i]);
        differing += distance != 0 ? 1 : 0;
        most = std::max(most, distance);
    }
    if (differing > 0)
        text += (text.empty() ? "" : "; ") + Counted(differing, "pixel") + " of " +
                std::to_string(one.pixels.pixels.size()) + (differing == 1 ? " differs" : " differ") + ", by up to " +
                std::to_string(most) + " ADU";
    return text;
}

void RunDiff(TContext& context, const TDiffOptions& options)
{
    QX_KRLSDK::TBackgroundCorrection one = context.Library().MakeProcessor();
    QX_KRLSDK::TBackgroundCorrection other = context.Library().MakeProcessor();
    LoadWhole(one, options.one);
    LoadWhole(other, options.other);
    std::vector<std::string> otherKeys = other.Keys();
    std::size_t same = 0;
    nlohmann::json differences = nlohmann::json::array();
    const auto tell = [&](const std::string& key, const std::string& what) {
        if (!options.json)
            std::cout << "'" << Printable(key) << "': " << what << '\n';
        differences.push_back({{"key", key}, {"what", what}});
    };
    for (const std::string& key : one.Keys()) {
        const auto found = std::find_if(otherKeys.begin(), otherKeys.end(),
                                        [&](const std::string& otherKey) { return IsSameKey(otherKey, key); });
        if (found == otherKeys.end()) {
            tell(key, "only in " + options.one);
            continue;
        }
        const std::string difference = Difference(Stored(one, key), Stored(other, *found));
        if (difference.empty())
            ++same;
        else
            tell(key, difference);
        otherKeys.erase(found);
    }
    for (const std::string& key : otherKeys)
        tell(key, "only in " + options.other);
    if (options.json)
        std::cout << JsonText({{"files", {options.one, options.other}}, {"same", same}, {"differences", differences}});
    else
        std::cout << Counted(same, "correction") << " the same, " << differences.size() << " different\n";
    if (!differences.empty())
        context.status = kSomeFailed;
}

} // namespace

void AddDiffVerb(TVerb& app, TContext& context)
{
    TVerb& verb = app.AddVerb("diff", "Compare two calibration files");
    const auto options = std::make_shared<TDiffOptions>();
    verb.Reads(TPathKind::Calibration, verb.add_option("file", options->one, "Calibration file")->required());
    verb.Reads(TPathKind::Calibration, verb.add_option("other", options->other, "Calibration file")->required());
    AddJsonOption(verb, options->json);
    verb.AddNote("Exit status: 0 the same corrections, 1 not.");
    verb.Run([&context, options] { RunDiff(context, *options); });
}

} // namespace workbench
