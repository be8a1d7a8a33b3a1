// An operation holds its object's lock for its whole run: nothing happens before it is taken or after it is given back,
// neither to another lock nor to memory. An import holds its source's lock as well, to the end.
#include "offline/TBackgroundCorrectionFileManager.h"
#include "processor/TBackgroundCorrectionProcessorUINT16.h"
#include "support/TemporaryFolder.h"
#include "threads/LockWatch.h"
#include "threads/ThreadHost.h"

#include <gtest/gtest.h>

#include <memory>

using namespace ThreadHost;
using LockWatch::TEvent;

namespace {

// The lock that lies within an object.
struct TOwner {
    const void* object;
    std::size_t size;

    bool Owns(const TEvent& event) const
    {
        const char* const first = static_cast<const char*>(object);
        const char* const section = static_cast<const char*>(event.section);
        return section >= first && section < first + size;
    }
};

TOwner Processor(const TObject& object)
{
    return {object.Get(), sizeof(TBackgroundCorrectionProcessorUINT16)};
}

TOwner Store(const TObject& object)
{
    return {object.Get(), sizeof(TBackgroundCorrectionFileManager)};
}

struct TRecord {
    unsigned int code;
    std::vector<TEvent> events;
    std::size_t allocations;
    std::size_t frees;
};

template <typename TWork> TRecord Watch(TWork work)
{
    LockWatch::TWatch watch;
    const unsigned int code = work();
    std::vector<TEvent> events = watch.Stop();
    return {code, std::move(events), watch.Allocations(), watch.Frees()};
}

// Whether the owner's lock is held from the first of these events to the last, without a gap, and by whom.
testing::AssertionResult IsHeldThroughout(const TOwner& owner, const TEvent* first, const TEvent* last)
{
    if (first > last || !owner.Owns(*first) || !owner.Owns(*last)) {
        return testing::AssertionFailure() << "the lock is not the first that is taken and the last to be given back";
    }
    int depth = 0;
    for (const TEvent* event = first; event <= last; ++event) {
        if (owner.Owns(*event)) {
            depth += event->isTaken ? 1 : -1;
        }
        if ((depth == 0) != (event == last)) {
            return testing::AssertionFailure()
                   << "the lock is given back after " << event - first + 1 << " of " << last - first + 1 << " steps";
        }
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult IsHeldThroughout(const TOwner& owner, const TRecord& record)
{
    if (record.events.empty()) {
        return testing::AssertionFailure() << "no lock is taken";
    }
    const TEvent& first = record.events.front();
    const TEvent& last = record.events.back();
    if (first.allocations != 0 || first.frees != 0) {
        return testing::AssertionFailure() << "memory is allocated or freed before the lock is taken";
    }
    if (last.allocations != record.allocations || last.frees != record.frees) {
        return testing::AssertionFailure() << "memory is allocated or freed after the lock was given back";
    }
    return IsHeldThroughout(owner, &first, &last);
}

// The states in which an operation takes one way or the other.
enum class TState { Fresh, Unnamed, Named, Reopened, HeaderOnly };
constexpr TState kStates[] = {TState::Fresh, TState::Unnamed, TState::Named, TState::Reopened, TState::HeaderOnly};

std::unique_ptr<TObject> MakeStore(TState state, const std::string& base)
{
    auto store = std::make_unique<TObject>(std::vector<std::string>{"A", "B"});
    if (state == TState::Fresh) {
        return store;
    }
    EXPECT_EQ(AddFlat(*store->Get(), "A,1,B,1", 10), 0u);
    EXPECT_EQ(AddFlat(*store->Get(), "A,2,B,1", 20), 0u);
    if (state != TState::Unnamed) {
        EXPECT_EQ((*store)->SaveFile(base.c_str()), 0u);
    }
    if (state == TState::HeaderOnly) {
        EXPECT_EQ((*store)->LoadFileHeaderOnly(base.c_str()), 0u);
    } else if (state != TState::Reopened) {
        EXPECT_EQ((*store)->SetActiveCorrection("A,1,B,1"), 0u);
        EXPECT_EQ(AddFlat(*store->Get(), "A,1,B,1,more", 30), 0u); // to be written when the group is left
    }
    return store;
}

struct TNames {
    std::string saved; // is a store
    std::string other; // is none yet
};

struct TOperation {
    const char* name;
    unsigned int (*call)(QX_IBackgroundCorrection& object, QX_IBackgroundCorrection& source, const TNames& names);
};

unsigned int Ignore(const void*)
{
    return 0;
}

// Each does its work on a named store with a group loaded, and allocates nothing of its own.
const TOperation kOperations[] = {
    {"AddCorrection",
     [](auto& object, auto&, auto&) {
         static const unsigned short frame[kPixels] = {40};
         const unsigned short* frames[] = {frame};
         return object.AddCorrection("A,2,B,1,new", frames, 1, kSide, kSide, 1.0f, 100.0f);
     }},
    {"SetActiveCorrection", [](auto& object, auto&, auto&) { return object.SetActiveCorrection("A,2,B,1"); }},
    {"SetActiveCorrection of none", [](auto& object, auto&, auto&) { return object.SetActiveCorrection(nullptr); }},
    {"GetActiveCorrectionKey", [](auto& object, auto&, auto&) { return Ignore(object.GetActiveCorrectionKey()); }},
    {"GetCorrectionKey", [](auto& object, auto&, auto&) { return Ignore(object.GetCorrectionKey(0)); }},
    {"GetNumberOfCorrections", [](auto& object, auto&, auto&) { return object.GetNumberOfCorrections() * 0u; }},
    {"ClearCorrections", [](auto& object, auto&, auto&) { return object.ClearCorrections(); }},
    {"DeleteCorrection", [](auto& object, auto&, auto&) { return object.DeleteCorrection("A,2,B,1"); }},
    {"SetCorrectionLevel", [](auto& object, auto&, auto&) { return object.SetCorrectionLevel(50); }},
    {"SetExposureAndIntensity", [](auto& object, auto&, auto&) { return object.SetExposureAndIntensity(2.0f, 3.0f); }},
    {"GetExposureAndIntensity",
     [](auto& object, auto&, auto&) {
         float values[2];
         return object.GetExposureAndIntensity(&values[0], &values[1]);
     }},
    {"GetReferenceExposureAndIntensity",
     [](auto& object, auto&, auto&) {
         float values[2];
         return object.GetReferenceExposureAndIntensity(&values[0], &values[1]);
     }},
    {"GetCorrectionStatistics",
     [](auto& object, auto&, auto&) {
         unsigned short values[3];
         return object.GetCorrectionStatistics(&values[0], &values[1], &values[2]);
     }},
    {"GetScaledCorrectionStatistics",
     [](auto& object, auto&, auto&) {
         unsigned short values[3];
         return object.GetScaledCorrectionStatistics(&values[0], &values[1], &values[2]);
     }},
    {"ApplyCorrection",
     [](auto& object, auto&, auto&) {
         unsigned short image[kPixels] = {};
         return object.ApplyCorrection(image, kPixels, nullptr, 0, nullptr, false, false, false);
     }},
    {"SetRegion", [](auto& object, auto&, auto&) { return object.SetRegion(1, 1, 2, 2); }},
    {"GetRegion",
     [](auto& object, auto&, auto&) {
         int values[4];
         return object.GetRegion(&values[0], &values[1], &values[2], &values[3]);
     }},
    {"ImportCorrections", [](auto& object, auto& source, auto&) { return object.ImportCorrections(&source, true); }},
    {"LoadFileHeaderOnly",
     [](auto& object, auto&, auto& names) { return object.LoadFileHeaderOnly(names.saved.c_str()); }},
    {"LoadFile", [](auto& object, auto&, auto& names) { return object.LoadFile(names.saved.c_str()); }},
    {"SaveFile", [](auto& object, auto&, auto& names) { return object.SaveFile(names.other.c_str()); }},
    {"GetLastErrorMessage", [](auto& object, auto&, auto&) { return Ignore(object.GetLastErrorMessage()); }},
};

TEST(LocksHeld, EveryOperationOfAStoreHoldsItsLockForItsWholeRun)
{
    const TObject source;
    ASSERT_EQ(AddFlat(*source.Get(), "A,2,B,1", 50), 0u);
    ASSERT_EQ(AddFlat(*source.Get(), "A,3,B,1", 60), 0u);
    for (const TState state : kStates) {
        for (const TOperation& operation : kOperations) {
            const TTemporaryFolder folder;
            const TNames names = {folder.File("s"), folder.File("t")};
            const std::unique_ptr<TObject> store = MakeStore(state, names.saved);
            const TRecord record = Watch([&] { return operation.call(*store->Get(), *source.Get(), names); });
            EXPECT_TRUE(IsHeldThroughout(Store(*store), record)) << operation.name << ", state " << int(state);
            if (state == TState::Named) {
                EXPECT_EQ(record.code, 0u) << operation.name << " did nothing";
            }
        }
    }
}

TEST(LocksHeld, SoDoNamingTheGroupsOfAStoreAndItsEnd)
{
    const char* const names[] = {"A", "B"};
    auto* const store = new TBackgroundCorrectionFileManager;
    const TOwner owner = {static_cast<QX_IBackgroundCorrection*>(store), sizeof *store};
    const TRecord naming = Watch([&] { return store->SetGroupingParameters(names, 2); });
    EXPECT_TRUE(IsHeldThroughout(owner, naming));
    EXPECT_EQ(naming.code, 0u);
    EXPECT_GT(naming.allocations, 0u);
    ASSERT_EQ(AddFlat(*store, "A,1,B,1", 10), 0u); // a group, which goes with the store
    const TRecord end = Watch([&] { return DeleteBackgroundCorrection(store); });
    EXPECT_EQ(end.code, 0u);
    ASSERT_FALSE(end.events.empty());
    EXPECT_TRUE(IsHeldThroughout(owner, &end.events.front(), &end.events.back()));
}

TEST(LocksHeld, EveryOperationOfAProcessorHoldsItsLockForItsWholeRun)
{
    const TObject source;
    ASSERT_EQ(AddFlat(*source.Get(), "A,3,B,1", 60), 0u);
    for (const TOperation& operation : kOperations) {
        const TTemporaryFolder folder;
        const TNames names = {folder.File("s"), folder.File("t")};
        const TObject processor;
        ASSERT_EQ(AddFlat(*processor.Get(), "A,1,B,1", 10), 0u);
        ASSERT_EQ(AddFlat(*processor.Get(), "A,2,B,1", 20), 0u);
        ASSERT_EQ(processor->SaveFile(names.saved.c_str()), 0u);
        ASSERT_EQ(processor->SetActiveCorrection("A,1,B,1"), 0u);
        const TRecord record = Watch([&] { return operation.call(*processor.Get(), *source.Get(), names); });
        EXPECT_TRUE(IsHeldThroughout(Processor(processor), record)) << operation.name;
        EXPECT_EQ(record.code, 0u) << operation.name << " did nothing";
    }
}

// The source's lock is the second that is taken and the last but one that is given back, and what is copied is copied
// meanwhile.
void CheckImport(const TOwner& target, const TOwner& source, const TRecord& record, std::size_t copies)
{
    EXPECT_EQ(record.code, 0u);
    EXPECT_TRUE(IsHeldThroughout(target, record));
    ASSERT_GE(record.events.size(), 4u);
    const TEvent& taken = record.events[1];
    const TEvent& givenBack = record.events[record.events.size() - 2];
    EXPECT_TRUE(IsHeldThroughout(source, &taken, &givenBack)) << "the source's";
    EXPECT_GE(givenBack.allocations - taken.allocations, copies) << "copied while the source was locked";
    EXPECT_EQ(record.allocations, givenBack.allocations) << "the import goes on after the source was let go";
    EXPECT_EQ(record.frees, givenBack.frees) << "the import goes on after the source was let go";
}

TEST(LocksHeld, AProcessorsImportHoldsItsSourceToTheEnd)
{
    const TObject source;
    const TObject target;
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(AddFlat(*source.Get(), "k" + std::to_string(i), 10), 0u);
    }
    ASSERT_EQ(AddFlat(*target.Get(), "k3", 20), 0u);
    ASSERT_EQ(target->SetActiveCorrection("k3"), 0u);
    const TRecord record = Watch([&] { return target->ImportCorrections(source.Get(), true); });
    EXPECT_EQ(target->GetNumberOfCorrections(), 5u);
    CheckImport(Processor(target), Processor(source), record, 4); // a buffer of the same size is used again
}

TEST(LocksHeld, AStoresImportHoldsItsSourceToTheEnd)
{
    const TObject processor;
    ASSERT_EQ(AddFlat(*processor.Get(), "A,2,B,1", 50), 0u);
    ASSERT_EQ(AddFlat(*processor.Get(), "A,3,B,1", 60), 0u);
    for (const TState state : {TState::Unnamed, TState::Named}) {
        for (const TState sourceState : {TState::Unnamed, TState::Named, TState::Reopened}) {
            const TTemporaryFolder folder;
            const std::unique_ptr<TObject> source = MakeStore(sourceState, folder.File("source"));
            const std::unique_ptr<TObject> target = MakeStore(state, folder.File("target"));
            // With another correction active: making it active again is part of the import.
            ASSERT_EQ(AddFlat(*target->Get(), "A,4,B,1", 70), 0u);
            ASSERT_EQ((*target)->SetActiveCorrection("A,4,B,1"), 0u);
            const TRecord fromStore = Watch([&] { return (*target)->ImportCorrections(source->Get(), true); });
            CheckImport(Store(*target), Store(*source), fromStore, 2);
            const TRecord fromProcessor = Watch([&] { return (*target)->ImportCorrections(processor.Get(), true); });
            CheckImport(Store(*target), Processor(processor), fromProcessor, 2);
            EXPECT_STREQ((*target)->GetActiveCorrectionKey(), "A,4,B,1");
        }
    }
}

} // namespace
