// What the processor is found to have, against what the system says of it.
#include "platform/InstructionSet.h"

#include "kernels/Dispatch.h"
#include "kernels/Kernels.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <string>

namespace {

#if defined(__x86_64__) || defined(_M_X64)

// The first line of the system's list that begins with `name`, with a space at its end; empty where there is no list.
std::string ProcessorLine(const std::string& name)
{
    std::ifstream list("/proc/cpuinfo");
    for (std::string line; std::getline(list, line);) {
        if (line.rfind(name, 0) == 0) {
            return line + ' ';
        }
    }
    return "";
}

bool Has(const std::string& line, const char* word)
{
    return line.find(std::string(" ") + word + ' ') != std::string::npos;
}

TEST(InstructionSet, IsTheBestThatTheSystemLists)
{
    const std::string flags = ProcessorLine("flags");
    if (flags.empty()) {
        GTEST_SKIP() << "this system has no list of the processor's parts";
    }
    const bool hasAvx512 = Has(flags, "avx512f") && Has(flags, "avx512bw") && Has(flags, "avx512dq") &&
                           Has(flags, "avx512vl") && Has(flags, "avx2");
    EXPECT_EQ(Platform::BestInstructionSet(), hasAvx512            ? Platform::TInstructionSet::Avx512
                                              : Has(flags, "avx2") ? Platform::TInstructionSet::Avx2
                                                                   : Platform::TInstructionSet::Baseline);
    EXPECT_EQ(Platform::IsAmdProcessor(),
              Has(flags, "avx2") && ProcessorLine("vendor_id").find("AuthenticAMD") != std::string::npos);
}

#else

TEST(InstructionSet, IsTheBaselineOnOtherProcessors)
{
    EXPECT_EQ(Platform::BestInstructionSet(), Platform::TInstructionSet::Baseline);
    EXPECT_FALSE(Platform::IsAmdProcessor());
}

#endif

// Not only the processor: a system that does not save the registers of a set forbids it.
TEST(InstructionSet, WantsProcessorAndSystem)
{
    using Platform::TInstructionSet;
    constexpr std::uint32_t kAvx2 = 0x20;
    constexpr std::uint32_t kAvx512 = 0xC0030000;
    constexpr std::uint32_t kSse = 0x03, kAvx = 0x07, kAll = 0xE7;
    const auto best = [](std::uint32_t features, std::uint32_t saved) {
        return Platform::InstructionSetOf({features, saved, {}});
    };
    EXPECT_EQ(best(0, 0), TInstructionSet::Baseline);
    EXPECT_EQ(best(kAvx2, 0), TInstructionSet::Baseline);
    EXPECT_EQ(best(kAvx2, kSse), TInstructionSet::Baseline);
    EXPECT_EQ(best(kAvx2 | kAvx512, 0xE3), TInstructionSet::Baseline) << "without AVX's upper halves";
    EXPECT_EQ(best(kAvx512, kAll), TInstructionSet::Baseline) << "no processor is like that";
    EXPECT_EQ(best(kAvx2, kAvx), TInstructionSet::Avx2);
    EXPECT_EQ(best(kAvx2, kAll), TInstructionSet::Avx2);
    EXPECT_EQ(best(kAvx2 | kAvx512, kAvx), TInstructionSet::Avx2);
    EXPECT_EQ(best(kAvx2 | kAvx512, kAll), TInstructionSet::Avx512);
    for (int bit = 0; bit < 32; ++bit) {
        const std::uint32_t missing = 1u << bit;
        if ((kAvx512 & missing) != 0) {
            EXPECT_EQ(best((kAvx2 | kAvx512) & ~missing, kAll), TInstructionSet::Avx2) << bit;
        }
        if ((0xE0u & missing) != 0) {
            EXPECT_EQ(best(kAvx2 | kAvx512, kAll & ~missing), TInstructionSet::Avx2) << bit;
        }
    }
}

TEST(InstructionSet, KnowsAmdByItsWholeName)
{
    Platform::TProcessorFacts facts = {0x20, 0x07, {0x68747541, 0x69746E65, 0x444D4163}};
    EXPECT_TRUE(Platform::IsAmdProcessor(facts));
    for (std::uint32_t& part : facts.vendor) {
        ++part;
        EXPECT_FALSE(Platform::IsAmdProcessor(facts));
        --part;
    }
    facts.extendedFeatures = 0;
    EXPECT_FALSE(Platform::IsAmdProcessor(facts)) << "an old one";
}

TEST(InstructionSet, ChoosesTheHabitsOfTheProcessor)
{
    Kernels::chosenHabits.store(nullptr);
    std::uint16_t pixel = 3;
    const std::uint16_t background = 1;
    std::uint16_t output = 0;
    Kernels::SubtractInto(&output, &pixel, &background, 1);
    EXPECT_EQ(output, 2);
    const Kernels::TMemoryHabits* const habits = Kernels::chosenHabits.load();
    ASSERT_NE(habits, nullptr);
    EXPECT_EQ(habits->streamingLength,
              Platform::IsAmdProcessor() ? std::size_t{2048} * 2048 : std::numeric_limits<std::size_t>::max());
    EXPECT_EQ(habits->isAskingAhead, !Platform::IsAmdProcessor());
}

} // namespace
