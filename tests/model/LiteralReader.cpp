#include "model/LiteralReader.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

constexpr std::uint32_t kMinusOne = 4294967295u;
constexpr std::uint32_t kMinusTwo = 4294967294u;

// At most 256 characters, as the processor's buffers hold.
std::string Cut(std::string text)
{
    text.resize(std::min<std::size_t>(text.size(), 256));
    return text;
}

bool SameKey(const std::string& left, const std::string& right)
{
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [&](char a, char b) { return lower(a) == lower(b); });
}

class TLiteralReader {
public:
    TLiteralReader(const FileBytes::TBytes& fileBytes, const TLoadOutcome& before, const TLiteralFaults& plannedFaults,
                   std::int64_t attemptLimit)
        : bytes(fileBytes), faults(plannedFaults), mostAttempts(attemptLimit), state(before)
    {}

    std::optional<TLoadOutcome> Load(const std::string& path, TLoadKind kind)
    {
        const std::uint32_t expectedVersion = kind.grouped ? 2 : 1;
        if (kind.grouped) {
            state.structureVersion = 2;
            state.groupingNames.clear();
        }
        state.headerOnly = kind.headerOnly;
        std::uint32_t fileVersion = 0;
        state.result = Open(path, expectedVersion, fileVersion);
        if (state.result == 772 && kind.grouped) {
            state.structureVersion = fileVersion;
        }
        if (state.result == 772 && kind.grouped && fileVersion == 1) {
            state.result = ReadCorrections();
        } else if (state.result == 0) {
            state.result = kind.grouped ? ReadGroupingNames() : 0;
            if (state.result == 0) {
                state.result = ReadCorrections();
            } else {
                state.groupingNames.clear();
            }
        }
        return undecided ? std::nullopt : std::optional<TLoadOutcome>(state);
    }

private:
    std::uint32_t Open(const std::string& path, std::uint32_t expectedVersion, std::uint32_t& fileVersion)
    {
        char text[27] = {};
        if (!Read(text, 26)) {
            state.fileText = "Couldn't read Data from calibration file.";
            return kMinusOne;
        }
        if (std::memcmp(text, "Background Correction File", 27) != 0) {
            state.mainText = Cut("Could not load file - '" + path + "'\nHeader not correct.");
            return 769;
        }
        if (!ReadNumber(fileVersion)) {
            state.fileText = "Couldn't read Data from calibration file.";
            return kMinusOne;
        }
        if (fileVersion != expectedVersion) {
            state.mainText = Cut("Could not load file - '" + path + "'\nStructure version not correct [ " +
                                 std::to_string(static_cast<std::int32_t>(fileVersion)) + " ].");
            return 772;
        }
        return 0;
    }

    std::uint32_t ReadGroupingNames()
    {
        std::uint32_t count = 0;
        if (!Record(69, 2, 4) || !Data(&count)) {
            return kMinusOne;
        }
        if (count > 65536) {
            state.fileText = "Couldn't read Data from calibration file.";
            return kMinusOne;
        }
        for (std::uint32_t i = 0; i < count; ++i) {
            char name[17] = {};
            if (!Record(70, 2, 16) || !Data(name, 16)) {
                return kMinusOne;
            }
            state.groupingNames.push_back(name);
        }
        return 0;
    }

    std::uint32_t ReadCorrections()
    {
        std::uint32_t stored = 0;
        if (!Record(61, 1, 4) || !Data(&stored)) {
            return kMinusOne;
        }
        state.corrections.clear();
        state.active = false;
        const auto count = static_cast<std::int32_t>(stored);
        std::uint32_t result = 0;
        for (std::int64_t i = 0; i < count; ++i) {
            if (i == mostAttempts) {
                undecided = true;
                return 0;
            }
            const bool atEnd = position >= bytes.size();
            result = ReadCorrection();
            if (result == 1024) {
                return result;
            }
            if (result != 0) {
                state.mainText = Cut("Error loading file - '" + state.fileText + "'");
                if (atEnd) {
                    break; // nothing was read and nothing moved: every further attempt is this one again
                }
            }
        }
        return result;
    }

    std::uint32_t ReadCorrection()
    {
        char key[513] = {};
        TStoredCorrection correction;
        std::uint32_t length = 0;
        const std::uint32_t opening = Header(62, 1, nullptr);
        if (opening != 0) {
            return opening;
        }
        if (!Record(63, 1, 512) || !Data(key, 512) || !Record(64, 1, 4) || !Data(&correction.width) ||
            !Record(65, 1, 4) || !Data(&correction.height) || !Record(66, 1, 4) || !Data(&correction.exposureBits) ||
            !Record(67, 1, 4) || !Data(&correction.intensityBits)) {
            return kMinusOne;
        }
        const std::uint64_t pixelCount = std::uint64_t{correction.width} * correction.height;
        if (!state.headerOnly && pixelCount > 0x7FFFFFFF) {
            state.mainText = "Memory allocation error during reading.";
            return 1024;
        }
        length = 2 * correction.width * correction.height;
        if (!Record(68, 1, length)) {
            return kMinusOne;
        }
        if (state.headerOnly) {
            if (length > 0 && !Seek(position + length)) {
                state.fileText = "Unexpected end of calibration file.";
                return kMinusOne;
            }
        } else {
            FileBytes::TBytes data(std::min<std::uint64_t>(length, bytes.size()) + 1);
            if (!Data(data.data(), length)) {
                return kMinusOne;
            }
            for (std::uint64_t i = 0; i < pixelCount; ++i) {
                correction.pixels.push_back(static_cast<std::uint16_t>(data[2 * i] + 256 * data[2 * i + 1]));
            }
        }
        correction.key = key;
        return Add(correction);
    }

    std::uint32_t Add(const TStoredCorrection& correction)
    {
        const float exposure = FromBits(correction.exposureBits);
        const float intensity = FromBits(correction.intensityBits);
        std::string refusal;
        if (correction.key.empty()) {
            refusal = "The key is not valid - ''.";
        } else if (exposure * intensity == 0.0f) {
            char text[513];
            std::snprintf(text, sizeof text, "Reference exposure and light intensity product is zero [ %f ] * [ %f ].",
                          static_cast<double>(exposure), static_cast<double>(intensity));
            refusal = text;
        } else if (std::any_of(state.corrections.begin(), state.corrections.end(),
                               [&](const TStoredCorrection& other) { return SameKey(other.key, correction.key); })) {
            refusal = ("Supplied Key is not unique - '" + correction.key + "'").substr(0, 512);
        }
        if (!refusal.empty()) {
            state.mainText = Cut("Couldn't create new background entry - '" + refusal + "'");
            return 1024;
        }
        state.corrections.push_back(correction);
        return 0;
    }

    // 0, -1 or -2; no length is expected where there is none.
    std::uint32_t Header(std::uint32_t identifier, std::uint32_t version, const std::uint32_t* expectedLength)
    {
        std::uint32_t readIdentifier = 0;
        std::uint32_t readVersion = 0;
        std::uint32_t readLength = 0;
        if (!ReadNumber(readIdentifier)) {
            state.fileText = "Couldn't read Entry ID from calibration file.";
            return kMinusOne;
        }
        if (!ReadNumber(readVersion)) {
            state.fileText = "Couldn't read Entry Version from calibration file.";
            return kMinusOne;
        }
        if (!ReadNumber(readLength)) {
            state.fileText = "Couldn't read Entry Data Length from calibration file.";
            return kMinusOne;
        }
        if (readIdentifier != identifier || readVersion != version ||
            (expectedLength != nullptr && readLength != *expectedLength)) {
            Seek(readLength);
            state.fileText = "Calibration file contains invalid data.";
            return kMinusTwo;
        }
        return 0;
    }

    // The opening of a record for which -2 counts as success.
    bool Record(std::uint32_t identifier, std::uint32_t version, std::uint32_t length)
    {
        return Header(identifier, version, &length) != kMinusOne;
    }

    bool Data(void* data, std::uint64_t length)
    {
        const bool whole = Read(data, length);
        if (!whole) {
            state.fileText = "Couldn't read Data from calibration file.";
        }
        return whole;
    }

    bool Data(std::uint32_t* value)
    {
        unsigned char data[4];
        const bool whole = Data(data, 4);
        if (whole) {
            *value = Value(data);
        }
        return whole;
    }

    bool ReadNumber(std::uint32_t& value)
    {
        unsigned char data[4];
        const bool whole = Read(data, 4);
        if (whole) {
            value = Value(data);
        }
        return whole;
    }

    static std::uint32_t Value(const unsigned char* data)
    {
        return data[0] + 256u * data[1] + 65536u * data[2] + 16777216u * data[3];
    }

    bool Read(void* data, std::uint64_t length)
    {
        if (length == 0) {
            return true;
        }
        ++reads;
        const bool fails = reads == faults.failedRead || (faults.everyLaterReadToo && reads > faults.failedRead);
        const std::uint64_t left = position < bytes.size() ? bytes.size() - position : 0;
        const std::uint64_t taken = std::min(fails ? std::min(length - 1, faults.movedBytes) : length, left);
        if (taken > 0) {
            std::memcpy(data, bytes.data() + position, taken);
        }
        position += taken;
        return taken == length;
    }

    bool Seek(std::uint64_t offset)
    {
        ++seeks;
        if (seeks == faults.failedSeek || (faults.everyLaterSeekToo && seeks > faults.failedSeek)) {
            return false;
        }
        position = offset;
        return true;
    }

    const FileBytes::TBytes& bytes;
    TLiteralFaults faults;
    std::int64_t mostAttempts;
    TLoadOutcome state;
    std::uint64_t position = 0;
    std::uint64_t reads = 0;
    std::uint64_t seeks = 0;
    bool undecided = false;
};

} // namespace

std::optional<TLoadOutcome> LoadLiterally(const FileBytes::TBytes& bytes, const std::string& path, TLoadKind kind,
                                          const TLoadOutcome& before, const TLiteralFaults& faults,
                                          std::int64_t mostAttempts)
{
    return TLiteralReader(bytes, before, faults, mostAttempts).Load(path, kind);
}
