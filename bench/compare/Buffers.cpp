#include "compare/Buffers.h"

TBuffer::TBuffer(std::size_t count, std::uint32_t seed, std::uint32_t span, std::size_t offset)
    : bytes(new unsigned char[count * sizeof(std::uint16_t) + 128])
{
    const auto address = reinterpret_cast<std::uintptr_t>(bytes.get());
    pixels = reinterpret_cast<std::uint16_t*>((address + 63) / 64 * 64 + offset);
    std::uint32_t state = seed * 2654435761u + 1;
    for (std::size_t i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        pixels[i] = static_cast<std::uint16_t>(100 + (state >> 16) % span);
    }
}
