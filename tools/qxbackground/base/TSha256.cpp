#include "base/TSha256.h"

#include "base/Sha256Blocks.h"
#include "base/Sha256Lanes.h"

#include <algorithm>
#include <cstring>

namespace workbench {

// The first 32 bits behind the point of the cube roots of the first 64 primes.
const std::uint32_t kSha256Constants[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

namespace {

// The same of the square roots of the first eight.
constexpr std::uint32_t kStart[8] = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                     0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

std::uint32_t Rotated(std::uint32_t word, int bits)
{
    return word >> bits | word << (32 - bits);
}

} // namespace

void PlainSha256Blocks(std::uint32_t* state, const unsigned char* blocks, std::size_t count)
{
    for (; count > 0; --count, blocks += 64) {
        std::uint32_t words[64];
        for (int i = 0; i < 16; ++i) {
            const unsigned char* const bytes = blocks + 4 * i;
            words[i] = std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 | std::uint32_t{bytes[2]} << 8 |
                       std::uint32_t{bytes[3]};
        }
        for (int i = 16; i < 64; ++i) {
            const std::uint32_t early = words[i - 15], late = words[i - 2];
            words[i] = words[i - 16] + (Rotated(early, 7) ^ Rotated(early, 18) ^ early >> 3) + words[i - 7] +
                       (Rotated(late, 17) ^ Rotated(late, 19) ^ late >> 10);
        }
        std::uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
        std::uint32_t e = state[4], f = state[5], g = state[6], h = state[7];
        for (int i = 0; i < 64; ++i) {
            const std::uint32_t one = h + (Rotated(e, 6) ^ Rotated(e, 11) ^ Rotated(e, 25)) + ((e & f) ^ (~e & g)) +
                                      kSha256Constants[i] + words[i];
            const std::uint32_t two = (Rotated(a, 2) ^ Rotated(a, 13) ^ Rotated(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
            h = g;
            g = f;
            f = e;
            e = d + one;
            d = c;
            c = b;
            b = a;
            a = one + two;
        }
        const std::uint32_t after[8] = {a, b, c, d, e, f, g, h};
        for (int i = 0; i < 8; ++i)
            state[i] += after[i];
    }
}

TSha256::TSha256(bool plain)
{
    const TSha256Blocks fast = plain ? nullptr : Sha256BlocksOfProcessor();
    digest = fast == nullptr ? PlainSha256Blocks : fast;
    std::copy(std::begin(kStart), std::end(kStart), state);
}

void TSha256::Add(const void* data, std::size_t count)
{
    const auto* at = static_cast<const unsigned char*>(data);
    bytes += count;
    if (held > 0) {
        const std::size_t taken = std::min(count, kBlock - held);
        std::memcpy(rest + held, at, taken);
        held += taken;
        at += taken;
        count -= taken;
        if (held < kBlock)
            return;
        digest(state, rest, 1);
        held = 0;
    }
    digest(state, at, count / kBlock);
    held = count % kBlock;
    if (held > 0)
        std::memcpy(rest, at + (count - held), held);
}

void TSha256::Add(const TPart* parts, std::size_t partCount, std::size_t count)
{
    static const TSha256LaneBlocks lanes = Sha256LaneBlocksOfProcessor();
    static const TSha256PairBlocks pair = Sha256PairBlocksOfProcessor();
    while (partCount > 0) {
        const std::size_t together = lanes != nullptr && partCount >= kSha256Lanes ? kSha256Lanes
                                     : pair != nullptr && partCount >= 2           ? 2
                                                                                   : 1;
        std::uint32_t* states[kSha256Lanes];
        const unsigned char* at[kSha256Lanes];
        std::size_t begun[kSha256Lanes], most = 0;
        for (std::size_t i = 0; i < together; ++i) { // each ends the block that it has begun
            TSha256& sha256 = *parts[i].sha256;
            states[i] = sha256.state;
            begun[i] = std::min(count, (kBlock - sha256.held) % kBlock);
            most = std::max(most, begun[i]);
            at[i] = static_cast<const unsigned char*>(parts[i].data);
            sha256.Add(at[i], begun[i]);
            at[i] += begun[i];
        }
        const std::size_t blocks = together == 1 ? 0 : (count - most) / kBlock;
        if (together == kSha256Lanes)
            lanes(states, at, blocks);
        else if (together == 2)
            pair(states[0], at[0], states[1], at[1], blocks);
        for (std::size_t i = 0; i < together; ++i) {
            parts[i].sha256->bytes += blocks * kBlock;
            parts[i].sha256->Add(at[i] + blocks * kBlock, count - begun[i] - blocks * kBlock);
        }
        parts += together;
        partCount -= together;
    }
}

std::string TSha256::Hex()
{
    // A bit, and as many zeros as let the length in bits end a block.
    const std::uint64_t bits = bytes * 8;
    unsigned char end[2 * kBlock] = {0x80};
    const std::size_t count = (held < kBlock - 8 ? kBlock : 2 * kBlock) - held;
    for (std::size_t byte = 0; byte < 8; ++byte)
        end[count - 1 - byte] = static_cast<unsigned char>(bits >> (8 * byte));
    Add(end, count);
    static const char* const kDigits = "0123456789abcdef";
    std::string text;
    for (const std::uint32_t word : state) {
        for (int shift = 28; shift >= 0; shift -= 4)
            text += kDigits[word >> shift & 15];
    }
    return text;
}

} // namespace workbench
