// Images for tests, the same ones in every run on every system.
#ifndef QXBC_TESTS_RANDOM_IMAGES_H
#define QXBC_TESTS_RANDOM_IMAGES_H

#include "model/LiteralArithmetic.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

class TRandomImages {
public:
    explicit TRandomImages(std::uint32_t seed) : generator(seed) {}

    // Uniform within the limits, both included.
    std::uint32_t Number(std::uint32_t lowest, std::uint32_t highest)
    {
        return lowest + static_cast<std::uint32_t>(generator() % (std::uint64_t{highest} - lowest + 1));
    }

    Literal::TImage Image(int width, int height, std::uint16_t lowest = 0, std::uint16_t highest = 65535)
    {
        Literal::TImage image{width, height, {}};
        image.pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
        for (std::uint16_t& pixel : image.pixels) {
            pixel = static_cast<std::uint16_t>(Number(lowest, highest));
        }
        return image;
    }

    std::vector<Literal::TImage> Stack(int frameCount, int width, int height, std::uint16_t lowest = 0,
                                       std::uint16_t highest = 65535)
    {
        std::vector<Literal::TImage> frames;
        for (int i = 0; i < frameCount; ++i) {
            frames.push_back(Image(width, height, lowest, highest));
        }
        return frames;
    }

private:
    std::mt19937 generator;
};

struct TImageSize {
    int width;
    int height;
};

// Sizes at which loops over rows, columns and vectors go wrong.
constexpr TImageSize kAwkwardSizes[] = {{1, 1}, {1, 2}, {1, 9}, {2, 1}, {9, 1},  {2, 2},   {3, 2},
                                        {2, 3}, {3, 3}, {8, 8}, {5, 4}, {17, 5}, {33, 16}, {641, 7}};

// Large enough for the loops over whole blocks of pixels, with some left over.
constexpr TImageSize kLargeSize = {1031, 67};

inline Literal::TImage FlatImage(int width, int height, std::uint16_t value)
{
    return {width, height,
            std::vector<std::uint16_t>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), value)};
}

#endif
