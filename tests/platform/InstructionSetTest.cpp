// What the processor is found to have, against what the system says of it.
#include "platform/InstructionSet.h"

#include "kernels/Dispatch.h"
#include "kernels/Kernels.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <string>

namespace {

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
