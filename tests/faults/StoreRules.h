// What may be left of a store when something failed.
#ifndef TESTS_FAULTS_STORERULES_H
#define TESTS_FAULTS_STORERULES_H

#include "faults/Snapshot.h"

namespace StoreRules {

// Part of an import: no key that was there is lost (but those replaced, which go before they come), only keys of the
// source came, and the settings stay. What is active and which group is loaded may have changed.
bool PartlyImported(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);
bool PartlyReplaced(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);

// As before, but with an empty group loaded.
bool GroupMade(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);

// As after, but keys are missing, or there are more.
bool SomeKeys(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);
bool MoreKeys(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);

// A named store without a loaded group, of another base than it was to have.
bool Reopened(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);

// The key's group is loaded, but the key is not in it.
bool SwitchedToNothing(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);

// Whatever else became of it: no key came that was not there and is none of the source's.
bool SameSettingsAndKnownKeys(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);

// Nothing is left: what a failure after the clearing of a store leaves.
bool Cleared(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);

} // namespace StoreRules

#endif
