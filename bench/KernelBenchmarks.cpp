// Each kernel, for each instruction set that this processor has. The last number of a name is the image's side.
#include "kernels/Dispatch.h"
#include "kernels/Kernels.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kFrameCount = 10;

std::vector<std::uint16_t> Noise(std::size_t count, std::uint32_t seed)
{
    std::vector<std::uint16_t> pixels(count);
    for (std::uint16_t& pixel : pixels) {
        seed = seed * 1664525u + 1013904223u;
        pixel = static_cast<std::uint16_t>(100 + (seed >> 16) % 50000);
    }
    return pixels;
}

template <typename TRun>
void Register(const std::string& kernel, const std::string& set, const Kernels::TKernelTable* table, TRun run)
{
    for (const std::int64_t side : {64, 512, 2048, 4096}) {
        const std::string name = kernel + "/" + set + "/" + std::to_string(side);
        benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
            Kernels::chosenTable.store(table);
            run(state, static_cast<std::size_t>(side));
            state.SetItemsProcessed(state.iterations() * side * side);
            Kernels::chosenTable.store(nullptr);
        });
    }
}

void RegisterAll(const std::string& set, const Kernels::TKernelTable* table)
{
    Register("SubtractInPlace", set, table, [](benchmark::State& state, std::size_t side) {
        auto image = Noise(side * side, 1);
        const auto background = Noise(side * side, 2);
        for (auto iteration : state) {
            static_cast<void>(iteration);
            Kernels::SubtractInPlace(image.data(), background.data(), image.size());
            benchmark::ClobberMemory();
        }
    });
    Register("SubtractInto", set, table, [](benchmark::State& state, std::size_t side) {
        const auto image = Noise(side * side, 1);
        const auto background = Noise(side * side, 2);
        auto output = Noise(side * side, 3);
        for (auto iteration : state) {
            static_cast<void>(iteration);
            Kernels::SubtractInto(output.data(), image.data(), background.data(), image.size());
            benchmark::ClobberMemory();
        }
    });
    Register("Scale", set, table, [](benchmark::State& state, std::size_t side) {
        const auto image = Noise(side * side, 1);
        auto output = Noise(side * side, 3);
        for (auto iteration : state) {
            static_cast<void>(iteration);
            Kernels::Scale(output.data(), image.data(), image.size(), 1.3f);
            benchmark::ClobberMemory();
        }
    });
    Register("Average10", set, table, [](benchmark::State& state, std::size_t side) {
        std::vector<std::vector<std::uint16_t>> stack;
        std::vector<const std::uint16_t*> frames;
        for (std::uint32_t frame = 0; frame < kFrameCount; ++frame) {
            stack.push_back(Noise(side * side, frame));
            frames.push_back(stack.back().data());
        }
        auto output = Noise(side * side, 3);
        std::vector<float> scratch(Kernels::AverageScratchLength(side * side));
        for (auto iteration : state) {
            static_cast<void>(iteration);
            Kernels::Average(output.data(), frames.data(), kFrameCount, side * side, scratch.data());
            benchmark::ClobberMemory();
        }
    });
    Register("Median3x3", set, table, [](benchmark::State& state, std::size_t side) {
        auto image = Noise(side * side, 1);
        std::vector<std::uint16_t> scratch(Kernels::MedianScratchLength(side));
        for (auto iteration : state) {
            static_cast<void>(iteration);
            Kernels::Median3x3(image.data(), side, side, scratch.data());
            benchmark::ClobberMemory();
        }
    });
    Register("Statistics", set, table, [](benchmark::State& state, std::size_t side) {
        const auto image = Noise(side * side, 1);
        for (auto iteration : state) {
            static_cast<void>(iteration);
            benchmark::DoNotOptimize(Kernels::CalculateStatistics(image.data(), image.size()));
        }
    });
}

const bool registered = [] {
    const Platform::TInstructionSet best = Platform::BestInstructionSet();
    RegisterAll("baseline", &Kernels::TableFor(Platform::TInstructionSet::Baseline));
    if (best >= Platform::TInstructionSet::Avx2) {
        RegisterAll("avx2", &Kernels::TableFor(Platform::TInstructionSet::Avx2));
    }
    if (best >= Platform::TInstructionSet::Avx512) {
        RegisterAll("avx512", &Kernels::TableFor(Platform::TInstructionSet::Avx512));
    }
    return true;
}();

} // namespace
