#include "calibration/TCalibrationWalk.h"

#include "base/FileKind.h"
#include "base/TToolError.h"
#include "base/Wording.h"

#include "file/CalibrationFormat.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>

namespace workbench {

namespace {

namespace format = CalibrationFormat;

// A count is trusted only as far as the file has room for what it announces.
constexpr std::uint64_t kSmallestCorrection = 7 * format::kRecordHeaderLength + format::kKeyLength + 4 * 4;

// Enough to see what is wrong; a file of random bytes would fill the screen and the memory.
constexpr std::size_t kMostDepartures = 200;

// The walk cannot go on: the file ends here, or is nothing but departures.
struct TWalkEnds {};

class TWalker {
public:
    explicit TWalker(const std::string& path);
    TCalibrationWalk Run();

private:
    struct THeader {
        std::uint64_t offset = 0;
        format::TRecord record{};
    };

    void Depart(std::uint64_t offset, const std::string& what);
    void Read(unsigned char* bytes, std::size_t count, const char* what);
    std::uint32_t Read32(const char* what);
    THeader ReadHeader(const char* name);
    void CheckHeader(const THeader& header, const format::TRecord& expected, const char* name, bool fixedLength);
    std::uint32_t ReadNumber(const format::TRecord& expected, const char* name);
    float ReadFloat(const format::TRecord& expected, const char* name);
    bool StartsRecord(std::uint64_t offset, const format::TRecord& expected);
    void ReadGroupingNames();
    void ReadCorrections();
    void ReadCorrection(std::uint64_t left);
    void SkipPixels(TStoredCorrection& correction, const THeader& header, bool last);
    void CheckMeaning(const TStoredCorrection& correction);

    std::ifstream file;
    std::uint64_t position = 0;
    TCalibrationWalk walk;
    std::set<std::string> keys; // in lower case: how the library tells them apart
};

std::string Number(std::uint64_t value)
{
    return std::to_string(value);
}

// Bytes of a field up to its first zero.
std::string FieldText(const unsigned char* bytes, std::size_t length)
{
    return std::string(bytes, std::find(bytes, bytes + length, static_cast<unsigned char>(0)));
}

std::string LowerCase(std::string text)
{
    for (char& character : text) {
        if (character >= 'A' && character <= 'Z')
            character = static_cast<char>(character - 'A' + 'a');
    }
    return text;
}

float FloatOf(std::uint32_t bits)
{
    float value = 0;
    static_assert(sizeof value == sizeof bits, "single precision");
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

TWalker::TWalker(const std::string& path)
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status))
        throw TToolError(path, error && error != std::errc::no_such_file_or_directory
                                   ? "cannot be opened: " + error.message()
                                   : "does not exist");
    if (!std::filesystem::is_regular_file(status))
        throw TToolError(path, "is not a regular file");
    walk.fileBytes = std::filesystem::file_size(path, error);
    file.open(std::filesystem::path(path), std::ios::binary);
    if (!file || error)
        throw TToolError(path, "cannot be opened: " + std::generic_category().message(errno));
}

void TWalker::Depart(std::uint64_t offset, const std::string& what)
{
    walk.departures.push_back({offset, what});
    if (walk.departures.size() >= kMostDepartures) {
        walk.departures.push_back({offset, "too many departures, the rest of the file is not looked at"});
        throw TWalkEnds();
    }
}

void TWalker::Read(unsigned char* bytes, std::size_t count, const char* what)
{
    if (walk.fileBytes - std::min(walk.fileBytes, position) < count) {
        Depart(std::min(walk.fileBytes, position), std::string("the file ends inside ") + what);
        throw TWalkEnds();
    }
    file.clear();
    file.seekg(static_cast<std::streamoff>(position));
    file.read(reinterpret_cast<char*>(bytes), static_cast<std::streamsize>(count));
    if (!file) {
        Depart(position, std::string("cannot be read: ") + what);
        throw TWalkEnds();
    }
    position += count;
}

std::uint32_t TWalker::Read32(const char* what)
{
    unsigned char bytes[4];
    Read(bytes, sizeof bytes, what);
    return format::Load32(bytes);
}

TWalker::THeader TWalker::ReadHeader(const char* name)
{
    unsigned char bytes[format::kRecordHeaderLength];
    THeader header;
    header.offset = position;
    Read(bytes, sizeof bytes, name);
    header.record = {format::Load32(bytes), format::Load32(bytes + 4), format::Load32(bytes + 8)};
    return header;
}

void TWalker::CheckHeader(const THeader& header, const format::TRecord& expected, const char* name, bool fixedLength)
{
    const auto compare = [&](std::uint64_t at, const char* field, std::uint32_t found, std::uint32_t wanted) {
        if (found != wanted)
            Depart(header.offset + at,
                   std::string(name) + ": " + field + " is " + Number(found) + " instead of " + Number(wanted));
    };
    compare(0, "Entry ID", header.record.identifier, expected.identifier);
    compare(4, "Entry Version", header.record.version, expected.version);
    if (fixedLength)
        compare(8, "Entry Data Length", header.record.dataLength, expected.dataLength);
}

std::uint32_t TWalker::ReadNumber(const format::TRecord& expected, const char* name)
{
    CheckHeader(ReadHeader(name), expected, name, true);
    return Read32(name);
}

float TWalker::ReadFloat(const format::TRecord& expected, const char* name)
{
    return FloatOf(ReadNumber(expected, name));
}

bool TWalker::StartsRecord(std::uint64_t offset, const format::TRecord& expected)
{
    unsigned char bytes[8];
    file.clear();
    file.seekg(static_cast<std::streamoff>(offset));
    return offset + sizeof bytes <= walk.fileBytes && file.read(reinterpret_cast<char*>(bytes), sizeof bytes) &&
           format::Load32(bytes) == expected.identifier && format::Load32(bytes + 4) == expected.version;
}

void TWalker::ReadGroupingNames()
{
    const std::uint64_t offset = position;
    const std::uint32_t count = ReadNumber(format::kGroupingCount, "the number of grouping names");
    if (count > format::kMaximumGroupingCount)
        Depart(offset + format::kRecordHeaderLength,
               "there are more grouping names (" + Number(count) + ") than " + Number(format::kMaximumGroupingCount));
    for (std::uint32_t index = 0; index < count; ++index) {
        // A damaged count leads straight into the corrections.
        if (StartsRecord(position, format::kCorrectionCount)) {
            Depart(position, "only " + Number(index) + " of " + Number(count) + " grouping names are there");
            return;
        }
        unsigned char name[format::kGroupingNameLength];
        CheckHeader(ReadHeader("a grouping name"), format::kGroupingName, "a grouping name", true);
        Read(name, sizeof name, "a grouping name");
        walk.groupingNames.push_back(FieldText(name, sizeof name));
    }
}

void TWalker::SkipPixels(TStoredCorrection& correction, const THeader& header, bool last)
{
    const std::uint64_t bySize = std::uint64_t{2} * correction.width * correction.height;
    const std::uint32_t expected = format::BackgroundLength(correction.width, correction.height);
    CheckHeader(header, {format::kBackground.identifier, format::kBackground.version, expected}, "the pixels", true);
    if (bySize != expected)
        Depart(header.offset + 8, "the pixels: " + Number(correction.width) + " x " + Number(correction.height) +
                                      " pixels need more bytes than a record can state");
    correction.pixelOffset = position;
    // When size and length disagree, the one that is followed by a valid record is right.
    std::uint64_t length = bySize;
    const std::uint64_t stated = header.record.dataLength;
    if (bySize != stated) {
        const auto fits = [&](std::uint64_t bytes) {
            return last ? position + bytes == walk.fileBytes : StartsRecord(position + bytes, format::kCorrectionStart);
        };
        if (!fits(bySize) && fits(stated))
            length = stated;
    }
    if (walk.fileBytes - position < length) {
        Depart(walk.fileBytes, "the file ends inside the pixels of '" + correction.key + "': " +
                                   Number(walk.fileBytes - position) + " of " + Number(length) + " bytes are there");
        throw TWalkEnds();
    }
    position += length;
}

void TWalker::CheckMeaning(const TStoredCorrection& correction)
{
    const std::string who = "correction '" + correction.key + "': ";
    if (correction.key.empty())
        Depart(correction.offset, "a correction has an empty key");
    else if (!keys.insert(LowerCase(correction.key)).second)
        Depart(correction.offset, who + "its key is there already (letter case is ignored)");
    if (correction.exposureSeconds * correction.lightIntensityPercent == 0.0f)
        Depart(correction.offset, who + "exposure times intensity is zero");
}

void TWalker::ReadCorrection(std::uint64_t left)
{
    TStoredCorrection correction;
    const THeader start = ReadHeader("the start of a correction");
    correction.offset = start.offset;
    CheckHeader(start, format::kCorrectionStart, "the start of a correction", false);

    unsigned char key[format::kKeyLength];
    CheckHeader(ReadHeader("a key"), format::kKey, "a key", true);
    Read(key, sizeof key, "a key");
    correction.key = FieldText(key, sizeof key);
    correction.width = ReadNumber(format::kWidth, "a width");
    correction.height = ReadNumber(format::kHeight, "a height");
    correction.exposureSeconds = ReadFloat(format::kExposure, "an exposure");
    correction.lightIntensityPercent = ReadFloat(format::kIntensity, "an intensity");

    const std::uint32_t startLength = format::CorrectionStartLength(correction.width, correction.height);
    if (start.record.dataLength != startLength)
        Depart(start.offset + 8, "the start of correction '" + correction.key + "': Entry Data Length is " +
                                     Number(start.record.dataLength) + " instead of " + Number(startLength));
    SkipPixels(correction, ReadHeader("the pixels"), left == 1);
    CheckMeaning(correction);
    walk.corrections.push_back(correction);
}

void TWalker::ReadCorrections()
{
    const std::uint64_t offset = position;
    const std::uint32_t count = ReadNumber(format::kCorrectionCount, "the number of corrections");
    walk.announced = count;
    if (count > 0x7FFFFFFFu) // read as a negative number, which loads as an empty list
        Depart(offset + format::kRecordHeaderLength, "the number of corrections is negative");
    const std::uint64_t room = (walk.fileBytes - position) / kSmallestCorrection;
    if (count > room)
        Depart(offset + format::kRecordHeaderLength,
               "the file has no room for the " + Number(count) + " corrections it announces");
    for (std::uint64_t left = count; left > 0; --left) {
        if (position == walk.fileBytes) {
            Depart(position, "the file ends after " + Number(count - left) + " of " + Number(count) + " corrections");
            throw TWalkEnds();
        }
        ReadCorrection(left);
    }
    if (position < walk.fileBytes)
        Depart(position, Counted(walk.fileBytes - position, "byte") +
                             (walk.fileBytes - position == 1 ? " follows" : " follow") + " the last correction");
}

TCalibrationWalk TWalker::Run()
{
    try {
        unsigned char signature[format::kSignatureLength];
        Read(signature, sizeof signature, "the signature");
        if (std::memcmp(signature, format::kSignature, sizeof signature) != 0) {
            Depart(0, "the signature is not that of a calibration file");
            return walk;
        }
        walk.structureVersion = Read32("the structure version");
        if (walk.structureVersion != format::kUngroupedVersion && walk.structureVersion != format::kGroupedVersion) {
            Depart(sizeof signature, "structure version " + Number(walk.structureVersion) + " is not known");
            return walk;
        }
        if (walk.structureVersion == format::kGroupedVersion)
            ReadGroupingNames();
        ReadCorrections();
    } catch (const TWalkEnds&) {
        // reported where it was noticed
    }
    return walk;
}

} // namespace

std::string TCalibrationWalk::Complaint() const
{
    if (departures.empty())
        return {};
    return "at byte " + std::to_string(departures.front().offset) + ": " + departures.front().what;
}

TCalibrationWalk WalkCalibrationFile(const std::string& path)
{
    return TWalker(path).Run();
}

void RefuseForeignFile(const std::string& path, const TCalibrationWalk& walk)
{
    if (walk.structureVersion != 0)
        return;
    const std::string kind = FileKind(path);
    if (!kind.empty() && kind != "a calibration file")
        throw TToolError(
            path, "is " + kind + ", not a calibration file" +
                      (kind.find("image") != std::string::npos ? "; a calibration file stands before the images" : ""));
    if (kind.empty())
        throw TToolError(path, "is not a calibration file (" + walk.Complaint() + ")");
}

TCalibrationWalk RequireWhole(const std::string& path)
{
    TCalibrationWalk walk = WalkCalibrationFile(path);
    RefuseForeignFile(path, walk);
    if (!walk.Whole())
        throw TToolError(path, "does not load whole (" + walk.Complaint() +
                                   "); 'qxbackground import --salvage' takes out of it what is whole");
    return walk;
}

} // namespace workbench
