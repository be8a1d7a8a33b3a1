// Entries made in one line.
#ifndef QXBC_TESTS_ENTRY_BUILDING_H
#define QXBC_TESTS_ENTRY_BUILDING_H

#include "boundary/TZRException.h"
#include "data/TBackgroundCorrectionEntry.h"
#include "model/LiteralArithmetic.h"

#include <string>
#include <vector>

inline void BuildFrom(TBackgroundCorrectionEntry& entry, const char* key, const std::vector<Literal::TImage>& frames,
                      bool applyMedianFilter, float exposureSeconds = 2.0f, float lightIntensityPercent = 10.0f)
{
    std::vector<const std::uint16_t*> pointers;
    for (const Literal::TImage& frame : frames) {
        pointers.push_back(frame.pixels.data());
    }
    entry.Build(key, pointers.data(), static_cast<std::uint32_t>(pointers.size()),
                static_cast<std::uint32_t>(frames.front().width), static_cast<std::uint32_t>(frames.front().height),
                exposureSeconds, lightIntensityPercent, applyMedianFilter);
}

// One row of pixels, not filtered.
inline TBackgroundCorrectionEntry RowEntry(const char* key, const std::vector<std::uint16_t>& pixels)
{
    TBackgroundCorrectionEntry entry;
    BuildFrom(entry, key, {{static_cast<int>(pixels.size()), 1, pixels}}, false);
    return entry;
}

inline std::vector<std::uint16_t> PixelsOf(const TBackgroundCorrectionEntry& entry)
{
    return entry.Pixels() == nullptr ? std::vector<std::uint16_t>{}
                                     : std::vector<std::uint16_t>(entry.Pixels(), entry.Pixels() + entry.PixelCount());
}

// The text of the TZRException that `action` throws.
template <typename TAction> std::string ThrownText(TAction action)
{
    try {
        action();
    } catch (const TZRException& caught) {
        return caught.what();
    }
    return "(nothing thrown)";
}

constexpr char kConstructionMemoryText[] = "Ran out of memory in Background correction construction.\n"
                                           "Try restarting the application if the problem persists.";
constexpr char kCreationMemoryText[] = "Ran out of memory when trying to create new correction.\n"
                                       "Try restarting the application if the problem persists.";
constexpr char kAddingMemoryText[] = "Ran out of memory when trying to add new correction.\n"
                                     "Try restarting the application if the problem persists.";

#endif
