// Images for the comparison, at addresses of one's choice.
#ifndef BENCH_COMPARE_BUFFERS_H
#define BENCH_COMPARE_BUFFERS_H

#include <cstddef>
#include <cstdint>
#include <memory>

// `count` pixels that begin `offset` bytes (an even number) behind a multiple of 64; by default 16, where allocators
// have large blocks. The pixels differ and none is 0: memory that was never written would be one shared page.
class TBuffer {
public:
    TBuffer(std::size_t count, std::uint32_t seed, std::uint32_t span, std::size_t offset = 16);

    std::uint16_t* Data() const noexcept { return pixels; }

private:
    std::unique_ptr<unsigned char[]> bytes;
    std::uint16_t* pixels;
};

#endif
