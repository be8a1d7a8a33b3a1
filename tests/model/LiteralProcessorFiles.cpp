// The literal processor's calibration files.
#include "model/LiteralProcessor.h"

#include <algorithm>
#include <cstring>

namespace Literal {

using FileBytes::TBytes;

namespace {

const char kText[] = "Background Correction File";
const char kShortData[] = "Couldn't read Data from calibration file.";

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

void Put(TBytes& bytes, std::uint32_t value)
{
    for (int shift = 0; shift < 32; shift += 8) {
        bytes.push_back(static_cast<unsigned char>(value >> shift));
    }
}

void PutRecord(TBytes& bytes, std::uint32_t id, std::uint32_t version, std::uint32_t length)
{
    Put(bytes, id);
    Put(bytes, version);
    Put(bytes, length);
}

void PutNumber(TBytes& bytes, std::uint32_t id, std::uint32_t version, std::uint32_t value)
{
    PutRecord(bytes, id, version, 4);
    Put(bytes, value);
}

void PutText(TBytes& bytes, const std::string& text, std::size_t length)
{
    for (std::size_t i = 0; i < length; ++i) {
        bytes.push_back(i < text.size() ? static_cast<unsigned char>(text[i]) : 0);
    }
}

std::string TextOf(const TBytes& bytes)
{
    return std::string(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0));
}

} // namespace

// Positions may lie beyond the end; a short read leaves the position where the bytes ended.
struct TProcessor::TStream {
    TBytes bytes;
    std::size_t position = 0;

    bool Read(std::size_t length, TBytes& data)
    {
        data.clear();
        while (data.size() < length && position < bytes.size()) {
            data.push_back(bytes[position++]);
        }
        return data.size() == length;
    }

    bool Read(std::uint32_t& number)
    {
        TBytes data;
        if (!Read(4, data)) {
            return false;
        }
        number = data[0] | std::uint32_t{data[1]} << 8 | std::uint32_t{data[2]} << 16 | std::uint32_t{data[3]} << 24;
        return true;
    }
};

unsigned int TProcessor::SaveGroupedFile(TLiteralDisk& disk, const std::string& path,
                                         const std::vector<std::string>& names)
{
    if (headerOnly) {
        return Fail(770, "This file has been opened in header only mode. Cannot modify or apply corrections.");
    }
    TBytes bytes;
    PutText(bytes, kText, 26);
    Put(bytes, 2);
    PutNumber(bytes, 69, 2, static_cast<std::uint32_t>(names.size()));
    for (const std::string& name : names) {
        PutRecord(bytes, 70, 2, 16);
        PutText(bytes, name, 16);
    }
    PutNumber(bytes, 61, 1, static_cast<std::uint32_t>(entries.size()));
    unsigned int result = 0;
    for (const auto& entry : entries) {
        PutRecord(bytes, 62, 1, 576 + 2 * entry->width * entry->height);
        PutRecord(bytes, 63, 1, 512);
        PutText(bytes, entry->key, 512);
        PutNumber(bytes, 64, 1, entry->width);
        PutNumber(bytes, 65, 1, entry->height);
        PutNumber(bytes, 66, 1, Bits(entry->exposure));
        PutNumber(bytes, 67, 1, Bits(entry->intensity));
        PutRecord(bytes, 68, 1, 2 * entry->width * entry->height);
        if (!entry->pixels.has_value()) { // came out of a header-only store: there is nothing to write
            fileMessage = kShortData;
            result = kMinusOne;
            break;
        }
        for (const std::uint16_t pixel : *entry->pixels) {
            bytes.push_back(static_cast<unsigned char>(pixel & 0xFF));
            bytes.push_back(static_cast<unsigned char>(pixel >> 8));
        }
    }
    if (!disk.Write(path, bytes)) {
        return Fail(769, "Could not create file - '" + path + "'");
    }
    return result;
}

unsigned int TProcessor::OpenForReading(const TLiteralDisk& disk, const std::string& path, std::uint32_t& version,
                                        TStream& stream)
{
    const auto bytes = disk.Read(path);
    if (!bytes.has_value()) {
        return Fail(769, "Could not open file - '" + path + "'");
    }
    stream.bytes = *bytes;
    TBytes text;
    if (!stream.Read(26, text)) {
        fileMessage = kShortData;
        return kMinusOne;
    }
    if (std::string(text.begin(), text.end()) != kText) {
        return Fail(769, "Could not load file - '" + path + "'\nHeader not correct.");
    }
    std::uint32_t found = 0;
    if (!stream.Read(found)) {
        fileMessage = kShortData;
        return kMinusOne;
    }
    if (found != version) {
        version = found;
        return Fail(772, "Could not load file - '" + path + "'\nStructure version not correct [ " +
                             std::to_string(static_cast<std::int32_t>(found)) + " ].");
    }
    return 0;
}

unsigned int TProcessor::LoadGroupedFile(const TLiteralDisk& disk, const std::string& path,
                                         std::vector<std::string>& names, std::uint32_t& version, bool enterHeaderOnly)
{
    version = 2;
    names.clear();
    headerOnly = enterHeaderOnly;
    TStream stream;
    const unsigned int opened = OpenForReading(disk, path, version, stream);
    if (opened == 772 && version == 1) {
        return ReadCorrections(stream);
    }
    if (opened != 0) {
        return opened;
    }
    std::uint32_t count = 0;
    unsigned int result = ReadNumber(stream, 69, 2, count);
    for (std::uint32_t i = 0; i < count && result != kMinusOne; ++i) {
        TBytes data(16);
        result = ReadRecord(stream, 70, 2, data);
        if (result != kMinusOne) {
            names.push_back(TextOf(data));
        }
    }
    if (result == kMinusOne) {
        names.clear();
        return result;
    }
    return ReadCorrections(stream);
}

unsigned int TProcessor::ReadHeader(TStream& stream, std::uint32_t id, std::uint32_t version,
                                    std::optional<std::uint32_t> length)
{
    std::uint32_t foundId = 0;
    std::uint32_t foundVersion = 0;
    std::uint32_t foundLength = 0;
    if (!stream.Read(foundId)) {
        fileMessage = "Couldn't read Entry ID from calibration file.";
        return kMinusOne;
    }
    if (!stream.Read(foundVersion)) {
        fileMessage = "Couldn't read Entry Version from calibration file.";
        return kMinusOne;
    }
    if (!stream.Read(foundLength)) {
        fileMessage = "Couldn't read Entry Data Length from calibration file.";
        return kMinusOne;
    }
    if (foundId != id || foundVersion != version || (length.has_value() && foundLength != *length)) {
        stream.position = foundLength; // counted from the start of the file
        fileMessage = "Calibration file contains invalid data.";
        return kMinusTwo;
    }
    return 0;
}

// A record with data: -2 counts as success. `data` has the length that is wanted.
unsigned int TProcessor::ReadRecord(TStream& stream, std::uint32_t id, std::uint32_t version, TBytes& data)
{
    if (ReadHeader(stream, id, version, static_cast<std::uint32_t>(data.size())) == kMinusOne) {
        return kMinusOne;
    }
    if (!stream.Read(data.size(), data)) {
        fileMessage = kShortData;
        return kMinusOne;
    }
    return 0;
}

unsigned int TProcessor::ReadNumber(TStream& stream, std::uint32_t id, std::uint32_t version, std::uint32_t& number)
{
    TBytes data(4);
    const unsigned int result = ReadRecord(stream, id, version, data);
    if (result == 0) {
        number = data[0] | std::uint32_t{data[1]} << 8 | std::uint32_t{data[2]} << 16 | std::uint32_t{data[3]} << 24;
    }
    return result;
}

unsigned int TProcessor::ReadCorrections(TStream& stream)
{
    std::uint32_t count = 0;
    if (ReadNumber(stream, 61, 1, count) == kMinusOne) {
        return kMinusOne;
    }
    entries.clear();
    SetActiveCorrection(std::nullopt); // no activation may point to what is gone
    unsigned int result = 0;
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(count); ++i) {
        TEntry entry;
        result = ReadCorrection(stream, entry);
        if (result != 0) {
            message = Cut("Error loading file - '" + fileMessage + "'");
            continue;
        }
        const auto refuse = [this](const std::string& why) {
            return Fail(1024, "Couldn't create new background entry - '" + why.substr(0, 512) + "'");
        };
        if (entry.key.empty()) {
            return refuse("The key is not valid - ''.");
        }
        if (Find(entry.key) != nullptr) {
            return refuse("Supplied Key is not unique - '" + entry.key + "'");
        }
        entries.push_back(std::make_shared<TEntry>(entry));
    }
    return result;
}

unsigned int TProcessor::ReadCorrection(TStream& stream, TEntry& entry)
{
    const unsigned int start = ReadHeader(stream, 62, 1, std::nullopt);
    if (start != 0) {
        return start;
    }
    TBytes key(512);
    std::uint32_t exposureBits = 0;
    std::uint32_t intensityBits = 0;
    if (ReadRecord(stream, 63, 1, key) != 0 || ReadNumber(stream, 64, 1, entry.width) != 0 ||
        ReadNumber(stream, 65, 1, entry.height) != 0 || ReadNumber(stream, 66, 1, exposureBits) != 0 ||
        ReadNumber(stream, 67, 1, intensityBits) != 0) {
        return kMinusOne;
    }
    entry.key = TextOf(key);
    entry.exposure = FromBits(exposureBits);
    entry.intensity = FromBits(intensityBits);
    const std::uint32_t length = 2 * entry.width * entry.height;
    if (ReadHeader(stream, 68, 1, length) == kMinusOne) {
        return kMinusOne;
    }
    if (headerOnly) {
        stream.position += length;
        return 0;
    }
    TBytes data;
    if (!stream.Read(length, data)) {
        fileMessage = kShortData;
        return kMinusOne;
    }
    entry.pixels.emplace();
    for (std::size_t i = 0; i + 1 < data.size(); i += 2) {
        entry.pixels->push_back(static_cast<std::uint16_t>(data[i] | data[i + 1] << 8));
    }
    return 0;
}

} // namespace Literal
