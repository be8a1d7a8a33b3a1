// What the library is compared with, beside the literal loops of tests/model. Images are row-major, 16-bit, `count` =
// width * height pixels.
#ifndef BENCH_COMPARE_RIVALS_H
#define BENCH_COMPARE_RIVALS_H

#include <cstddef>
#include <cstdint>

// OpenCV's nearest equivalents, on one thread, into images that exist already.
class TOpenCvRival {
public:
    TOpenCvRival(int width, int height);
    ~TOpenCvRival();
    TOpenCvRival(const TOpenCvRival&) = delete;
    TOpenCvRival& operator=(const TOpenCvRival&) = delete;

    void Subtract(std::uint16_t* output, std::uint16_t* image, std::uint16_t* background);
    // From rows of `stride` pixels to packed ones.
    void Scale(std::uint16_t* output, std::uint16_t* pixels, std::size_t stride, double factor);
    void Average(std::uint16_t* output, std::uint16_t* const* frames, std::size_t frameCount);
    void Median(std::uint16_t* output, std::uint16_t* image);
    double Statistics(std::uint16_t* pixels);

private:
    struct TState;
    TState* state;
};

// Loops with the memory traffic of an operation and next to no arithmetic.
namespace Limits {

// Ways to memory; which is the fastest differs between sizes and machines. InStep: two halves of each image, or all
// frames of a stack, a line of each in turn. PastTheCaches: as InStep, the output without being read first.
enum class TManner { Plainly, AskingAhead, InStep, PastTheCaches };
constexpr TManner kEveryManner[] = {TManner::Plainly, TManner::AskingAhead, TManner::InStep, TManner::PastTheCaches};

// The output may be the first image; past the caches only to another.
void ReadTwoWriteOne(std::uint16_t* output, const std::uint16_t* first, const std::uint16_t* second, std::size_t count,
                     TManner manner);
void Copy(std::uint16_t* output, const std::uint16_t* pixels, std::size_t count, TManner manner);
// Reads all frames and writes one image.
void CombineFrames(std::uint16_t* output, const std::uint16_t* const* frames, std::size_t frameCount, std::size_t count,
                   TManner manner);
std::uint64_t Read(const std::uint16_t* pixels, std::size_t count, TManner manner);
} // namespace Limits

#endif
