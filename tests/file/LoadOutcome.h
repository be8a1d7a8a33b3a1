// What a load leaves behind, in words that the library and the model of it share.
#ifndef TESTS_FILE_LOADOUTCOME_H
#define TESTS_FILE_LOADOUTCOME_H

#include <cstdint>
#include <string>
#include <vector>

struct TStoredCorrection {
    std::string key;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t exposureBits = 0;    // of the single-precision number, so that every NaN is itself
    std::uint32_t intensityBits = 0;   // likewise
    std::vector<std::uint16_t> pixels; // empty: none
};

struct TLoadKind {
    bool grouped;
    bool headerOnly;
};

constexpr TLoadKind kEveryLoad[] = {{false, false}, {false, true}, {true, false}, {true, true}};

// State of a processor before or after a load. `groupingNames` and `structureVersion` are the arguments of a grouped
// load and mean nothing for another one.
struct TLoadOutcome {
    std::uint32_t result = 0;
    std::string mainText;
    std::string fileText;
    std::vector<TStoredCorrection> corrections;
    std::vector<std::string> groupingNames;
    std::uint32_t structureVersion = 0;
    bool headerOnly = false;
    bool active = false; // whether a correction is active
};

std::uint32_t BitsOf(float value);
float FromBits(std::uint32_t bits);

bool operator==(const TStoredCorrection& left, const TStoredCorrection& right);
bool operator==(const TLoadOutcome& left, const TLoadOutcome& right);

std::string Describe(TLoadKind kind);
std::string Describe(const TStoredCorrection& correction);
std::string Describe(const TLoadOutcome& outcome);

#endif
