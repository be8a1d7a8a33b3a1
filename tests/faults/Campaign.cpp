#include "faults/Campaign.h"

#include "faults/CampaignRun.h"
#include "offline/StoreSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

namespace Campaign {

namespace {

// Counts over all tests of a run.
struct TTotals : testing::Environment {
    std::size_t scenarios = 0;
    std::size_t allocations = 0;
    std::size_t fileOperations = 0;
    void TearDown() override
    {
        if (scenarios > 0) {
            std::printf("Fault campaign: %zu scenarios, %zu failed allocations, %zu failed file operations\n",
                        scenarios, allocations, fileOperations);
        }
    }
};
TTotals& totals = *static_cast<TTotals*>(testing::AddGlobalTestEnvironment(new TTotals));

bool SameBut(const TSnapshot& expected, const TSnapshot& now, const std::set<std::string>& fields)
{
    TSnapshot left = expected;
    TSnapshot right = now;
    for (const std::string& field : fields) {
        left.fields.erase(field);
        right.fields.erase(field);
    }
    return left.fields == right.fields;
}

bool IsBeginning(const std::vector<std::string>& part, const std::vector<std::string>& whole)
{
    return part.size() <= whole.size() && std::equal(part.begin(), part.end(), whole.begin());
}

} // namespace

void FailMemory(const TScenario& scenario)
{
    const TStoreFolder folder;
    ++totals.scenarios;
    TRun run(scenario);
    for (const bool again : {false, true}) {
        run.FailEvery({true, TFileOperation::kRead, 0, again, false});
    }
    if (scenario.steps.size() > 1) {
        run.FailEvery({true, TFileOperation::kRead, 0, true, true});
    }
    totals.allocations += run.Hits();
    EXPECT_EQ(run.Hits() == 0, scenario.needsNothing) << scenario.name << " allocates";
}

void FailFiles(const TScenario& scenario)
{
    const TStoreFolder folder;
    ++totals.scenarios;
    TRun run(scenario);
    for (std::size_t operation = 0; operation < kFileOperationCount; ++operation) {
        const TFileOperation kind = static_cast<TFileOperation>(operation);
        const bool moves = kind == TFileOperation::kRead || kind == TFileOperation::kWrite;
        for (const bool again : {false, true}) {
            for (std::size_t movedBytes = 0; movedBytes < (moves ? 2u : 1u); ++movedBytes) {
                run.FailEvery({false, kind, movedBytes, again, false});
            }
        }
    }
    totals.fileOperations += run.Hits();
    EXPECT_EQ(run.Hits() == 0, scenario.needsNothing) << scenario.name << " uses files";
}

bool Unchanged(const TSnapshot& before, const TSnapshot&, const TSnapshot& now)
{
    return now.fields == before.fields && now.entries == before.entries;
}

bool AsAfter(const TSnapshot&, const TSnapshot& after, const TSnapshot& now)
{
    return now.fields == after.fields && now.entries == after.entries;
}

bool WithoutBackground(const TSnapshot&, const TSnapshot& after, const TSnapshot& now)
{
    return now.entries == after.entries && SameBut(after, now, {"background"}) &&
           now.fields.at("background").compare(0, 5, "1024 ") == 0;
}

bool BeginningOfList(const TSnapshot&, const TSnapshot& after, const TSnapshot& now)
{
    return IsBeginning(now.entries, after.entries) && now.fields == after.fields;
}

bool SomeMore(const TSnapshot& before, const TSnapshot& after, const TSnapshot& now)
{
    return IsBeginning(before.entries, now.entries) && IsBeginning(now.entries, after.entries) &&
           SameBut(before, now, {});
}

} // namespace Campaign
