// The calibration file's constants, for the writer, the reader and whoever else walks such a file. The format as a
// whole is described in docs/calibration-file.md.
#ifndef FILE_CALIBRATIONFORMAT_H
#define FILE_CALIBRATIONFORMAT_H

#include <cstddef>
#include <cstdint>

namespace CalibrationFormat {

// A file begins with this text (without its terminator) and the structure version as 32 bits.
constexpr char kSignature[] = "Background Correction File";
constexpr std::size_t kSignatureLength = sizeof kSignature - 1;

constexpr std::uint32_t kUngroupedVersion = 1; // corrections only
constexpr std::uint32_t kGroupedVersion = 2;   // grouping names, then corrections

// A record: identifier, version and data length, 32 bits each, then the data. All numbers are little-endian.
struct TRecord {
    std::uint32_t identifier;
    std::uint32_t version;
    std::uint32_t dataLength; // where the record's length is fixed
};

constexpr std::size_t kRecordHeaderLength = 12;
constexpr std::size_t kKeyLength = 512;         // of the data of kKey, padded with zeros
constexpr std::size_t kGroupingNameLength = 16; // of the data of kGroupingName, padded with zeros

constexpr TRecord kCorrectionCount = {61, 1, 4};
constexpr TRecord kCorrectionStart = {62, 1, 0}; // no data, but states CorrectionStartLength
constexpr TRecord kKey = {63, 1, kKeyLength};
constexpr TRecord kWidth = {64, 1, 4};
constexpr TRecord kHeight = {65, 1, 4};
constexpr TRecord kExposure = {66, 1, 4};   // seconds, IEEE 754 single precision
constexpr TRecord kIntensity = {67, 1, 4};  // percent, IEEE 754 single precision
constexpr TRecord kBackground = {68, 1, 0}; // BackgroundLength
constexpr TRecord kGroupingCount = {69, 2, 4};
constexpr TRecord kGroupingName = {70, 2, kGroupingNameLength};

// More grouping names than this are taken for a damaged file that ends early.
constexpr std::uint32_t kMaximumGroupingCount = 65536;

// Data length of the background record: two bytes a pixel, in 32-bit arithmetic.
constexpr std::uint32_t BackgroundLength(std::uint32_t width, std::uint32_t height)
{
    return static_cast<std::uint32_t>(2ull * width * height);
}

// Length that the record which opens a correction states. It is 24 less than what the six records behind it take, and
// no reader uses it: kept, because files have always been so.
constexpr std::uint32_t CorrectionStartLength(std::uint32_t width, std::uint32_t height)
{
    return static_cast<std::uint32_t>(576ull + 2ull * width * height);
}

inline void Store32(unsigned char* bytes, std::uint32_t value)
{
    for (int i = 0; i < 4; ++i) {
        bytes[i] = static_cast<unsigned char>(value >> (8 * i));
    }
}

inline std::uint32_t Load32(const unsigned char* bytes)
{
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
        value |= static_cast<std::uint32_t>(bytes[i]) << (8 * i);
    }
    return value;
}

} // namespace CalibrationFormat

#endif
