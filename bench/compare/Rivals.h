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
    void Scale(std::uint16_t* output, std::uint16_t* pixels, double factor);
    void Average(std::uint16_t* output, std::uint16_t* const* frames, std::size_t frameCount);
    void Median(std::uint16_t* output, std::uint16_t* image);
    double Statistics(std::uint16_t* pixels);

private:
    struct TState;
    TState* state;
};

// Loops with the memory traffic of an operation and next to no arithmetic.
namespace Limits {
void ReadTwoWriteFirst(std::uint16_t* first, const std::uint16_t* second, std::size_t count);
void ReadTwoWriteThird(std::uint16_t* third, const std::uint16_t* first, const std::uint16_t* second,
                       std::size_t count);
void Copy(std::uint16_t* output, const std::uint16_t* pixels, std::size_t count);
std::uint64_t ReadFrames(const std::uint16_t* const* frames, std::size_t frameCount, std::size_t count);
void ReadWriteInPlace(std::uint16_t* image, std::size_t count);
} // namespace Limits

#endif
