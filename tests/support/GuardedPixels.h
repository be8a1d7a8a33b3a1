// Pixels between two pages that no one may touch: reading or writing one pixel too many ends the test program.
#ifndef QXBC_TESTS_GUARDED_PIXELS_H
#define QXBC_TESTS_GUARDED_PIXELS_H

#include <cstddef>
#include <cstdint>
#include <vector>

class TGuardedPixels {
public:
    // `count` pixels that lie directly before the second page, or with `atStart` behind the first.
    TGuardedPixels(std::size_t count, bool atStart);
    ~TGuardedPixels();
    TGuardedPixels(const TGuardedPixels&) = delete;
    TGuardedPixels& operator=(const TGuardedPixels&) = delete;

    std::uint16_t* Data() { return pixels; }
    void Set(const std::vector<std::uint16_t>& values);
    std::vector<std::uint16_t> Values() const { return {pixels, pixels + count}; }

private:
    void* block; // page, room, page
    std::size_t blockLength;
    std::uint16_t* pixels;
    std::size_t count;
};

#endif
