// Each operation of the interface that does work, through the exports. The last number of a name is the image's side.
#include "QX_BackgroundCorrection.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <vector>

using namespace QX_KRLSDK;

namespace {

struct TRelease {
    void operator()(QX_IBackgroundCorrection* object) const { DeleteBackgroundCorrection(object); }
};
using TObject = std::unique_ptr<QX_IBackgroundCorrection, TRelease>;

constexpr char kFile[] = "qxbc_bench.bin";

void Check(unsigned int code)
{
    if (code != kSuccess) {
        throw std::runtime_error("an operation returned " + std::to_string(code));
    }
}

class TCorrectionOfSize : public benchmark::Fixture {
public:
    void SetUp(const benchmark::State& state) override
    {
        side = static_cast<int>(state.range(0));
        image.assign(static_cast<std::size_t>(side) * static_cast<std::size_t>(side), 1000);
        for (std::size_t i = 0; i < image.size(); ++i) {
            image[i] = static_cast<std::uint16_t>(500 + i * 31 % 1000);
        }
        output = image;
        object.reset(CreateBackgroundCorrection());
        Add("dark");
        Check(object->SetActiveCorrection("dark"));
    }
    void TearDown(const benchmark::State&) override
    {
        object.reset();
        std::remove(kFile);
    }

    void Add(const char* key)
    {
        const unsigned short* frames[] = {image.data(), output.data(), image.data(), output.data()};
        Check(object->AddCorrection(key, frames, 4, side, side, 1.0f, 100.0f));
    }
    int Length() const { return static_cast<int>(image.size()); }

    int side = 0;
    std::vector<std::uint16_t> image;
    std::vector<std::uint16_t> output;
    TObject object;
};

void Sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->Arg(64)->Arg(512)->Arg(2048)->Arg(4096);
}

BENCHMARK_DEFINE_F(TCorrectionOfSize, AddAndDeleteCorrection)(benchmark::State& state)
{
    for (auto iteration : state) {
        static_cast<void>(iteration);
        Add("new");
        Check(object->DeleteCorrection("new"));
    }
}
BENCHMARK_REGISTER_F(TCorrectionOfSize, AddAndDeleteCorrection)->Apply(Sizes);

BENCHMARK_DEFINE_F(TCorrectionOfSize, ApplyCorrectionInPlace)(benchmark::State& state)
{
    for (auto iteration : state) {
        static_cast<void>(iteration);
        Check(object->ApplyCorrection(image.data(), Length(), nullptr, 0, nullptr, false, false, false));
    }
}
BENCHMARK_REGISTER_F(TCorrectionOfSize, ApplyCorrectionInPlace)->Apply(Sizes);

BENCHMARK_DEFINE_F(TCorrectionOfSize, ApplyCorrectionIntoOutput)(benchmark::State& state)
{
    for (auto iteration : state) {
        static_cast<void>(iteration);
        Check(object->ApplyCorrection(image.data(), Length(), output.data(), Length(), nullptr, false, false, false));
    }
}
BENCHMARK_REGISTER_F(TCorrectionOfSize, ApplyCorrectionIntoOutput)->Apply(Sizes);

BENCHMARK_DEFINE_F(TCorrectionOfSize, SetExposureAndIntensity)(benchmark::State& state)
{
    float exposure = 1.0f;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        exposure = exposure > 1.25f ? 0.75f : 1.3f;
        Check(object->SetExposureAndIntensity(exposure, 100.0f));
    }
}
BENCHMARK_REGISTER_F(TCorrectionOfSize, SetExposureAndIntensity)->Apply(Sizes);

BENCHMARK_DEFINE_F(TCorrectionOfSize, SetRegion)(benchmark::State& state)
{
    for (auto iteration : state) {
        static_cast<void>(iteration);
        Check(object->SetRegion(1, 1, side - 2, side - 2));
    }
}
BENCHMARK_REGISTER_F(TCorrectionOfSize, SetRegion)->Apply(Sizes);

BENCHMARK_DEFINE_F(TCorrectionOfSize, GetScaledCorrectionStatistics)(benchmark::State& state)
{
    std::uint16_t least = 0, greatest = 0, mean = 0;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        Check(object->GetScaledCorrectionStatistics(&least, &greatest, &mean));
    }
}
BENCHMARK_REGISTER_F(TCorrectionOfSize, GetScaledCorrectionStatistics)->Apply(Sizes);

BENCHMARK_DEFINE_F(TCorrectionOfSize, ImportCorrections)(benchmark::State& state)
{
    const TObject target(CreateBackgroundCorrection());
    for (auto iteration : state) {
        static_cast<void>(iteration);
        Check(target->ImportCorrections(object.get(), true));
    }
}
BENCHMARK_REGISTER_F(TCorrectionOfSize, ImportCorrections)->Apply(Sizes);

BENCHMARK_DEFINE_F(TCorrectionOfSize, SaveFile)(benchmark::State& state)
{
    for (auto iteration : state) {
        static_cast<void>(iteration);
        Check(object->SaveFile(kFile));
    }
}
BENCHMARK_REGISTER_F(TCorrectionOfSize, SaveFile)->Apply(Sizes);

BENCHMARK_DEFINE_F(TCorrectionOfSize, LoadFile)(benchmark::State& state)
{
    Check(object->SaveFile(kFile));
    for (auto iteration : state) {
        static_cast<void>(iteration);
        Check(object->LoadFile(kFile));
    }
}
BENCHMARK_REGISTER_F(TCorrectionOfSize, LoadFile)->Apply(Sizes);

BENCHMARK_DEFINE_F(TCorrectionOfSize, LoadFileHeaderOnly)(benchmark::State& state)
{
    Check(object->SaveFile(kFile));
    for (auto iteration : state) {
        static_cast<void>(iteration);
        Check(object->LoadFileHeaderOnly(kFile));
    }
}
BENCHMARK_REGISTER_F(TCorrectionOfSize, LoadFileHeaderOnly)->Apply(Sizes);

} // namespace
