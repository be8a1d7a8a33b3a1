#include "file/SampleFiles.h"

using namespace FileBytes;

namespace SampleFiles {

namespace {

// "Background Correction File"
const char* const kSignature = "42 61 63 6B 67 72 6F 75 6E 64 20 43 6F 72 72 65 63 74 69 6F 6E 20 46 69 6C 65";

// The pieces that several files have in common.

TBytes DarkRecords() // "dark", 2 x 1, 0.5 s, 100 %
{
    return Join({
        Hex("3E 00 00 00  01 00 00 00  44 02 00 00"), // 62: 576 + 2 * 2 * 1
        Hex("3F 00 00 00  01 00 00 00  00 02 00 00"), // 63
        Hex("64 61 72 6B"), Zeros(508),
        Hex("40 00 00 00  01 00 00 00  04 00 00 00  02 00 00 00"),  // 64: width
        Hex("41 00 00 00  01 00 00 00  04 00 00 00  01 00 00 00"),  // 65: height
        Hex("42 00 00 00  01 00 00 00  04 00 00 00  00 00 00 3F"),  // 66: exposure
        Hex("43 00 00 00  01 00 00 00  04 00 00 00  00 00 C8 42"),  // 67: intensity
        Hex("44 00 00 00  01 00 00 00  04 00 00 00  01 00  34 12"), // 68: pixels
    });
}

TStoredCorrection Dark()
{
    return {"dark", 2, 1, 0x3F000000, 0x42C80000, {0x0001, 0x1234}};
}

TBytes FlatRecords() // "Flat,20 C", 1 x 3, 0.1 s, 50 %
{
    return Join({
        Hex("3E 00 00 00  01 00 00 00  46 02 00 00"), // 62: 576 + 2 * 1 * 3
        Hex("3F 00 00 00  01 00 00 00  00 02 00 00"),
        Hex("46 6C 61 74 2C 32 30 20 43"),
        Zeros(503),
        Hex("40 00 00 00  01 00 00 00  04 00 00 00  01 00 00 00"),
        Hex("41 00 00 00  01 00 00 00  04 00 00 00  03 00 00 00"),
        Hex("42 00 00 00  01 00 00 00  04 00 00 00  CD CC CC 3D"),
        Hex("43 00 00 00  01 00 00 00  04 00 00 00  00 00 48 42"),
        Hex("44 00 00 00  01 00 00 00  06 00 00 00  FF FF  00 00  02 01"),
    });
}

TStoredCorrection Flat()
{
    return {"Flat,20 C", 1, 3, 0x3DCCCCCD, 0x42480000, {0xFFFF, 0x0000, 0x0102}};
}

} // namespace

TSampleFile EmptyList()
{
    return {"empty list",
            Join({Hex(kSignature), Hex("01 00 00 00"), Hex("3D 00 00 00  01 00 00 00  04 00 00 00  00 00 00 00")}),
            1,
            {},
            {}};
}

TSampleFile OneCorrection()
{
    return {"one correction",
            Join({Hex(kSignature), Hex("01 00 00 00"), Hex("3D 00 00 00  01 00 00 00  04 00 00 00  01 00 00 00"),
                  FlatRecords()}),
            1,
            {},
            {Flat()}};
}

TSampleFile TwoCorrections()
{
    return {"two corrections",
            Join({Hex(kSignature), Hex("01 00 00 00"), Hex("3D 00 00 00  01 00 00 00  04 00 00 00  02 00 00 00"),
                  DarkRecords(), FlatRecords()}),
            1,
            {},
            {Dark(), Flat()}};
}

TSampleFile WithoutPixels()
{
    const TBytes nothing = Join({
        Hex("3E 00 00 00  01 00 00 00  40 02 00 00"), // 62: 576
        Hex("3F 00 00 00  01 00 00 00  00 02 00 00"),
        Hex("6E 6F 6E 65"),
        Zeros(508), // "none"
        Hex("40 00 00 00  01 00 00 00  04 00 00 00  03 00 00 00"),
        Hex("41 00 00 00  01 00 00 00  04 00 00 00  00 00 00 00"),
        Hex("42 00 00 00  01 00 00 00  04 00 00 00  00 00 80 3F"),
        Hex("43 00 00 00  01 00 00 00  04 00 00 00  00 00 80 BF"),
        Hex("44 00 00 00  01 00 00 00  00 00 00 00"),
    });
    return {"an entry without pixels",
            Join({Hex(kSignature), Hex("01 00 00 00"), Hex("3D 00 00 00  01 00 00 00  04 00 00 00  02 00 00 00"),
                  nothing, DarkRecords()}),
            1,
            {},
            {{"none", 3, 0, 0x3F800000, 0xBF800000, {}}, Dark()}};
}

TSampleFile LongestKey()
{
    TBytes bytes = Join({Hex(kSignature), Hex("01 00 00 00"), Hex("3D 00 00 00  01 00 00 00  04 00 00 00  01 00 00 00"),
                         DarkRecords()});
    const std::size_t keyOffset = 26 + 4 + 16 + 12 + 12;
    for (std::size_t i = 0; i < 512; ++i) {
        bytes.at(keyOffset + i) = 0x6B;
    }
    TStoredCorrection correction = Dark();
    correction.key = std::string(512, '\x6B');
    return {"a key of 512 characters", bytes, 1, {}, {correction}};
}

TSampleFile GroupedEmptyList()
{
    return {"grouped, empty list",
            Join({Hex(kSignature), Hex("02 00 00 00"),                                //
                  Hex("45 00 00 00  02 00 00 00  04 00 00 00  01 00 00 00"),          // 69: number of names
                  Hex("46 00 00 00  02 00 00 00  10 00 00 00"), Hex("41"), Zeros(15), // 70: "A"
                  Hex("3D 00 00 00  01 00 00 00  04 00 00 00  00 00 00 00")}),
            2,
            {"A"},
            {}};
}

TSampleFile GroupedWithoutNames()
{
    return {"grouped, no names",
            Join({Hex(kSignature), Hex("02 00 00 00"), Hex("45 00 00 00  02 00 00 00  04 00 00 00  00 00 00 00"),
                  Hex("3D 00 00 00  01 00 00 00  04 00 00 00  01 00 00 00"), FlatRecords()}),
            2,
            {},
            {Flat()}};
}

TSampleFile Grouped()
{
    return {"grouped",
            Join({Hex(kSignature), Hex("02 00 00 00"), Hex("45 00 00 00  02 00 00 00  04 00 00 00  02 00 00 00"),
                  Hex("46 00 00 00  02 00 00 00  10 00 00 00"), Hex("47 61 69 6E"), Zeros(12), // "Gain"
                  Hex("46 00 00 00  02 00 00 00  10 00 00 00"),
                  Hex("53 65 6E 73 6F 72 54 65 6D 70 65 72 61 74 75 72"), // "SensorTemperatur", not terminated
                  Hex("3D 00 00 00  01 00 00 00  04 00 00 00  02 00 00 00"), FlatRecords(), DarkRecords()}),
            2,
            {"Gain", "SensorTemperatur"},
            {Flat(), Dark()}};
}

std::vector<TSampleFile> All()
{
    return {EmptyList(),  OneCorrection(),    TwoCorrections(),      WithoutPixels(),
            LongestKey(), GroupedEmptyList(), GroupedWithoutNames(), Grouped()};
}

TBytes Correction(const std::string& key, std::uint32_t width, std::uint32_t height, float exposureSeconds,
                  float intensityPercent, const TBytes& pixels)
{
    return Join({
        Number(62),
        Number(1),
        Number(576 + 2 * width * height),
        Number(63),
        Number(1),
        Number(512),
        Padded(key, 512),
        Number(64),
        Number(1),
        Number(4),
        Number(width),
        Number(65),
        Number(1),
        Number(4),
        Number(height),
        Number(66),
        Number(1),
        Number(4),
        Number(BitsOf(exposureSeconds)),
        Number(67),
        Number(1),
        Number(4),
        Number(BitsOf(intensityPercent)),
        Number(68),
        Number(1),
        Number(2 * width * height),
        pixels,
    });
}

TBytes Beginning(std::uint32_t correctionCount)
{
    return Join({Hex(kSignature), Number(1), Number(61), Number(1), Number(4), Number(correctionCount)});
}

} // namespace SampleFiles
