// One scenario of a campaign, run again and again.
#ifndef TESTS_FAULTS_CAMPAIGNRUN_H
#define TESTS_FAULTS_CAMPAIGNRUN_H

#include "faults/Campaign.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace Campaign {

struct TFault {
    bool ofMemory;
    TFileOperation operation; // otherwise
    std::size_t movedBytes;
    bool again;    // from then on
    bool toTheEnd; // also through the steps that follow, without memory
};

// Works in the current folder.
class TRun {
public:
    explicit TRun(const TScenario& scenario);

    // Fails one operation after the other; fails the test at the first that ends badly.
    void FailEvery(const TFault& fault);
    // Operations that were made to fail.
    std::size_t Hits() const { return hits; }

private:
    std::string Describe(const TFault& fault, std::size_t failAt) const;
    void SetUp(TWorld& world) const;
    void AddWaypoints(std::size_t index);
    bool Attempt(const TFault& fault, std::size_t failAt) const;
    void CheckHealth(TWorld& world) const;
    void CheckHit(const TFault& fault, TWorld& world, std::size_t index, const std::string& outcome) const;
    void CheckState(std::size_t index, const TRule& rule, const TSnapshot& now) const;
    void CheckFiles(std::size_t index, const TRule& rule, const TSnapshot& now) const;
    void WithoutMemoryToTheEnd(TWorld& world, std::size_t index, const std::string& outcome) const;

    const TScenario& scenario;
    std::map<std::string, FileBytes::TBytes> filesAtStart;
    std::vector<TSnapshot> states;     // before each step, and after the last
    std::vector<std::string> outcomes; // of the undisturbed steps
    std::vector<std::vector<TSnapshot>> waypoints;
    TSnapshot endState;
    std::size_t hits = 0;
};

} // namespace Campaign

#endif
