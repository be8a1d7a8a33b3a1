// Runs tests once for each instruction set that the library has kernels for.
#ifndef QXBC_TESTS_FORCED_INSTRUCTION_SET_H
#define QXBC_TESTS_FORCED_INSTRUCTION_SET_H

#include "kernels/Dispatch.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <limits>
#include <ostream>
#include <string>

// How large arrays are walked through: outputs past the caches whatever their length, inputs asked for ahead, or
// neither.
enum class TWay { PastTheCaches, AskingAhead, Plainly };

constexpr TWay kEveryWay[] = {TWay::PastTheCaches, TWay::AskingAhead, TWay::Plainly};

inline void ForceWay(TWay way)
{
    constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();
    static constexpr Kernels::TMemoryHabits kHabits[] = {{1, false}, {kNever, true}, {kNever, false}};
    Kernels::chosenHabits.store(&kHabits[static_cast<int>(way)]);
}

inline std::ostream& operator<<(std::ostream& stream, TWay way)
{
    const char* const names[] = {" past the caches", " asking ahead", ""};
    return stream << names[static_cast<int>(way)];
}

// A test of this fixture uses the kernels of its parameter, and is skipped where the processor lacks the instructions.
class TForcedInstructionSet : public testing::TestWithParam<Platform::TInstructionSet> {
protected:
    void SetUp() override
    {
        if (GetParam() > Platform::BestInstructionSet()) {
            GTEST_SKIP() << "this processor or system does not have the instruction set";
        }
        Kernels::chosenTable.store(&Kernels::TableFor(GetParam()));
    }
    void TearDown() override
    {
        Kernels::chosenTable.store(nullptr);
        Kernels::chosenHabits.store(nullptr);
    }
};

inline std::string InstructionSetName(const testing::TestParamInfo<Platform::TInstructionSet>& info)
{
    const char* const names[] = {"Baseline", "Avx2", "Avx512"};
    return names[static_cast<int>(info.param)];
}

#define QXBC_FOR_EVERY_INSTRUCTION_SET(Fixture)                                                                        \
    INSTANTIATE_TEST_SUITE_P(Forced, Fixture,                                                                          \
                             testing::Values(Platform::TInstructionSet::Baseline, Platform::TInstructionSet::Avx2,     \
                                             Platform::TInstructionSet::Avx512),                                       \
                             InstructionSetName)

#endif
