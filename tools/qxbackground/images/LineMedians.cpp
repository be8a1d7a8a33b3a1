#include "images/LineMedians.h"

#include "base/WideRegisters.h"

#include <algorithm>
#include <cstring>

namespace workbench {

namespace {

constexpr unsigned kMostValue = 65535;

QXBC_INLINED std::size_t CountUpToPlainly(const std::uint16_t* values, std::size_t count, std::uint16_t bound)
{
    constexpr std::size_t kPart = 32768; // counts within a part fit 16 bits: eight to a register of 128
    std::size_t total = 0;
    for (std::size_t begin = 0; begin < count; begin += kPart) {
        const std::size_t end = count - begin < kPart ? count : begin + kPart;
        std::uint16_t part = 0;
        for (std::size_t i = begin; i < end; ++i)
            part = static_cast<std::uint16_t>(part + (values[i] <= bound ? 1 : 0));
        total += part;
    }
    return total;
}

#ifdef QXBC_WIDE
QXBC_WIDE std::size_t CountUpToWidely(const std::uint16_t* values, std::size_t count, std::uint16_t bound)
{
    return CountUpToPlainly(values, count, bound);
}
#endif

// How many of `count` values are at most `bound`.
std::size_t CountUpTo(const std::uint16_t* values, std::size_t count, std::uint16_t bound)
{
#ifdef QXBC_WIDE
    if (HasWideRegisters())
        return CountUpToWidely(values, count, bound);
#endif
    return CountUpToPlainly(values, count, bound);
}

// The smallest of the values above `bound`; kMostValue when there is none.
std::uint16_t LeastAbove(const std::uint16_t* values, std::size_t count, std::uint16_t bound)
{
    std::uint16_t least = kMostValue;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint16_t value = values[i] > bound ? values[i] : static_cast<std::uint16_t>(kMostValue);
        least = std::min(least, value);
    }
    return least;
}

// Values from `lowest` up to `highest`, which hold the one that is looked for.
struct TBracket {
    unsigned lowest = 0;
    unsigned highest = kMostValue;
};

// A bracket around the value of that rank (from 0), a few times tried from `guess` on: the medians of neighbouring rows
// differ little.
TBracket BracketAround(unsigned guess, const std::uint16_t* values, std::size_t count, std::size_t rank)
{
    unsigned step = 8;
    TBracket bracket;
    const auto isAtOrBelow = [&](unsigned value) {
        return CountUpTo(values, count, static_cast<std::uint16_t>(value)) > rank;
    };
    if (isAtOrBelow(guess)) {
        bracket.highest = guess;
        for (; step <= bracket.highest; step *= 4) {
            const unsigned lower = bracket.highest - step;
            if (!isAtOrBelow(lower)) {
                bracket.lowest = lower + 1;
                return bracket;
            }
            bracket.highest = lower;
        }
        return bracket;
    }
    bracket.lowest = guess + 1;
    for (; bracket.lowest + step < kMostValue; step *= 4) {
        const unsigned higher = bracket.lowest + step;
        if (isAtOrBelow(higher)) {
            bracket.highest = higher;
            return bracket;
        }
        bracket.lowest = higher + 1;
    }
    return bracket;
}

double MedianOf(const std::uint16_t* values, std::size_t count, unsigned guess)
{
    const std::size_t rank = (count - 1) / 2;
    TBracket bracket = BracketAround(guess, values, count, rank);
    while (bracket.lowest < bracket.highest) {
        const unsigned middle = (bracket.lowest + bracket.highest) / 2;
        if (CountUpTo(values, count, static_cast<std::uint16_t>(middle)) > rank)
            bracket.highest = middle;
        else
            bracket.lowest = middle + 1;
    }
    const auto lower = static_cast<std::uint16_t>(bracket.lowest);
    if (count % 2 == 1 || CountUpTo(values, count, lower) > rank + 1)
        return lower;
    return (lower + LeastAbove(values, count, lower)) / 2.0;
}

constexpr std::size_t kColumnsAtOnce = 64; // two cache lines of pixels per row
constexpr std::size_t kTogether = 32;      // columns whose counts stay in registers
constexpr std::size_t kInVector = 16;
typedef std::uint16_t TColumns __attribute__((vector_size(2 * kInVector)));
typedef TColumns TColumnsInMemory __attribute__((aligned(2), may_alias)); // as they lie among others

// How many of `rows` pixels of each column are at most its bound, added to what is counted already. As vectors, because
// compilers write the counts of a plain loop to memory in every row.
QXBC_INLINED void CountColumnsPlainly(const std::uint16_t* pixels, std::size_t rows, const std::uint16_t* bounds,
                                      std::size_t* counts)
{
    static_assert(kTogether == 2 * kInVector, "two vectors are counted");
    // No "auto", which forgets how they are aligned.
    const TColumnsInMemory* const bound = reinterpret_cast<const TColumnsInMemory*>(bounds);
    const TColumns firstBound = bound[0], secondBound = bound[1];
    TColumns first = {}, second = {};
    for (std::size_t row = 0; row < rows; ++row) {
        const TColumnsInMemory* const line = reinterpret_cast<const TColumnsInMemory*>(pixels + row * kColumnsAtOnce);
        first -= static_cast<TColumns>(line[0] <= firstBound); // true is -1
        second -= static_cast<TColumns>(line[1] <= secondBound);
    }
    for (std::size_t i = 0; i < kInVector; ++i) {
        counts[i] += first[i];
        counts[kInVector + i] += second[i];
    }
}

#ifdef QXBC_WIDE
QXBC_WIDE void CountColumnsWidely(const std::uint16_t* pixels, std::size_t rows, const std::uint16_t* bounds,
                                  std::size_t* counts)
{
    CountColumnsPlainly(pixels, rows, bounds, counts);
}
#endif

void CountColumns(const std::uint16_t* pixels, std::size_t rows, const std::uint16_t* bounds, std::size_t* counts)
{
#ifdef QXBC_WIDE
    if (HasWideRegisters())
        return CountColumnsWidely(pixels, rows, bounds, counts);
#endif
    CountColumnsPlainly(pixels, rows, bounds, counts);
}

// The medians of up to kColumnsAtOnce columns side by side, which lie in `block` row after row without gaps.
class TColumnBlock {
public:
    explicit TColumnBlock(std::size_t rows) : height(rows), block(rows * kColumnsAtOnce) {}

    void Load(const std::uint16_t* pixels, std::size_t width, std::size_t columns)
    {
        for (std::size_t row = 0; row < height; ++row)
            std::memcpy(block.data() + row * kColumnsAtOnce, pixels + row * width, columns * sizeof *pixels);
    }

    void AppendMedians(std::size_t columns, std::vector<double>& medians)
    {
        std::uint16_t value[kColumnsAtOnce], upper[kColumnsAtOnce];
        std::size_t upTo[kColumnsAtOnce];
        if (!Find(value, upTo)) {
            first = 0; // some columns differ too much from the ones before
            bits = 16;
            Find(value, upTo);
        }
        std::copy_n(value, kColumnsAtOnce, upper);
        for (std::size_t column = 0; column < columns; ++column) {
            if (height % 2 == 0 && upTo[column] <= Rank() + 1) // seldom, where values are many
                upper[column] = LeastAboveIn(column, value[column]);
        }
        for (std::size_t column = 0; column < columns; ++column)
            medians.push_back((value[column] + upper[column]) / 2.0);
        ExpectNear(value, columns);
    }

private:
    std::size_t Rank() const { return (height - 1) / 2; }

    // The values of that rank, and how many pixels are at most those; false when one lies outside of the values that
    // `first` and `bits` allow.
    bool Find(std::uint16_t* value, std::size_t* upTo) const
    {
        // From the highest bit down: the value of a rank is the largest below which at most `rank` values lie.
        std::fill_n(value, kColumnsAtOnce, first);
        std::uint16_t probe[kColumnsAtOnce];
        for (unsigned bit = 1u << bits >> 1; bit != 0; bit >>= 1) {
            for (std::size_t column = 0; column < kColumnsAtOnce; ++column)
                probe[column] = static_cast<std::uint16_t>(value[column] + bit - 1);
            Count(probe, upTo);
            for (std::size_t column = 0; column < kColumnsAtOnce; ++column) {
                if (upTo[column] <= Rank())
                    value[column] = static_cast<std::uint16_t>(value[column] + bit);
            }
        }
        bool isWithin = true;
        if (first > 0) { // 0 is a value of its rank whatever lies below it
            std::fill_n(probe, kColumnsAtOnce, static_cast<std::uint16_t>(first - 1));
            Count(probe, upTo);
            isWithin = std::all_of(upTo, upTo + kColumnsAtOnce, [this](std::size_t count) { return count <= Rank(); });
        }
        Count(value, upTo);
        return isWithin &&
               std::all_of(upTo, upTo + kColumnsAtOnce, [this](std::size_t count) { return count > Rank(); });
    }

    // Neighbouring columns have similar medians: the next ones are looked for around these first.
    void ExpectNear(const std::uint16_t* value, std::size_t columns)
    {
        const auto [least, most] = std::minmax_element(value, value + columns);
        const unsigned margin = 8 + (*most - *least) / 2u;
        const unsigned from = *least > margin ? *least - margin : 0;
        bits = 0;
        while (from + (1u << bits) <= *most + margin)
            ++bits;
        first = static_cast<std::uint16_t>(from);
        if (from + (1u << bits) > kMostValue) {
            first = 0;
            bits = 16;
        }
    }

    // How many pixels of each column are at most its bound.
    void Count(const std::uint16_t* bounds, std::size_t* counts) const
    {
        constexpr std::size_t kPart = 65535;
        std::fill_n(counts, kColumnsAtOnce, std::size_t{0});
        for (std::size_t begin = 0; begin < height; begin += kPart) {
            const std::size_t rows = std::min(kPart, height - begin);
            for (std::size_t left = 0; left < kColumnsAtOnce; left += kTogether)
                CountColumns(block.data() + begin * kColumnsAtOnce + left, rows, bounds + left, counts + left);
        }
    }

    std::uint16_t LeastAboveIn(std::size_t column, std::uint16_t bound) const
    {
        std::uint16_t least = kMostValue;
        for (std::size_t row = 0; row < height; ++row) {
            const std::uint16_t value = block[row * kColumnsAtOnce + column];
            if (value > bound && value < least)
                least = value;
        }
        return least;
    }

    std::size_t height;
    std::vector<std::uint16_t> block;
    std::uint16_t first = 0; // medians are looked for from here on,
    unsigned bits = 16;      // among so many bits of values
};

} // namespace

std::vector<double> RowMedians(const TImage& image)
{
    const auto width = static_cast<std::size_t>(image.size.width);
    const auto height = static_cast<std::size_t>(image.size.height);
    std::vector<double> medians;
    medians.reserve(height);
    unsigned guess = kMostValue / 2;
    for (std::size_t row = 0; row < height; ++row) {
        medians.push_back(MedianOf(image.pixels.data() + row * width, width, guess));
        guess = static_cast<unsigned>(medians.back());
    }
    return medians;
}

std::vector<double> ColumnMedians(const TImage& image)
{
    const auto width = static_cast<std::size_t>(image.size.width);
    std::vector<double> medians;
    medians.reserve(width);
    TColumnBlock block(static_cast<std::size_t>(image.size.height));
    for (std::size_t left = 0; left < width; left += kColumnsAtOnce) {
        const std::size_t columns = std::min(kColumnsAtOnce, width - left);
        block.Load(image.pixels.data() + left, width, columns);
        block.AppendMedians(columns, medians);
    }
    return medians;
}

} // namespace workbench
