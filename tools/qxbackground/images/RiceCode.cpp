#include "images/RiceCode.h"

#include <algorithm>
#include <array>

namespace workbench {

namespace {

constexpr unsigned kPixelBits = 16;
constexpr unsigned kChoiceBits = 4; // in front of each block: one more than the bits that are stored as they are
constexpr unsigned kVerbatim = 14;  // as many mean that whole differences are stored

class TBitWriter {
public:
    explicit TBitWriter(std::vector<std::uint8_t>& target) : code(target) {}

    void Put(std::uint32_t value, unsigned count) // at most 25
    {
        held = held << count | value;
        bits += count;
        while (bits >= 8) {
            bits -= 8;
            code.push_back(static_cast<std::uint8_t>(held >> bits));
        }
        held &= (1u << bits) - 1;
    }
    void PutZeros(std::uint32_t count)
    {
        for (; count > 24; count -= 24)
            Put(0, 24);
        Put(0, count);
    }
    void Finish()
    {
        if (bits > 0)
            Put(0, 8 - bits);
    }

private:
    std::vector<std::uint8_t>& code;
    std::uint32_t held = 0;
    unsigned bits = 0;
};

class TBitReader {
public:
    TBitReader(const std::uint8_t* start, std::size_t bytes) : next(start), end(start + bytes) {}

    // At most 16 bits; beyond the end they are zero, see PastEnd.
    std::uint32_t Take(unsigned count)
    {
        Fill();
        bits -= count;
        return static_cast<std::uint32_t>(held >> bits) & ((1u << count) - 1);
    }
    // The zeros before the next one, which is taken as well.
    std::uint32_t TakeZeros()
    {
        std::uint32_t zeros = 0;
        while (!PastEnd()) {
            Fill();
            --bits;
            if ((held >> bits & 1) != 0)
                return zeros;
            ++zeros;
        }
        return zeros;
    }
    bool PastEnd() const { return missing * 8 > bits; }

private:
    void Fill()
    {
        while (bits <= 48) {
            held = held << 8 | (next < end ? *next : 0);
            if (next < end)
                ++next;
            else
                ++missing;
            bits += 8;
        }
    }

    const std::uint8_t* next;
    const std::uint8_t* end;
    std::uint64_t held = 0;
    unsigned bits = 0;
    unsigned missing = 0; // bytes that were taken from behind the end
};

// Differences alternate between the signs: 0, -1, 1, -2, ...
std::uint16_t Folded(std::uint16_t difference)
{
    const auto twice = static_cast<std::uint16_t>(difference << 1);
    return (difference & 0x8000) != 0 ? static_cast<std::uint16_t>(~twice) : twice;
}

std::uint16_t Unfolded(std::uint16_t folded)
{
    const auto half = static_cast<std::uint16_t>(folded >> 1);
    return (folded & 1) != 0 ? static_cast<std::uint16_t>(~half) : half;
}

// About the logarithm of the mean: close to what takes fewest bits.
unsigned BitsToStore(std::uint64_t sum, std::size_t count)
{
    const std::uint64_t half = count / 2 + 1;
    const std::uint64_t mean = sum > half ? (sum - half) / count : 0;
    unsigned bits = 0;
    for (std::uint64_t rest = mean >> 1; rest > 0; rest >>= 1)
        ++bits;
    return bits;
}

} // namespace

void RiceEncode(const std::uint16_t* pixels, std::size_t count, std::vector<std::uint8_t>& code)
{
    if (count == 0)
        return;
    TBitWriter writer(code);
    std::uint16_t last = pixels[0];
    writer.Put(last, kPixelBits);
    std::array<std::uint16_t, kRiceBlock> folded{};
    for (std::size_t start = 0; start < count; start += kRiceBlock) {
        const std::size_t length = std::min(kRiceBlock, count - start);
        std::uint64_t sum = 0;
        for (std::size_t pixel = 0; pixel < length; ++pixel) {
            folded[pixel] = Folded(static_cast<std::uint16_t>(pixels[start + pixel] - last));
            last = pixels[start + pixel];
            sum += folded[pixel];
        }
        const unsigned stored = BitsToStore(sum, length);
        if (sum == 0) {
            writer.Put(0, kChoiceBits);
        } else if (stored >= kVerbatim) {
            writer.Put(kVerbatim + 1, kChoiceBits);
            for (std::size_t pixel = 0; pixel < length; ++pixel)
                writer.Put(folded[pixel], kPixelBits);
        } else {
            writer.Put(stored + 1, kChoiceBits);
            for (std::size_t pixel = 0; pixel < length; ++pixel) {
                writer.PutZeros(static_cast<std::uint32_t>(folded[pixel] >> stored));
                writer.Put(1u << stored | (folded[pixel] & ((1u << stored) - 1)), stored + 1);
            }
        }
    }
    writer.Finish();
}

bool RiceDecode(const std::uint8_t* code, std::size_t codeBytes, std::size_t blockPixels, std::uint16_t* pixels,
                std::size_t count)
{
    TBitReader reader(code, codeBytes);
    auto last = static_cast<std::uint16_t>(reader.Take(kPixelBits));
    for (std::size_t start = 0; start < count; start += blockPixels) {
        const std::size_t length = std::min(blockPixels, count - start);
        const std::uint32_t choice = reader.Take(kChoiceBits);
        if (reader.PastEnd())
            return false;
        for (std::size_t pixel = 0; pixel < length; ++pixel) {
            std::uint32_t folded = 0;
            if (choice == kVerbatim + 1) {
                folded = reader.Take(kPixelBits);
            } else if (choice > 0) {
                const std::uint32_t zeros = reader.TakeZeros();
                folded = zeros << (choice - 1) | reader.Take(choice - 1);
                if (zeros > 0xFFFF || folded > 0xFFFF)
                    return false;
            }
            last = static_cast<std::uint16_t>(last + Unfolded(static_cast<std::uint16_t>(folded)));
            pixels[start + pixel] = last;
        }
        if (reader.PastEnd())
            return false;
    }
    return true;
}

} // namespace workbench
