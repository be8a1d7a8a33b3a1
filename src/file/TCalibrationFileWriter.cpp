#include "file/TCalibrationFileWriter.h"

#include "boundary/Messages.h"
#include "file/ByteOrder.h"

#include <algorithm>
#include <cstring>

using namespace CalibrationFile;
namespace Format = CalibrationFormat;

unsigned int TCalibrationFileWriter::Open(const char* path, std::uint32_t structureVersion)
{
    if (!stream.OpenForWriting(path)) {
        messages.main.Format(Messages::kCouldNotCreateFile, path != nullptr ? path : "(null)");
        return kFileNotAccessible;
    }
    unsigned char version[4];
    Format::Store32(version, structureVersion);
    if (!Item(stream.Write(Format::kSignature, Format::kSignatureLength) && stream.Write(version, sizeof version),
              Messages::kCouldNotWriteHeader)) {
        stream.Close();
        return kShortReadOrWrite;
    }
    return kSuccess;
}

unsigned int TCalibrationFileWriter::WriteGroupingNames(const std::vector<std::string>& names)
{
    if (!WriteNumber(Format::kGroupingCount, static_cast<std::uint32_t>(names.size()))) {
        return kShortReadOrWrite;
    }
    for (const std::string& name : names) {
        char data[Format::kGroupingNameLength] = {};
        std::memcpy(data, name.c_str(), std::min(name.size(), sizeof data));
        if (!WriteRecord(Format::kGroupingName, data)) {
            return kShortReadOrWrite;
        }
    }
    return kSuccess;
}

unsigned int TCalibrationFileWriter::WriteCorrectionRecords(const TCorrectionList& corrections)
{
    return WriteCorrections(corrections, static_cast<std::uint32_t>(corrections.Count()),
                            [](std::uint32_t index) { return std::size_t{index}; });
}

unsigned int TCalibrationFileWriter::WriteCorrectionRecords(const TCorrectionList& corrections,
                                                            const std::vector<std::size_t>& positions)
{
    return WriteCorrections(corrections, static_cast<std::uint32_t>(positions.size()),
                            [&positions](std::uint32_t index) { return positions[index]; });
}

template <typename TPositionOf>
unsigned int TCalibrationFileWriter::WriteCorrections(const TCorrectionList& corrections, std::uint32_t count,
                                                      TPositionOf positionOf)
{
    if (!WriteNumber(Format::kCorrectionCount, count)) {
        return kShortReadOrWrite;
    }
    for (std::uint32_t index = 0; index < count; ++index) {
        const std::size_t position = positionOf(index);
        if (position >= corrections.Count()) {
            messages.main.Format(Messages::kListEndedWhileSaving);
            return kListEndedWhileSaving;
        }
        // Hosts know the exception of a save that has no memory to copy an entry. The lock is held, so that writing the
        // entry itself gives the same file; all that is needed of the copy is the check that there is memory for it.
        const TBackgroundCorrectionEntry& entry = corrections.EntryAt(position);
        entry.RequireMemoryForCopy();
        if (!WriteEntry(entry)) {
            return kShortReadOrWrite;
        }
    }
    return kSuccess;
}

unsigned int TCalibrationFileWriter::Close()
{
    return Item(stream.Close(), Messages::kCouldNotWriteHeader) ? kSuccess : kShortReadOrWrite;
}

bool TCalibrationFileWriter::WriteEntry(const TBackgroundCorrectionEntry& entry)
{
    char key[Format::kKeyLength] = {}; // zeros behind the text
    std::memcpy(key, entry.Key(), std::min(std::strlen(entry.Key()), sizeof key));
    return WriteRecordHeader(Format::kCorrectionStart, Format::CorrectionStartLength(entry.Width(), entry.Height())) &&
           WriteRecord(Format::kKey, key) && WriteNumber(Format::kWidth, entry.Width()) &&
           WriteNumber(Format::kHeight, entry.Height()) &&
           WriteFloat(Format::kExposure, entry.ReferenceExposureSeconds()) &&
           WriteFloat(Format::kIntensity, entry.ReferenceIntensityPercent()) && WriteBackground(entry);
}

bool TCalibrationFileWriter::WriteBackground(const TBackgroundCorrectionEntry& entry)
{
    const std::uint32_t length = Format::BackgroundLength(entry.Width(), entry.Height());
    if (!WriteRecordHeader(Format::kBackground, length)) {
        return false;
    }
    if (entry.Width() == 0 ||
        entry.Height() == 0) { // not `length == 0`: a length that does not fit 32 bits may wrap to 0
        return true;
    }
    if (!entry.HasPixels()) {
        return Item(false, Messages::kCouldNotReadData);
    }
    if (!ByteOrder::IsLittleEndian()) {
        TBackgroundCorrectionEntry copy(entry);
        ByteOrder::Swap(copy.MutablePixels(), copy.PixelCount());
        return Item(stream.Write(copy.Pixels(), length), Messages::kCouldNotReadData);
    }
    return Item(stream.Write(entry.Pixels(), length), Messages::kCouldNotReadData);
}

bool TCalibrationFileWriter::WriteRecordHeader(const Format::TRecord& record, std::uint32_t dataLength)
{
    unsigned char identifier[4];
    unsigned char version[4];
    unsigned char length[4];
    Format::Store32(identifier, record.identifier);
    Format::Store32(version, record.version);
    Format::Store32(length, dataLength);
    return Item(stream.Write(identifier, sizeof identifier), Messages::kCouldNotWriteEntryId) &&
           Item(stream.Write(version, sizeof version), Messages::kCouldNotWriteEntryVersion) &&
           Item(stream.Write(length, sizeof length), Messages::kCouldNotWriteEntryDataLength);
}

bool TCalibrationFileWriter::WriteRecord(const Format::TRecord& record, const void* data)
{
    return WriteRecordHeader(record, record.dataLength) &&
           Item(stream.Write(data, record.dataLength), Messages::kCouldNotReadData);
}

bool TCalibrationFileWriter::WriteNumber(const Format::TRecord& record, std::uint32_t value)
{
    unsigned char data[4];
    Format::Store32(data, value);
    return WriteRecord(record, data);
}

bool TCalibrationFileWriter::WriteFloat(const Format::TRecord& record, float value)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return WriteNumber(record, bits);
}

// The first failure of an item leaves its text and ends the file.
bool TCalibrationFileWriter::Item(bool written, const char* text)
{
    if (!written) {
        messages.file.Format(text);
    }
    return written;
}
