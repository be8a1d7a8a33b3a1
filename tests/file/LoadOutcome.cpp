#include "file/LoadOutcome.h"

#include <cstring>
#include <sstream>

std::uint32_t BitsOf(float value)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

float FromBits(std::uint32_t bits)
{
    float value = 0.0f;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

bool operator==(const TStoredCorrection& left, const TStoredCorrection& right)
{
    return left.key == right.key && left.width == right.width && left.height == right.height &&
           left.exposureBits == right.exposureBits && left.intensityBits == right.intensityBits &&
           left.pixels == right.pixels;
}

bool operator==(const TLoadOutcome& left, const TLoadOutcome& right)
{
    return left.result == right.result && left.mainText == right.mainText && left.fileText == right.fileText &&
           left.corrections == right.corrections && left.groupingNames == right.groupingNames &&
           left.structureVersion == right.structureVersion && left.headerOnly == right.headerOnly &&
           left.active == right.active;
}

std::string Describe(TLoadKind kind)
{
    return std::string(kind.grouped ? "grouped" : "ungrouped") + (kind.headerOnly ? " header-only" : " full") + " load";
}

std::string Describe(const TStoredCorrection& correction)
{
    std::ostringstream text;
    text << '\'' << correction.key << "' " << correction.width << " x " << correction.height << std::hex
         << " exposure 0x" << correction.exposureBits << " intensity 0x" << correction.intensityBits << " pixels";
    for (const std::uint16_t pixel : correction.pixels) {
        text << ' ' << pixel;
    }
    return text.str();
}

std::string Describe(const TLoadOutcome& outcome)
{
    std::ostringstream text;
    text << "result " << outcome.result << ", structure version " << outcome.structureVersion << ", "
         << (outcome.headerOnly ? "header-only" : "full") << ", " << (outcome.active ? "active" : "nothing active")
         << "\n  main text '" << outcome.mainText << "'\n  file text '" << outcome.fileText << '\'';
    for (const std::string& name : outcome.groupingNames) {
        text << "\n  grouping name '" << name << '\'';
    }
    for (const TStoredCorrection& correction : outcome.corrections) {
        text << "\n  correction " << Describe(correction);
    }
    return text.str();
}
