#include "compare/Buffers.h"
#include "compare/LibraryRival.h"
#include "compare/Rivals.h"
#include "compare/Rows.h"
#include "kernels/Dispatch.h"
#include "kernels/Kernels.h"
#include "model/LiteralArithmetic.h"

#include <memory>

namespace {

constexpr int kFrameCount = 10;

// What the rows work on. Without `isOdd` every image begins where an allocator has large blocks, with it anywhere, and
// the library's region lies within a larger correction.
struct TBench {
    TBench(int imageSize, bool isOdd)
        : size(imageSize), side(static_cast<std::size_t>(size)), count(side * side), margin(isOdd ? 3u : 0u),
          stride(side + margin), image(count, 1, 60000, isOdd ? 22 : 16), output(count, 2, 60000, isOdd ? 40 : 16),
          background(stride * (side + margin), 3, 3000, isOdd ? 54 : 16),
          library(size + static_cast<int>(margin), background.Data()), openCv(size, size),
          scratch(Kernels::AverageScratchLength(count)), lines(Kernels::MedianScratchLength(side))
    {
        const int corner = static_cast<int>(margin);
        library.SetRegion(corner, corner, size, size);
        for (std::uint32_t frame = 0; frame < kFrameCount; ++frame) {
            stack.emplace_back(stride * (side + margin), 10 + frame, 3000, isOdd ? (frame * 26 + 2) % 64 : 16);
            frames.push_back(stack.back().Data());
        }
    }

    // The corner of the region in the background.
    std::uint16_t* Corner() const { return background.Data() + stride * margin + margin; }

    float NextFactor()
    {
        factor = factor > 1.25f ? 0.75f : 1.3f;
        return factor;
    }

    int size;
    std::size_t side;
    std::size_t count;
    std::size_t margin;
    std::size_t stride;
    TBuffer image;
    TBuffer output;
    TBuffer background;
    std::vector<TBuffer> stack;
    std::vector<std::uint16_t*> frames;
    TLibraryRival library;
    TOpenCvRival openCv;
    std::vector<float> scratch;
    std::vector<std::uint16_t> lines;
    float factor = 1.0f;
    volatile std::uint64_t sink = 0;
};

using TMake = std::vector<TRival> (*)(const std::shared_ptr<TBench>& bench);

// The fastest of these counts.
template <typename TRun> void AddLimits(std::vector<TRival>& rivals, TRun run)
{
    for (const Limits::TManner manner : Limits::kEveryManner) {
        rivals.push_back({"limit", [=] { run(manner); }, 1});
    }
}

std::vector<TRival> ApplyInPlace(const std::shared_ptr<TBench>& t)
{
    std::uint16_t* const a = t->image.Data();
    std::uint16_t* const b = t->background.Data();
    std::vector<TRival> rivals = {{"library", [=] { t->library.Apply(a, nullptr); }, 1},
                                  {"literal", [=] { Literal::Subtract(a, a, b, t->count); }, 1},
                                  {"opencv", [=] { t->openCv.Subtract(a, a, b); }, 1}};
    AddLimits(rivals, [=](Limits::TManner manner) { Limits::ReadTwoWriteOne(a, a, b, t->count, manner); });
    return rivals;
}

std::vector<TRival> ApplyIntoOutput(const std::shared_ptr<TBench>& t)
{
    std::uint16_t* const a = t->image.Data();
    std::uint16_t* const b = t->background.Data();
    std::uint16_t* const o = t->output.Data();
    std::vector<TRival> rivals = {{"library", [=] { t->library.Apply(a, o); }, 1},
                                  {"literal", [=] { Literal::Subtract(o, a, b, t->count); }, 1},
                                  {"opencv", [=] { t->openCv.Subtract(o, a, b); }, 1}};
    AddLimits(rivals, [=](Limits::TManner manner) { Limits::ReadTwoWriteOne(o, a, b, t->count, manner); });
    return rivals;
}

std::vector<TRival> SettingChange(const std::shared_ptr<TBench>& t)
{
    std::uint16_t* const o = t->output.Data();
    std::vector<TRival> rivals = {{"library", [=] { t->library.ChangeSetting(); }, 1}};
    if (t->margin == 0) {
        rivals.push_back({"literal",
                          [=] {
                              const std::unique_ptr<std::uint16_t[]> scaled(new std::uint16_t[t->count]);
                              Literal::CopyAndScale(scaled.get(), t->Corner(), t->count, t->NextFactor());
                          },
                          1});
    }
    rivals.push_back(
        {"opencv", [=] { t->openCv.Scale(o, t->Corner(), t->stride, static_cast<double>(t->NextFactor())); }, 1});
    AddLimits(rivals, [=](Limits::TManner manner) { Limits::Copy(o, t->Corner(), t->count, manner); });
    return rivals;
}

std::vector<TRival> Average(const std::shared_ptr<TBench>& t)
{
    std::uint16_t* const o = t->output.Data();
    std::uint16_t* const* const frames = t->frames.data();
    std::vector<TRival> rivals = {
        {"library", [=] { Kernels::Average(o, frames, kFrameCount, t->count, t->scratch.data()); }, 1},
        {"literal", [=] { Literal::Average(o, frames, kFrameCount, t->count); }, 1},
        {"opencv", [=] { t->openCv.Average(o, frames, kFrameCount); }, 1}};
    AddLimits(rivals, [=](Limits::TManner manner) {
        Limits::CombineFrames(o, frames, static_cast<std::size_t>(kFrameCount), t->count, manner);
    });
    return rivals;
}

std::vector<TRival> Median(const std::shared_ptr<TBench>& t)
{
    std::uint16_t* const a = t->image.Data();
    std::uint16_t* const o = t->output.Data();
    const auto filter = [=] { Kernels::Median3x3(a, t->side, t->side, t->lines.data()); };
    std::vector<TRival> rivals = {{"library", filter, 1},
                                  {"literal", [=] { Literal::Median(a, t->side, t->side); }, 1},
                                  {"opencv", [=] { t->openCv.Median(o, a); }, 1}};
    if (Platform::BestInstructionSet() == Platform::TInstructionSet::Avx512) {
        rivals.push_back({"avx2",
                          [=] {
                              Kernels::chosenTable.store(&Kernels::TableFor(Platform::TInstructionSet::Avx2));
                              filter();
                              Kernels::chosenTable.store(nullptr);
                          },
                          1});
    }
    AddLimits(rivals, [=](Limits::TManner manner) { Limits::ReadTwoWriteOne(a, a, a, t->count, manner); });
    return rivals;
}

std::vector<TRival> AddCorrection(const std::shared_ptr<TBench>& t)
{
    std::uint16_t* const a = t->image.Data();
    std::uint16_t* const o = t->output.Data();
    std::uint16_t* const* const frames = t->frames.data();
    const auto library = std::make_shared<TLibraryRival>(t->size, frames[0]); // frames are as large as the others' here
    std::vector<TRival> rivals = {{"library", [=] { library->AddCorrection(frames, kFrameCount); }, 1},
                                  {"literal",
                                   [=] {
                                       Literal::Average(o, frames, kFrameCount, t->count);
                                       Literal::Median(o, t->side, t->side);
                                   },
                                   1},
                                  {"opencv",
                                   [=] {
                                       t->openCv.Average(a, frames, kFrameCount);
                                       t->openCv.Median(o, a);
                                   },
                                   1}};
    AddLimits(rivals, [=](Limits::TManner manner) {
        Limits::CombineFrames(o, frames, static_cast<std::size_t>(kFrameCount), t->count, manner);
    });
    return rivals;
}

std::vector<TRival> Statistics(const std::shared_ptr<TBench>& t)
{
    std::uint16_t* const b = t->background.Data();
    std::vector<TRival> rivals = {
        {"literal",
         [=] {
             std::uint16_t least = 0, greatest = 0;
             const double mean = Literal::Statistics(b, t->count, least, greatest);
             t->sink = static_cast<std::uint64_t>(mean) + greatest;
         },
         1},
        {"opencv", [=] { t->sink = static_cast<std::uint64_t>(t->openCv.Statistics(b)); }, 1}};
    // The library's own buffers are where its allocator has them: at other addresses only the kernel can be called.
    rivals.insert(rivals.begin(),
                  t->margin == 0
                      ? TRival{"library", [=] { t->sink = t->library.Statistics(); }, 1}
                      : TRival{"library", [=] { t->sink = Kernels::CalculateStatistics(b, t->count).average; }, 1});
    AddLimits(rivals, [=](Limits::TManner manner) { t->sink = Limits::Read(b, t->count, manner); });
    return rivals;
}

void Append(std::vector<TRow>& rows, const char* operation, int size, bool isOdd, TMake make)
{
    rows.push_back({operation, size, [=] { return make(std::make_shared<TBench>(size, isOdd)); }});
}

} // namespace

void AppendSteadyRows(std::vector<TRow>& rows, int size)
{
    Append(rows, "apply in place", size, false, ApplyInPlace);
    Append(rows, "apply into output", size, false, ApplyIntoOutput);
    Append(rows, "setting change", size, false, SettingChange);
    Append(rows, "average of 10", size, false, Average);
    Append(rows, "median", size, false, Median);
    Append(rows, "add correction", size, false, AddCorrection);
    Append(rows, "statistics", size, false, Statistics);
}

void AppendOddRows(std::vector<TRow>& rows, int size)
{
    Append(rows, "setting change, odd", size, true, SettingChange);
    Append(rows, "average of 10, odd", size, true, Average);
    Append(rows, "add correction, odd", size, true, AddCorrection);
    Append(rows, "statistics, odd", size, true, Statistics);
}
