// Makes operations fail at every point at which they can, and looks at what is left: the driver of the fault campaigns.
//
// A scenario is a folder of files, objects, and steps. It runs once undisturbed; that gives the states that the steps
// lead to. Then it runs again and again, with the first, second, third, ... allocation or file operation failing, once
// or from there on, until it runs to its end with nothing having failed. The step that is hit must give an outcome that
// its rule names and leave a state that its rule allows; then it is repeated undisturbed, the remaining steps follow,
// and in the end everything must be as if nothing had happened.
#ifndef TESTS_FAULTS_CAMPAIGN_H
#define TESTS_FAULTS_CAMPAIGN_H

#include "faults/FileFaults.h"
#include "faults/Snapshot.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

namespace Campaign {

// Whether a state may follow a failure, given those before and after the undisturbed step. Files are looked at apart.
using TStateRule = std::function<bool(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now)>;

// What may become of a step that is hit.
struct TRule {
    // "513 'text'", "bad_alloc", "TZRException 'text'"; the text only when it is a new one.
    std::set<std::string> outcomes;
    std::vector<TStateRule> states;
    // False: what failed is not to be had by trying again, and only the object's health is looked at afterwards.
    bool heals = true;
    // Files that may be missing or end early, beside those that the step or its failure makes.
    std::set<std::string> torn = {};
    // What is lost, though the rest heals.
    std::set<std::string> lost = {};
    // Files whose bytes follow from the failure: a correction that could not be read is missing in a copy.
    std::set<std::string> made = {};
};

struct TStep {
    std::string name;
    std::function<unsigned int(TWorld&)> call; // allocates nothing by itself
    TRule memory;
    std::map<TFileOperation, TRule> files;
    // Other ways to get from the state before to one that may follow a failure.
    std::vector<std::function<void(TWorld&)>> waypoints;
    // Outcomes without memory when an earlier step has failed already.
    std::set<std::string> afterFailure;
};

struct TScenario {
    std::string name;
    std::function<void()> fill;         // the current folder, once
    std::function<void(TWorld&)> setUp; // the objects, for every attempt
    std::vector<TStep> steps;
    bool needsNothing = false; // nothing is there to fail
};

inline void PrintTo(const TScenario& scenario, std::ostream* stream)
{
    *stream << scenario.name;
}
inline std::string NameOf(const testing::TestParamInfo<TScenario>& parameter)
{
    return parameter.param.name;
}

// Both fail the test that calls them.
void FailMemory(const TScenario& scenario);
void FailFiles(const TScenario& scenario);

// Rules about states.
bool Unchanged(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);
bool AsAfter(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);
// As after, but no memory for the scaled background.
bool WithoutBackground(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);
// As after, but only the first corrections are in the list.
bool BeginningOfList(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);
// As before, and the first new corrections are there as well.
bool SomeMore(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now);

} // namespace Campaign

#endif
