// The register behind the list of corrections and the store's keys, against a plain sequence.
#include "data/containers/TOrderedRegister.h"

#include "support/AllocationFaults.h"
#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace {

struct TTextRule {
    static const char* Text(const std::string& value) { return value.c_str(); }
    static bool AreEqual(const char* left, const char* right) { return std::strcmp(left, right) == 0; }
    static std::uint64_t Hash(const char* text, const TextHash::TSeed& seed) { return TextHash::Of(text, seed); }
};
using TRegister = TOrderedRegister<std::string, TTextRule>;

// Few hashes for many texts: cells are taken by others, also around the end of the table.
struct TCollidingRule : TTextRule {
    static std::uint64_t Hash(const char* text, const TextHash::TSeed&)
    {
        return ~std::uint64_t{0} - static_cast<std::uint64_t>(text[0] % 3);
    }
};

template <typename TRule> std::vector<std::string> Values(const TOrderedRegister<std::string, TRule>& values)
{
    std::vector<std::string> all;
    values.ForEach([&all](const std::string& value) { all.push_back(value); });
    return all;
}

template <typename TRule>
void ExpectEqual(const TOrderedRegister<std::string, TRule>& values, const std::vector<std::string>& model)
{
    ASSERT_EQ(Values(values), model);
    ASSERT_EQ(values.Count(), model.size());
    for (std::size_t i = 0; i < model.size(); ++i) {
        ASSERT_EQ(values.At(i), model[i]) << "at position " << i << " of " << model.size();
        const std::string* const found = values.Find(model[i].c_str());
        ASSERT_TRUE(found != nullptr && *found == model[i]) << "at position " << i << " of " << model.size();
    }
}

// Long enough that slots are renumbered many times; texts come several times each.
template <typename TRule> void FollowASequence(unsigned int seed)
{
    TRandomImages random(seed);
    TOrderedRegister<std::string, TRule> values;
    std::vector<std::string> model;
    for (int step = 0; step < 3000; ++step) {
        const std::string text = std::to_string(random.Number(0, 150));
        const bool growing = step / 300 % 2 == 0;
        if (random.Number(0, 9) < (growing ? 8u : 2u)) {
            values.Append(text);
            model.push_back(text);
        } else {
            const std::size_t before = model.size();
            model.erase(std::remove(model.begin(), model.end(), text), model.end());
            ASSERT_EQ(values.Remove(text.c_str()), before - model.size());
        }
        const std::string wanted = std::to_string(random.Number(0, 150));
        const std::string* const found = values.Find(wanted.c_str());
        ASSERT_EQ(found != nullptr, std::count(model.begin(), model.end(), wanted) > 0) << "step " << step;
        ASSERT_TRUE(found == nullptr || *found == wanted) << "step " << step;
        if (step % 7 == 0) {
            ASSERT_NO_FATAL_FAILURE(ExpectEqual(values, model)) << "step " << step;
        }
    }
}

TEST(OrderedRegister, FollowsASequenceThroughAppendingAndRemoving)
{
    FollowASequence<TTextRule>(1);
}

TEST(OrderedRegister, FollowsASequenceWhereTextsCollide)
{
    FollowASequence<TCollidingRule>(2);
}

TEST(OrderedRegister, FindsTheFirstOfEqualTexts)
{
    TRegister values;
    for (int i = 0; i < 5; ++i) {
        values.Append(std::string("same"));
    }
    EXPECT_EQ(values.Find("same"), &values.At(0));
    EXPECT_EQ(values.Remove("same"), 5u);
    EXPECT_EQ(values.Find("same"), nullptr);
    EXPECT_EQ(values.Count(), 0u);
}

TEST(OrderedRegister, StartsAnewAfterClear)
{
    TRegister values;
    for (int i = 0; i < 100; ++i) {
        values.Append(std::to_string(i));
    }
    values.Remove("5");
    values.Clear();
    ExpectEqual(values, {});
    values.Append(std::string("b"));
    values.Append(std::string("a"));
    ExpectEqual(values, {"b", "a"});
}

TEST(OrderedRegister, RemovesByTheTextOfAValueThatGoes)
{
    TRegister values;
    values.Append(std::string(100, 'x')); // long, so that the text lies in memory of its own
    values.Append(std::string("y"));
    EXPECT_EQ(values.Remove(values.At(0).c_str()), 1u);
    ExpectEqual(values, {"y"});
}

TEST(OrderedRegister, AppendsWithoutMemoryWhatRoomWasMadeFor)
{
    TRegister values;
    std::vector<std::string> model;
    for (int i = 0; i < 200; ++i) { // across several sizes of the slots, the cells and the nodes' blocks
        model.push_back(std::to_string(i));
        values.ReserveOne();
        TAllocationFaults noMemory(1, TFaultRepeat::kForGood);
        values.Append(std::string(model.back())); // short: it needs no memory of its own
        noMemory.Disarm();
        ASSERT_FALSE(noMemory.Fired()) << i;
    }
    ExpectEqual(values, model);
}

TEST(OrderedRegister, StaysAsItWasWhenMemoryRunsOut)
{
    const std::string text(200, 'x');
    // Sizes at which the slots, the nodes' blocks (8, 16, 32) and the cells (12, 25) have no room for one more.
    for (std::size_t size : {0u, 1u, 8u, 12u, 16u, 17u, 25u, 32u}) {
        for (std::size_t failing = 1;; ++failing) {
            TRegister values;
            std::vector<std::string> model;
            for (std::size_t i = 0; i < size; ++i) {
                model.push_back(std::to_string(i));
                values.Append(model.back());
            }
            bool failed = false;
            {
                TAllocationFaults memory(failing, TFaultRepeat::kOnce);
                try {
                    values.Append(text);
                } catch (const std::bad_alloc&) {
                    failed = true;
                }
            }
            if (!failed) {
                model.push_back(text);
            }
            ASSERT_NO_FATAL_FAILURE(ExpectEqual(values, model)) << "allocation " << failing;
            values.Append(std::string("after"));
            model.push_back("after");
            ASSERT_NO_FATAL_FAILURE(ExpectEqual(values, model)) << "allocation " << failing;
            if (!failed) {
                ASSERT_GT(failing, 1u) << "nothing was made to fail";
                break;
            }
        }
    }
}

} // namespace
