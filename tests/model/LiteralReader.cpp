#include "model/LiteralReader.h"

#include "model/LiteralProcessor.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace Literal {

namespace {

const char kShortData[] = "Couldn't read Data from calibration file.";

std::uint32_t NumberOf(const TBytes& data)
{
    return data[0] + 256u * data[1] + 65536u * data[2] + 16777216u * data[3];
}

std::string TextOf(const TBytes& bytes)
{
    return std::string(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0));
}

} // namespace

std::uint32_t Bits(float value)
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

unsigned int TReader::Open(std::uint32_t& version)
{
    if (!opened.bytes.has_value()) {
        return processor.Fail(769, "Could not open file - '" + opened.path + "'");
    }
    TBytes text(26);
    std::uint32_t found = 0;
    if (!Read(text)) {
        processor.fileMessage = kShortData;
        return kMinusOne;
    }
    if (std::string(text.begin(), text.end()) != "Background Correction File") {
        return processor.Fail(769, "Could not load file - '" + opened.path + "'\nHeader not correct.");
    }
    if (!Read(found)) {
        processor.fileMessage = kShortData;
        return kMinusOne;
    }
    if (found != version) {
        version = found;
        return processor.Fail(772, "Could not load file - '" + opened.path + "'\nStructure version not correct [ " +
                                       std::to_string(static_cast<std::int32_t>(found)) + " ].");
    }
    return 0;
}

unsigned int TReader::GroupingNames(TTexts& names)
{
    constexpr std::uint32_t kMostNames = 65536;
    std::uint32_t count = 0;
    unsigned int result = Number(69, 2, count);
    if (result == 0 && count > kMostNames) {
        processor.fileMessage = kShortData;
        result = kMinusOne;
    }
    for (std::uint32_t i = 0; i < count && result == 0; ++i) {
        TBytes data(16);
        result = Record(70, 2, data);
        if (result == 0) {
            names.push_back(TextOf(data));
        }
    }
    if (result != 0) {
        names.clear();
    }
    return result;
}

unsigned int TReader::Corrections()
{
    std::uint32_t count = 0;
    if (Number(61, 1, count) != 0) {
        return kMinusOne;
    }
    processor.entries.clear();
    processor.SetActiveCorrection(std::nullopt); // no activation may point to what is gone
    unsigned int result = 0;
    for (std::int64_t i = 0; i < static_cast<std::int32_t>(count); ++i) {
        if (i == opened.mostAttempts) {
            throw TUndecided();
        }
        const bool atEnd = position >= opened.bytes->size();
        bool endsLoad = false;
        result = Correction(endsLoad);
        if (endsLoad) {
            return result;
        }
        if (result != 0) {
            processor.Fail(result, "Error loading file - '" + processor.fileMessage + "'");
            if (atEnd) {
                break; // nothing was read and nothing moved: every further attempt is this one again
            }
        }
    }
    return result;
}

unsigned int TReader::Correction(bool& endsLoad)
{
    const unsigned int start = Header(62, 1, std::nullopt);
    if (start != 0) {
        return start;
    }
    TEntry entry;
    TBytes key(512);
    std::uint32_t exposureBits = 0;
    std::uint32_t intensityBits = 0;
    if (Record(63, 1, key) != 0 || Number(64, 1, entry.width) != 0 || Number(65, 1, entry.height) != 0 ||
        Number(66, 1, exposureBits) != 0 || Number(67, 1, intensityBits) != 0) {
        return kMinusOne;
    }
    entry.key = TextOf(key);
    entry.exposure = FromBits(exposureBits);
    entry.intensity = FromBits(intensityBits);
    const std::uint64_t pixelCount = std::uint64_t{entry.width} * entry.height;
    if (!processor.headerOnly && pixelCount > kMostPixels) {
        endsLoad = true;
        return processor.Fail(1024, "Memory allocation error during reading.");
    }
    const std::uint32_t length = 2 * entry.width * entry.height;
    if (Header(68, 1, length) == kMinusOne) {
        return kMinusOne;
    }
    if (processor.headerOnly) {
        if (length > 0 && !Seek(position + length)) {
            processor.fileMessage = "Unexpected end of calibration file.";
            return kMinusOne;
        }
    } else {
        const std::uint64_t left = opened.bytes->size() - std::min<std::uint64_t>(position, opened.bytes->size());
        TBytes data(std::min<std::uint64_t>(length, left + 1)); // one more than there is falls short as well
        if (Data(data) != 0) {
            return kMinusOne;
        }
        for (std::size_t i = 0; i < data.size(); i += 2) {
            entry.pixels.push_back(static_cast<std::uint16_t>(data[i] + 256 * data[i + 1]));
        }
    }
    endsLoad = true;
    if (entry.key.empty()) {
        return Refuse("The key is not valid - ''.");
    }
    if (entry.exposure * entry.intensity == 0.0f) {
        return Refuse(ZeroProduct(entry.exposure, entry.intensity));
    }
    if (processor.Find(entry.key) != nullptr) {
        return Refuse("Supplied Key is not unique - '" + entry.key + "'");
    }
    processor.entries.push_back(std::make_shared<TEntry>(entry));
    endsLoad = false;
    return 0;
}

unsigned int TReader::Refuse(const std::string& why)
{
    return processor.Fail(1024, "Couldn't create new background entry - '" + why.substr(0, 512) + "'");
}

unsigned int TReader::Header(std::uint32_t id, std::uint32_t version, std::optional<std::uint32_t> length)
{
    std::uint32_t foundId = 0;
    std::uint32_t foundVersion = 0;
    std::uint32_t foundLength = 0;
    if (!Read(foundId)) {
        processor.fileMessage = "Couldn't read Entry ID from calibration file.";
        return kMinusOne;
    }
    if (!Read(foundVersion)) {
        processor.fileMessage = "Couldn't read Entry Version from calibration file.";
        return kMinusOne;
    }
    if (!Read(foundLength)) {
        processor.fileMessage = "Couldn't read Entry Data Length from calibration file.";
        return kMinusOne;
    }
    if (foundId != id || foundVersion != version || (length.has_value() && foundLength != *length)) {
        Seek(foundLength); // counted from the start of the file
        processor.fileMessage = "Calibration file contains invalid data.";
        return kMinusTwo;
    }
    return 0;
}

unsigned int TReader::Record(std::uint32_t id, std::uint32_t version, TBytes& data)
{
    return Header(id, version, static_cast<std::uint32_t>(data.size())) == kMinusOne ? kMinusOne : Data(data);
}

unsigned int TReader::Number(std::uint32_t id, std::uint32_t version, std::uint32_t& number)
{
    TBytes data(4);
    const unsigned int result = Record(id, version, data);
    if (result == 0) {
        number = NumberOf(data);
    }
    return result;
}

unsigned int TReader::Data(TBytes& data)
{
    if (!Read(data)) {
        processor.fileMessage = kShortData;
        return kMinusOne;
    }
    return 0;
}

bool TReader::Read(TBytes& data)
{
    if (data.empty()) {
        return true;
    }
    ++reads;
    const TReadFaults& faults = opened.faults;
    const bool fails = reads == faults.failedRead || (faults.everyLaterReadToo && reads > faults.failedRead);
    const std::uint64_t wanted = fails ? std::min<std::uint64_t>(data.size() - 1, faults.movedBytes) : data.size();
    std::uint64_t taken = 0;
    while (taken < wanted && position < opened.bytes->size()) {
        data[taken++] = (*opened.bytes)[position++];
    }
    return taken == data.size();
}

bool TReader::Read(std::uint32_t& number)
{
    TBytes data(4);
    const bool whole = Read(data);
    if (whole) {
        number = NumberOf(data);
    }
    return whole;
}

bool TReader::Seek(std::uint64_t offset)
{
    ++seeks;
    if (seeks == opened.faults.failedSeek || (opened.faults.everyLaterSeekToo && seeks > opened.faults.failedSeek)) {
        return false;
    }
    position = offset;
    return true;
}

} // namespace Literal
