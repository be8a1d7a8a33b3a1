#include "faults/CampaignRun.h"

#include "model/LiteralDisk.h" // kBackslashSystem
#include "support/AllocationFaults.h"

#include "boundary/TZRException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>

namespace Campaign {

namespace {

// More than one where a test sets it, because what watches the program makes each point take long.
std::size_t PointsAtATime()
{
    const char* const wanted = std::getenv("QXBC_CAMPAIGN_STRIDE");
    return wanted != nullptr ? std::max<std::size_t>(std::strtoul(wanted, nullptr, 10), 1) : 1;
}

// Arms one fault; nothing in here allocates while it is armed.
class TArmed {
public:
    TArmed(const TFault& fault, std::size_t failAt) : operation(fault.operation)
    {
        if (fault.ofMemory) {
            memory.emplace(failAt, fault.again ? TFaultRepeat::kForGood : TFaultRepeat::kOnce);
        } else {
            const auto repeat = fault.again ? TFileFaultRepeat::kFromThenOn : TFileFaultRepeat::kOnce;
            file.emplace(TFileFaultPlan{fault.operation, failAt, repeat, fault.movedBytes});
        }
    }
    bool Fired() const { return memory ? memory->Fired() : file->Fired(); }
    std::size_t Count() const { return memory ? memory->Count() : static_cast<std::size_t>(file->Count(operation)); }
    void Pause()
    {
        if (memory) {
            memory->Disarm();
        }
    }

private:
    TFileOperation operation;
    std::optional<TAllocationFaults> memory;
    std::optional<TFileFaults> file;
};

struct TResult {
    enum TKind { kReturned, kTzrException, kBadAlloc, kOther } kind = kReturned;
    unsigned int code = 0;
    std::array<char, 600> text = {};
};

TResult Call(const TStep& step, TWorld& world) noexcept
{
    TResult result;
    try {
        result.code = step.call(world);
    } catch (const TZRException& error) {
        result.kind = TResult::kTzrException;
        std::strncpy(result.text.data(), error.what(), result.text.size() - 1);
    } catch (const std::bad_alloc&) {
        result.kind = TResult::kBadAlloc;
    } catch (...) {
        result.kind = TResult::kOther;
    }
    return result;
}

std::string Outcome(const TResult& result, const TWorld& world, const std::string& textBefore)
{
    switch (result.kind) {
    case TResult::kTzrException:
        return "TZRException '" + std::string(result.text.data()) + "'";
    case TResult::kBadAlloc:
        return "bad_alloc";
    case TResult::kOther:
        return "another exception";
    case TResult::kReturned:
        break;
    }
    std::string text = world.Text();
    if (result.code >= 4294967294u && !world.IsStore()) {
        text = world.Processor().FileMessage();
    }
    return std::to_string(result.code) + (text.empty() || text == textBefore ? "" : " '" + text + "'");
}

std::string Joined(const std::set<std::string>& texts)
{
    std::string all;
    for (const std::string& text : texts) {
        all += "\n    " + text;
    }
    return all;
}

std::string Undisturbed(const TStep& step, TWorld& world)
{
    const std::string textBefore = world.Text();
    world.ForgetText();
    const TResult result = Call(step, world);
    return Outcome(result, world, textBefore);
}

// Files are as in a state that is known; where they are to change, also the beginning of what they were to become.
bool IsFileAllowed(const std::string& name, const std::vector<const TSnapshot*>& known, const TSnapshot& now,
                   bool mayBeTorn)
{
    const auto present = now.files.find(name);
    bool changes = mayBeTorn;
    for (const TSnapshot* const snapshot : known) {
        const auto other = snapshot->files.find(name);
        const auto first = known.front()->files.find(name);
        const bool isThere = other != snapshot->files.end();
        const bool wasThere = first != known.front()->files.end();
        changes = changes || isThere != wasThere || (isThere && other->second != first->second);
    }
    if (present == now.files.end()) {
        return changes;
    }
    for (const TSnapshot* const snapshot : known) {
        const auto other = snapshot->files.find(name);
        if (other == snapshot->files.end()) {
            continue;
        }
        const bool isBeginning = present->second.size() <= other->second.size() &&
                                 std::equal(present->second.begin(), present->second.end(), other->second.begin());
        if (other->second == present->second || (changes && isBeginning)) {
            return true;
        }
    }
    return false;
}

} // namespace

TRun::TRun(const TScenario& runScenario) : scenario(runScenario)
{
    if (scenario.fill) {
        scenario.fill();
    }
    FileBytes::WriteFile("bystander", {1, 2, 3}); // nothing may ever touch it
    filesAtStart = Snapshots::Files();
    TWorld world;
    SetUp(world);
    states.push_back(Snapshots::Take(world));
    for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
        outcomes.push_back(Undisturbed(scenario.steps[i], world));
        states.push_back(Snapshots::Take(world));
    }
    endState = Snapshots::TakeWithContents(world);
    for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
        AddWaypoints(i);
    }
}

void TRun::FailEvery(const TFault& fault)
{
    // Files take long where a layer stands in for the system: some points must do there, and all are tried elsewhere.
    // That goes for long runs out of memory as well, each of which opens files on its way.
    const auto next = [&fault](std::size_t failAt) -> std::size_t {
        if (!kBackslashSystem) {
            return failAt + PointsAtATime();
        }
        return failAt + (!fault.ofMemory ? 13 : failAt < 20 ? 1 : 5);
    };
    for (std::size_t failAt = 1; !testing::Test::HasFailure(); failAt = next(failAt)) {
        ASSERT_LT(failAt, 3000u) << "no end";
        const std::size_t descriptors = Snapshots::OpenDescriptors();
        const std::size_t blocks = TAllocationFaults::LiveBlocks();
        SCOPED_TRACE(Describe(fault, failAt));
        const std::size_t blocksOfTrace = TAllocationFaults::LiveBlocks() - blocks;
        const bool fired = Attempt(fault, failAt);
        if (!testing::Test::HasFailure()) {
            EXPECT_EQ(TAllocationFaults::LiveBlocks() - blocksOfTrace, blocks) << "memory leaked";
        }
        EXPECT_EQ(Snapshots::OpenDescriptors(), descriptors) << "descriptors leaked";
        if (!fired) {
            break;
        }
        ++hits;
    }
}

std::string TRun::Describe(const TFault& fault, std::size_t failAt) const
{
    static const char* const names[] = {"opening for reading",
                                        "opening for writing",
                                        "reading",
                                        "writing",
                                        "seeking",
                                        "closing",
                                        "probing",
                                        "removing"};
    const std::string what = fault.ofMemory ? "allocation" : names[static_cast<std::size_t>(fault.operation)];
    return scenario.name + ": " + what + " " + std::to_string(failAt) + (fault.again ? " and all later" : "") +
           (fault.toTheEnd ? ", to the end" : "") + (fault.movedBytes > 0 ? ", cut short" : "");
}

void TRun::SetUp(TWorld& world) const
{
    Snapshots::RestoreFiles(filesAtStart);
    scenario.setUp(world);
    world.ForgetText();
}

void TRun::AddWaypoints(std::size_t index)
{
    waypoints.emplace_back();
    for (const auto& waypoint : scenario.steps[index].waypoints) {
        TWorld world;
        SetUp(world);
        for (std::size_t i = 0; i < index; ++i) {
            Undisturbed(scenario.steps[i], world);
        }
        waypoint(world);
        waypoints.back().push_back(Snapshots::Take(world));
    }
}

// Gives whether something was made to fail.
bool TRun::Attempt(const TFault& fault, std::size_t failAt) const
{
    TWorld world;
    SetUp(world);
    std::size_t number = failAt;
    for (std::size_t i = 0; i < scenario.steps.size(); ++i) {
        const TStep& step = scenario.steps[i];
        const std::string textBefore = world.Text();
        world.ForgetText();
        std::size_t used = 0;
        bool fired = false;
        TResult result;
        {
            TArmed armed(fault, number);
            result = Call(step, world);
            armed.Pause();
            fired = armed.Fired();
            used = armed.Count();
        }
        const std::string outcome = Outcome(result, world, textBefore);
        if (!fired) {
            EXPECT_EQ(outcome, outcomes[i]) << step.name << " with nothing failing";
            number -= used;
            continue;
        }
        if (fault.toTheEnd) {
            WithoutMemoryToTheEnd(world, i, outcome);
        } else {
            CheckHit(fault, world, i, outcome);
        }
        return true;
    }
    return false;
}

void TRun::CheckHealth(TWorld& world) const
{
    EXPECT_EQ(TFileFaults::OpenStreams(), 0u);
    EXPECT_TRUE(Snapshots::LockIsFree(world.object)) << "the object's lock is still held";
    EXPECT_TRUE(Snapshots::LockIsFree(world.source)) << "the source's lock is still held";
    EXPECT_EQ(Snapshots::Contradictions(world), "");
    world.ForgetText();
}

void TRun::CheckHit(const TFault& fault, TWorld& world, std::size_t index, const std::string& outcome) const
{
    const TStep& step = scenario.steps[index];
    const auto found = fault.ofMemory ? step.files.end() : step.files.find(fault.operation);
    if (!fault.ofMemory && found == step.files.end()) {
        ADD_FAILURE() << step.name << " is not known to fail so: " << outcome;
        return;
    }
    const TRule& rule = fault.ofMemory ? step.memory : found->second;
    EXPECT_EQ(rule.outcomes.count(outcome), 1u)
        << step.name << " gave " << outcome << ", allowed are:" << Joined(rule.outcomes);
    CheckHealth(world);
    const TSnapshot now = Snapshots::Take(world);
    CheckState(index, rule, now);
    if (testing::Test::HasFailure()) {
        return;
    }
    if (rule.heals) {
        // Not what left a text, nor what gave 0 without having done its work.
        const TSnapshot& after = states[index + 1];
        const bool isDone = outcome == "0" && AsAfter(after, after, now) && now.files == after.files;
        for (std::size_t i = isDone ? index + 1 : index; i < scenario.steps.size(); ++i) {
            const std::string again = Undisturbed(scenario.steps[i], world);
            // A text that is there already is no new one.
            EXPECT_TRUE(again == outcomes[i] || outcomes[i].compare(0, again.size() + 2, again + " '") == 0)
                << again << " for " << outcomes[i] << " from " << scenario.steps[i].name << " undisturbed after "
                << step.name << " gave " << outcome;
        }
        TSnapshot end = Snapshots::TakeWithContents(world);
        for (const std::string& field : rule.lost) {
            end.fields[field] = endState.fields.at(field);
        }
        EXPECT_EQ(Snapshots::Difference(endState, end), "") << "in the end, after " << step.name << " gave " << outcome;
    }
    EXPECT_EQ(Snapshots::Use(world, rule.heals), "") << "after " << step.name << " gave " << outcome;
}

void TRun::CheckState(std::size_t index, const TRule& rule, const TSnapshot& now) const
{
    const TSnapshot& before = states[index];
    const TSnapshot& after = states[index + 1];
    bool allowed = false;
    for (const TStateRule& state : rule.states) {
        allowed = allowed || state(before, after, now);
    }
    for (const TSnapshot& waypoint : waypoints[index]) {
        allowed = allowed || (now.fields == waypoint.fields && now.entries == waypoint.entries);
    }
    EXPECT_TRUE(allowed) << scenario.steps[index].name << " left a state that it must not leave;\n from before:\n"
                         << Snapshots::Difference(before, now) << " from after:\n"
                         << Snapshots::Difference(after, now);

    CheckFiles(index, rule, now);
}

void TRun::CheckFiles(std::size_t index, const TRule& rule, const TSnapshot& now) const
{
    const TSnapshot& before = states[index];
    const TSnapshot& after = states[index + 1];
    std::vector<const TSnapshot*> known = {&before, &after};
    std::set<std::string> names;
    for (const TSnapshot& waypoint : waypoints[index]) {
        known.push_back(&waypoint);
    }
    for (const TSnapshot* const snapshot : known) {
        for (const auto& file : snapshot->files) {
            names.insert(file.first);
        }
    }
    for (const auto& file : now.files) {
        EXPECT_EQ(names.count(file.first) + rule.made.count(file.first) > 0, true)
            << "a file that nobody asked for: " << file.first;
    }
    for (const std::string& name : names) {
        if (rule.made.count(name) > 0) {
            continue;
        }
        EXPECT_TRUE(IsFileAllowed(name, known, now, rule.torn.count(name) > 0))
            << "harmed: " << name << "; from before:\n"
            << Snapshots::Difference(before, now) << " from after:\n"
            << Snapshots::Difference(after, now);
    }
}

void TRun::WithoutMemoryToTheEnd(TWorld& world, std::size_t index, const std::string& outcome) const
{
    EXPECT_EQ(scenario.steps[index].memory.outcomes.count(outcome), 1u) << outcome;
    CheckHealth(world);
    for (std::size_t i = index + 1; i < scenario.steps.size(); ++i) {
        const TStep& step = scenario.steps[i];
        const std::string textBefore = world.Text();
        world.ForgetText();
        TAllocationFaults faults(1, TFaultRepeat::kForGood);
        const TResult result = Call(step, world);
        faults.Disarm();
        const std::string later = Outcome(result, world, textBefore);
        const std::string full = Outcome(result, world, ""); // two failures in a row leave the same text
        EXPECT_TRUE(step.memory.outcomes.count(later) + step.memory.outcomes.count(full) +
                            step.afterFailure.count(later) + step.afterFailure.count(full) >
                        0 ||
                    later == outcomes[i])
            << step.name << " without memory after a failure gave " << later;
        CheckHealth(world);
    }
    EXPECT_EQ(Snapshots::Use(world, false), "");
}

} // namespace Campaign
