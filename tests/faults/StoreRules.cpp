#include "faults/StoreRules.h"

#include <algorithm>

namespace StoreRules {

namespace {

bool Contains(const std::vector<std::string>& whole, const std::vector<std::string>& part)
{
    return std::includes(whole.begin(), whole.end(), part.begin(), part.end()); // keys are sorted
}

bool SameSettings(const TSnapshot& before, const TSnapshot& now)
{
    return now.fields.at("level") == before.fields.at("level") &&
           now.fields.at("exposure") == before.fields.at("exposure");
}

} // namespace

bool PartlyImported(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now)
{
    return Contains(now.entries, before.entries) && Contains(after.entries, now.entries) && SameSettings(before, now);
}

bool PartlyReplaced(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now)
{
    std::vector<std::string> withReplaced = now.entries;
    const std::string replaced = "A,1,B,1,a"; // the only key that the store and its sources share
    if (std::find(withReplaced.begin(), withReplaced.end(), replaced) == withReplaced.end()) {
        withReplaced.insert(std::upper_bound(withReplaced.begin(), withReplaced.end(), replaced), replaced);
    }
    return Contains(withReplaced, before.entries) && Contains(after.entries, now.entries) && SameSettings(before, now);
}

bool GroupMade(const TSnapshot& before, const TSnapshot&, const TSnapshot& now)
{
    return now.entries == before.entries && now.fields.at("active") == "(null)" &&
           now.fields.at("region") == "0 0 0 1 1 " && SameSettings(before, now);
}

bool SomeKeys(const TSnapshot&, const TSnapshot& after, const TSnapshot& now)
{
    return Contains(after.entries, now.entries) && now.fields == after.fields;
}

bool MoreKeys(const TSnapshot&, const TSnapshot& after, const TSnapshot& now)
{
    return Contains(now.entries, after.entries) && now.fields == after.fields;
}

bool Reopened(const TSnapshot& before, const TSnapshot&, const TSnapshot& now)
{
    return now.fields.at("reference").compare(0, 5, "1280 ") == 0 && SameSettings(before, now);
}

bool SwitchedToNothing(const TSnapshot& before, const TSnapshot&, const TSnapshot& now)
{
    return now.entries == before.entries && now.fields.at("active") == "(null)" && SameSettings(before, now);
}

bool SameSettingsAndKnownKeys(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now)
{
    std::vector<std::string> known = before.entries;
    known.insert(known.end(), after.entries.begin(), after.entries.end());
    std::sort(known.begin(), known.end());
    known.erase(std::unique(known.begin(), known.end()), known.end());
    return Contains(known, now.entries) && SameSettings(before, now);
}

bool Cleared(const TSnapshot&, const TSnapshot&, const TSnapshot& now)
{
    return now.entries.empty() && now.fields.at("active") == "(null)";
}

} // namespace StoreRules
