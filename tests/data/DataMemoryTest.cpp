// Entries and lists when memory runs out: every allocation of an operation fails once, and from there on for good.
#include "data/TCorrectionList.h"

#include "data/EntryBuilding.h"
#include "support/AllocationFaults.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>

namespace {

constexpr TFaultRepeat kRepeats[] = {TFaultRepeat::kOnce, TFaultRepeat::kForGood};

// One attempt with a failing allocation. Gives the text of the exception, or an empty one.
template <typename TSubject, typename TAttempt>
std::string AttemptText(TSubject& subject, TAttempt attempt, TAllocationFaults& faults)
{
    char text[600] = "";
    try {
        attempt(subject);
    } catch (const TZRException& caught) {
        std::char_traits<char>::copy(text, caught.what(), std::char_traits<char>::length(caught.what()) + 1);
    }
    faults.Disarm();
    return text;
}

// Calls `attempt` with a failing allocation, later and later, until none failed. `check` gets the exception's text and
// the size of what failed. No block may be lost on the way.
template <typename TSetUp, typename TAttempt, typename TCheck>
void WithEveryAllocationFailing(TSetUp setUp, TAttempt attempt, TCheck check)
{
    for (const TFaultRepeat repeat : kRepeats) {
        for (std::size_t failAt = 1;; ++failAt) {
            ASSERT_LT(failAt, 100u) << "no end";
            const std::size_t before = TAllocationFaults::LiveBlocks();
            {
                auto subject = setUp();
                TAllocationFaults faults(failAt, repeat);
                AttemptText(*subject, attempt, faults);
            }
            EXPECT_EQ(TAllocationFaults::LiveBlocks(), before) << "leak after allocation " << failAt;

            auto subject = setUp();
            TAllocationFaults faults(failAt, repeat);
            const std::string text = AttemptText(*subject, attempt, faults);
            if (!faults.Fired()) {
                EXPECT_GT(failAt, 1u) << "nothing was allocated";
                EXPECT_EQ(text, "");
                break;
            }
            check(*subject, text, faults.FailedSize());
        }
    }
}

std::unique_ptr<TCorrectionList> ListOf(std::size_t count)
{
    auto list = std::make_unique<TCorrectionList>();
    for (std::size_t i = 0; i < count; ++i) {
        list->AddEntry(RowEntry(("kept" + std::to_string(i)).c_str(), {1}));
    }
    return list;
}

// As many as a list has room for at first: the next one needs memory for itself.
constexpr std::size_t kFull = 8;

std::unique_ptr<TCorrectionList> FullList()
{
    return ListOf(kFull);
}

TEST(DataMemory, CopyingAnEntryNamesTheConstruction)
{
    const TBackgroundCorrectionEntry original = RowEntry("dark", {1, 2, 3});
    TBackgroundCorrectionEntry target = RowEntry("other", {1, 2});
    TAllocationFaults faults(1);
    const bool isCopyRefused =
        ThrownText([&] { const TBackgroundCorrectionEntry copy(original); }) == kConstructionMemoryText;
    faults.Disarm();
    EXPECT_TRUE(isCopyRefused);
    TAllocationFaults moreFaults(1);
    EXPECT_EQ(ThrownText([&] { target = original; }), kConstructionMemoryText);
    moreFaults.Disarm();
    EXPECT_EQ(target.Pixels(), nullptr) << "its own pixels are freed first";
}

TEST(DataMemory, CreatingNamesTheStepThatFailed)
{
    constexpr std::uint32_t kWidth = 19;
    constexpr std::uint32_t kHeight = 23;
    constexpr std::size_t kCount = std::size_t{kWidth} * kHeight;
    const std::size_t workSize = Kernels::AverageScratchLength(kCount) * sizeof(float);
    const std::size_t paddedSize = Kernels::MedianScratchLength(kWidth) * sizeof(std::uint16_t);
    TRandomImages random(40);
    const auto frames = random.Stack(2, static_cast<int>(kWidth), static_cast<int>(kHeight));
    const std::uint16_t* const pointers[] = {frames[0].pixels.data(), frames[1].pixels.data()};

    std::set<std::string> texts;
    WithEveryAllocationFailing(
        FullList,
        [&pointers](TCorrectionList& list) { list.CreateAndAddEntry("new", pointers, 2, kWidth, kHeight, 1.0f, 1.0f); },
        [&](const TCorrectionList& list, const std::string& text, std::size_t failedSize) {
            texts.insert(text);
            const bool isWorkBuffer = failedSize == workSize || failedSize == paddedSize;
            EXPECT_EQ(text, failedSize == kCount * sizeof(std::uint16_t) ? kConstructionMemoryText
                            : isWorkBuffer                               ? kCreationMemoryText
                                                                         : kAddingMemoryText)
                << failedSize << " bytes";
            ASSERT_EQ(list.Count(), kFull);
            EXPECT_EQ(list.FindEntry("new"), nullptr);
        });
    EXPECT_EQ(texts, (std::set<std::string>{kConstructionMemoryText, kCreationMemoryText, kAddingMemoryText}));
}

TEST(DataMemory, AddingACopyNamesTheNodeOrThePixels)
{
    const TBackgroundCorrectionEntry entry = RowEntry("new", {1, 2, 3, 4, 5});
    std::set<std::string> texts;
    WithEveryAllocationFailing(
        FullList, [&entry](TCorrectionList& list) { list.AddEntry(entry); },
        [&texts](const TCorrectionList& list, const std::string& text, std::size_t failedSize) {
            texts.insert(text);
            EXPECT_EQ(text, failedSize == 10 ? kConstructionMemoryText : kAddingMemoryText);
            ASSERT_EQ(list.Count(), kFull);
        });
    EXPECT_EQ(texts, (std::set<std::string>{kConstructionMemoryText, kAddingMemoryText}));
}

TEST(DataMemory, ImportingKeepsWhatWasImportedBefore)
{
    TCorrectionList source;
    source.AddEntry(RowEntry("first", {1, 2, 3, 4, 5}));
    source.AddEntry(RowEntry("second", {1, 2, 3, 4, 5}));
    std::set<std::string> texts;
    std::set<std::size_t> counts;
    WithEveryAllocationFailing(
        [] { return ListOf(kFull - 1); }, [&source](TCorrectionList& list) { list.ImportEntries(source, false); },
        [&](const TCorrectionList& list, const std::string& text, std::size_t failedSize) {
            texts.insert(text);
            counts.insert(list.Count());
            EXPECT_EQ(text, failedSize == 10 ? kConstructionMemoryText : "Could not allocate memory during import.");
            EXPECT_STREQ(list.EntryAt(0).Key(), "kept0");
            if (list.Count() >= kFull) {
                EXPECT_STREQ(list.EntryAt(kFull - 1).Key(), "first");
                EXPECT_EQ(PixelsOf(list.EntryAt(kFull - 1)).size(), 5u);
            }
        });
    EXPECT_EQ(texts, (std::set<std::string>{kConstructionMemoryText, "Could not allocate memory during import."}));
    EXPECT_EQ(counts, (std::set<std::size_t>{kFull - 1, kFull}));
}

// Longer than what a text keeps within itself.
std::string LongKey()
{
    return std::string(TBackgroundCorrectionEntry::kMaximumKeyLength, 'k');
}

TEST(DataMemory, ALongKeyBelongsToTheConstruction)
{
    const std::string key = LongKey();
    const TBackgroundCorrectionEntry entry = RowEntry(key.c_str(), {1, 2, 3, 4, 5});
    const std::uint16_t pixel = 1;
    const std::uint16_t* const frames[] = {&pixel};
    std::size_t keysRefused = 0;
    const auto check = [&](const TCorrectionList& list, const std::string& text, std::size_t failedSize) {
        if (failedSize == key.size() + 1) {
            EXPECT_EQ(text, kConstructionMemoryText);
            ++keysRefused;
        }
        EXPECT_NE(text, "");
        ASSERT_EQ(list.Count(), kFull);
    };
    WithEveryAllocationFailing(FullList, [&entry](TCorrectionList& list) { list.AddEntry(entry); }, check);
    EXPECT_EQ(keysRefused, 2u) << "once, and for good";
    WithEveryAllocationFailing(
        FullList, [&](TCorrectionList& list) { list.CreateAndAddEntry(key.c_str(), frames, 1, 1, 1, 1.0f, 1.0f); },
        check);
    EXPECT_EQ(keysRefused, 4u);
}

TEST(DataMemory, AssigningWithoutMemoryForTheKeyChangesNothing)
{
    const TBackgroundCorrectionEntry original = RowEntry(LongKey().c_str(), {1, 2, 3});
    TBackgroundCorrectionEntry target = RowEntry("other", {1, 2});
    TAllocationFaults faults(1);
    EXPECT_EQ(ThrownText([&] { target = original; }), kConstructionMemoryText);
    faults.Disarm();
    EXPECT_STREQ(target.Key(), "other");
    EXPECT_EQ(PixelsOf(target), (std::vector<std::uint16_t>{1, 2}));
}

// Hosts hold the address of a key while its correction is there.
TEST(DataMemory, AnImportLeavesTheKeyWhereItIs)
{
    std::string otherCase = LongKey();
    otherCase[100] = 'K';
    TCorrectionList list;
    list.AddEntry(RowEntry(LongKey().c_str(), {1}));
    const char* const key = list.EntryAt(0).Key();
    TCorrectionList source;
    source.AddEntry(RowEntry(otherCase.c_str(), {2}));
    list.ImportEntries(source, true);
    EXPECT_EQ(list.EntryAt(0).Key(), key);
    EXPECT_STREQ(key, otherCase.c_str());
}

TEST(DataMemory, AListStaysUsableAfterAFailure)
{
    const TBackgroundCorrectionEntry entry = RowEntry("new", {7, 8});
    WithEveryAllocationFailing(
        FullList, [&entry](TCorrectionList& list) { list.AddEntry(entry); },
        [](TCorrectionList& list, const std::string&, std::size_t) {
            list.AddEntry(RowEntry("new", {7, 8}));
            list.AddEntry(RowEntry("newer", {9}));
            ASSERT_EQ(list.Count(), kFull + 2);
            EXPECT_STREQ(list.EntryAt(kFull).Key(), "new");
            EXPECT_EQ(list.FindEntry("NEWER"), &list.EntryAt(kFull + 1));
            EXPECT_EQ(list.RemoveEntry("new"), 0);
            EXPECT_STREQ(list.EntryAt(kFull).Key(), "newer");
        });
}

} // namespace
