#ifndef QXBACKGROUND_BASE_TSHA256_H
#define QXBACKGROUND_BASE_TSHA256_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace workbench {

// The SHA-256 of bytes that come in pieces (FIPS 180-4).
class TSha256 {
public:
    // With the processor's own instructions where it has some; `plain` keeps to the arithmetic of the definition.
    explicit TSha256(bool plain = false);

    void Add(const void* data, std::size_t count);
    // Adds as many bytes to each of several, which is faster where the processor helps: by twos, and much more by
    // sixteens.
    struct TPart {
        TSha256* sha256;
        const void* data;
    };
    static void Add(const TPart* parts, std::size_t partCount, std::size_t count);
    // 64 hexadecimal digits; nothing can be added afterwards.
    std::string Hex();

private:
    static constexpr std::size_t kBlock = 64;

    void (*digest)(std::uint32_t* state, const unsigned char* blocks, std::size_t count);
    std::uint32_t state[8];
    unsigned char rest[kBlock]; // what does not fill a block yet
    std::size_t held = 0;       // of it
    std::uint64_t bytes = 0;
};

} // namespace workbench

#endif
