#include "file/TCalibrationFileReader.h"

#include "boundary/Messages.h"
#include "boundary/TZRException.h"
#include "data/PixelMemory.h"
#include "file/ByteOrder.h"

#include <cstring>
#include <memory>
#include <utility>

using namespace CalibrationFile;
namespace Format = CalibrationFormat;

namespace {

// Attempts after failures of the device that are made as if each could succeed.
constexpr unsigned int kMostReadErrors = 1000;

// Detects cycles of failed attempts, by Brent's method.
//
// An attempt that fails changes nothing but the position in the file, and what it does depends on nothing else. So once
// a run of failed attempts comes back to a position, it repeats itself forever, and whole rounds may be left out. The
// position compared with moves on to the newest each time the run has doubled: that finds every cycle without storing
// all the positions.
class TCycleDetector {
public:
    void Restart() noexcept { steps = 0; }

    // Takes the position at which the next attempt starts; gives the length of the cycle in attempts, or 0.
    std::uint64_t LengthAt(std::uint64_t position) noexcept
    {
        if (steps > 0 && position == markedPosition) {
            return steps - markedStep;
        }
        if (steps == 0 || steps - markedStep == span) {
            span = steps == 0 ? 1 : span * 2;
            markedPosition = position;
            markedStep = steps;
        }
        ++steps;
        return 0;
    }

private:
    std::uint64_t steps = 0;
    std::uint64_t span = 1;
    std::uint64_t markedPosition = 0;
    std::uint64_t markedStep = 0;
};

} // namespace

unsigned int TCalibrationFileReader::Open(const char* path, std::uint32_t& structureVersion)
{
    const char* const pathText = path != nullptr ? path : "(null)";
    if (!stream.OpenForReading(path)) {
        messages.main.Format(Messages::kCouldNotOpenFile, pathText);
        return kFileNotAccessible;
    }
    char signature[Format::kSignatureLength + 1] = {};
    if (ReadBytes(signature, Format::kSignatureLength) != kSuccess) {
        return kShortReadOrWrite;
    }
    if (std::memcmp(signature, Format::kSignature, sizeof signature) != 0) {
        messages.main.Format(Messages::kHeaderNotCorrect, pathText);
        stream.Close();
        return kFileNotAccessible;
    }
    unsigned char version[4];
    if (ReadBytes(version, sizeof version) != kSuccess) {
        return kShortReadOrWrite;
    }
    const std::uint32_t fileVersion = Format::Load32(version);
    if (fileVersion != structureVersion) {
        messages.main.Format(Messages::kStructureVersionWrong, pathText, static_cast<int>(fileVersion));
        structureVersion = fileVersion;
        return kStructureVersionWrong;
    }
    return kSuccess;
}

unsigned int TCalibrationFileReader::ReadGroupingNames(std::vector<std::string>& names)
{
    std::uint32_t count = 0;
    if (ReadNumber(Format::kGroupingCount, count) != kSuccess) {
        return kShortReadOrWrite;
    }
    if (count > Format::kMaximumGroupingCount) {
        messages.file.Format(Messages::kCouldNotReadData);
        return kShortReadOrWrite;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        char name[Format::kGroupingNameLength + 1] = {};
        if (ReadRecord(Format::kGroupingName, name) != kSuccess) {
            return kShortReadOrWrite;
        }
        names.emplace_back(name);
    }
    return kSuccess;
}

unsigned int TCalibrationFileReader::ReadCorrectionRecords(TCorrectionList& corrections, bool headerOnly)
{
    std::uint32_t storedCount = 0;
    if (ReadNumber(Format::kCorrectionCount, storedCount) != kSuccess) {
        return kShortReadOrWrite;
    }
    corrections.ClearEntries();
    listCleared = true;

    unsigned int result = kSuccess;
    std::uint64_t remaining = storedCount <= 0x7FFFFFFF ? storedCount : 0; // the count is signed
    TCycleDetector cycle;
    unsigned int readErrors = 0;
    while (remaining > 0) {
        const std::uint64_t cycleLength = cycle.LengthAt(stream.Position());
        if (cycleLength > 0) {
            remaining %= cycleLength;
            cycle.Restart();
            continue;
        }
        const TOutcome outcome = ReadCorrection(corrections, headerOnly, result);
        if (outcome == TOutcome::kLoadEnds) {
            return result;
        }
        if (outcome == TOutcome::kSkipped) {
            messages.main.Format(Messages::kErrorLoading, messages.file.Text());
        }
        // A read that failed before the end of the file may succeed the next time, so that such an attempt need not
        // repeat itself; but it is not made without end either.
        const bool mayPass = result == kShortReadOrWrite && stream.Remaining() > 0 && ++readErrors < kMostReadErrors;
        if (outcome == TOutcome::kRead || mayPass) {
            cycle.Restart();
        }
        --remaining;
    }
    return result;
}

// `result` becomes the code that goes with the outcome.
TCalibrationFileReader::TOutcome TCalibrationFileReader::ReadCorrection(TCorrectionList& corrections, bool headerOnly,
                                                                        unsigned int& result)
{
    char key[Format::kKeyLength + 1] = {};
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    float exposure = 0.0f;
    float intensity = 0.0f;

    result = ReadRecordHeader(Format::kCorrectionStart, false);
    if (result == kSuccess) {
        result = ReadRecord(Format::kKey, key);
    }
    if (result == kSuccess) {
        result = ReadNumber(Format::kWidth, width);
    }
    if (result == kSuccess) {
        result = ReadNumber(Format::kHeight, height);
    }
    if (result == kSuccess) {
        result = ReadFloat(Format::kExposure, exposure);
    }
    if (result == kSuccess) {
        result = ReadFloat(Format::kIntensity, intensity);
    }
    if (result != kSuccess) {
        return TOutcome::kSkipped;
    }
    std::uint16_t* pixels = nullptr;
    const TOutcome outcome = headerOnly ? SkipPixels(width, height, result) : ReadPixels(width, height, result, pixels);
    if (outcome != TOutcome::kRead) {
        return outcome;
    }
    try {
        TBackgroundCorrectionEntry entry;
        entry.BuildFromPixels(key, pixels, width, height, exposure, intensity);
        corrections.AddEntry(std::move(entry));
    } catch (const TZRException& error) {
        messages.main.Format(Messages::kCouldNotCreateEntry, error.what());
        result = kOperationFailed;
        return TOutcome::kLoadEnds;
    }
    return TOutcome::kRead;
}

// Reads the background record. When it was read, `pixels` (from new[]) belongs to the caller.
TCalibrationFileReader::TOutcome TCalibrationFileReader::ReadPixels(std::uint32_t width, std::uint32_t height,
                                                                    unsigned int& result, std::uint16_t*& pixels)
{
    const Format::TRecord record = {Format::kBackground.identifier, Format::kBackground.version,
                                    Format::BackgroundLength(width, height)};
    const std::size_t count = TBackgroundCorrectionEntry::PixelCount(width, height);
    std::unique_ptr<std::uint16_t[]> buffer;
    if (TBackgroundCorrectionEntry::IsSizeValid(width, height)) {
        result = ReadRecordHeader(record, true);
        if (result == kShortReadOrWrite) {
            return TOutcome::kSkipped;
        }
        // No memory is allocated for pixels that the file does not hold: reading them would fail anyway.
        if (stream.Remaining() < std::uint64_t{count} * sizeof buffer[0]) {
            stream.SeekTo(stream.Position() + stream.Remaining());
            messages.file.Format(Messages::kCouldNotReadData);
            result = kShortReadOrWrite;
            return TOutcome::kSkipped;
        }
        buffer.reset(AllocatePixels(count));
    }
    if (buffer == nullptr) {
        messages.main.Format(Messages::kReadMemory);
        result = kOperationFailed;
        return TOutcome::kLoadEnds;
    }
    result = ReadBytes(buffer.get(), count * sizeof buffer[0]);
    if (result != kSuccess) {
        return TOutcome::kSkipped;
    }
    if (!ByteOrder::IsLittleEndian()) {
        ByteOrder::Swap(buffer.get(), count);
    }
    pixels = buffer.release();
    return TOutcome::kRead;
}

// Passes over the background record. Beyond the end of the file is no failure.
TCalibrationFileReader::TOutcome TCalibrationFileReader::SkipPixels(std::uint32_t width, std::uint32_t height,
                                                                    unsigned int& result)
{
    const std::uint32_t length = Format::BackgroundLength(width, height);
    const Format::TRecord record = {Format::kBackground.identifier, Format::kBackground.version, length};
    result = kShortReadOrWrite;
    if (ReadRecordHeader(record, true) == kShortReadOrWrite) {
        return TOutcome::kSkipped;
    }
    if (!stream.SeekTo(stream.Position() + length)) {
        messages.file.Format(Messages::kUnexpectedEndOfFile);
        return TOutcome::kSkipped;
    }
    result = kSuccess;
    return TOutcome::kRead;
}

// -1 for a short read; -2 for another record than expected, after moving to the offset that its length names, counted
// from the start of the file. Odd, but every reader of such files has done so, and damaged files are read accordingly.
unsigned int TCalibrationFileReader::ReadRecordHeader(const Format::TRecord& record, bool lengthIsFixed)
{
    const char* const texts[3] = {Messages::kCouldNotReadEntryId, Messages::kCouldNotReadEntryVersion,
                                  Messages::kCouldNotReadEntryDataLength};
    std::uint32_t values[3] = {};
    for (int i = 0; i < 3; ++i) {
        unsigned char bytes[4];
        if (!stream.Read(bytes, sizeof bytes)) {
            messages.file.Format(texts[i]);
            return kShortReadOrWrite;
        }
        values[i] = Format::Load32(bytes);
    }
    if (values[0] != record.identifier || values[1] != record.version ||
        (lengthIsFixed && values[2] != record.dataLength)) {
        stream.SeekTo(values[2]);
        messages.file.Format(Messages::kInvalidData);
        return kUnexpectedRecord;
    }
    return kSuccess;
}

// Another record than expected counts as success here: its data is read from wherever the stream then stands.
unsigned int TCalibrationFileReader::ReadRecord(const Format::TRecord& record, void* data)
{
    if (ReadRecordHeader(record, true) == kShortReadOrWrite) {
        return kShortReadOrWrite;
    }
    return ReadBytes(data, record.dataLength);
}

unsigned int TCalibrationFileReader::ReadNumber(const Format::TRecord& record, std::uint32_t& value)
{
    unsigned char data[4];
    const unsigned int result = ReadRecord(record, data);
    if (result == kSuccess) {
        value = Format::Load32(data);
    }
    return result;
}

unsigned int TCalibrationFileReader::ReadFloat(const Format::TRecord& record, float& value)
{
    std::uint32_t bits = 0;
    const unsigned int result = ReadNumber(record, bits);
    std::memcpy(&value, &bits, sizeof value);
    return result;
}

unsigned int TCalibrationFileReader::ReadBytes(void* bytes, std::size_t length)
{
    if (!stream.Read(bytes, length)) {
        messages.file.Format(Messages::kCouldNotReadData);
        return kShortReadOrWrite;
    }
    return kSuccess;
}
