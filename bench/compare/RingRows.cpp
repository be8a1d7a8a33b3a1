#include "compare/Buffers.h"
#include "compare/LibraryRival.h"
#include "compare/Rivals.h"
#include "compare/Rows.h"

#include <cstdint>
#include <memory>

namespace {

// Where frames of a ring begin, in bytes behind a line of the cache: what allocators of various kinds give.
constexpr std::size_t kOffsets[] = {0, 16, 24, 32, 40, 48, 56, 8};
constexpr std::size_t kOffsetCount = sizeof kOffsets / sizeof *kOffsets;

// Where a ring's corrected images go.
enum class TTarget { InPlace, OutputPerFrame, OneOutput };

struct TRing {
    TRing(int imageSize, int frameCount, TTarget ringTarget)
        : size(imageSize), count(static_cast<std::size_t>(size) * static_cast<std::size_t>(size)), target(ringTarget),
          background(count, 3, 3000), library(size, background.Data()), openCv(size, size)
    {
        const int outputCount = target == TTarget::InPlace ? 0 : target == TTarget::OneOutput ? 1 : frameCount;
        for (int i = 0; i < frameCount; ++i) {
            const auto n = static_cast<std::uint32_t>(i);
            frames.emplace_back(count, n, 60000, kOffsets[n % kOffsetCount]);
            if (i < outputCount) { // other relations between the two than one
                outputs.emplace_back(count, n + 100, 60000, kOffsets[(n * 3 + 1) % kOffsetCount]);
            }
        }
    }

    // Corrects every frame once.
    template <typename TCorrect> void Turn(const TCorrect& correct) const
    {
        for (std::size_t i = 0; i < frames.size(); ++i) {
            std::uint16_t* const frame = frames[i].Data();
            correct(target == TTarget::InPlace ? frame : outputs[i % outputs.size()].Data(), frame);
        }
    }

    int size;
    std::size_t count;
    TTarget target;
    TBuffer background;
    std::vector<TBuffer> frames;
    std::vector<TBuffer> outputs;
    TLibraryRival library;
    TOpenCvRival openCv;
};

std::vector<TRival> MakeRivals(int size, int frameCount, TTarget target)
{
    const auto ring = std::make_shared<TRing>(size, frameCount, target);
    std::vector<TRival> rivals;
    const auto add = [&](const char* name, auto correct) {
        rivals.push_back({name, [=] { ring->Turn(correct); }, frameCount});
    };
    add("library", [=](std::uint16_t* output, std::uint16_t* frame) {
        ring->library.Apply(frame, output == frame ? nullptr : output);
    });
    add("opencv", [=](std::uint16_t* output, std::uint16_t* frame) {
        ring->openCv.Subtract(output, frame, ring->background.Data());
    });
    for (const Limits::TManner manner : Limits::kEveryManner) {
        add("limit", [=](std::uint16_t* output, std::uint16_t* frame) {
            Limits::ReadTwoWriteOne(output, frame, ring->background.Data(), ring->count, manner);
        });
    }
    return rivals;
}

} // namespace

void AppendRingRows(std::vector<TRow>& rows, int size, int frameCount)
{
    const struct {
        const char* operation;
        TTarget target;
    } kinds[] = {{"ring in place", TTarget::InPlace},
                 {"ring, an output each", TTarget::OutputPerFrame},
                 {"ring, one output", TTarget::OneOutput}};
    for (const auto& kind : kinds) {
        rows.push_back({kind.operation, size, [=] { return MakeRivals(size, frameCount, kind.target); }});
    }
}
