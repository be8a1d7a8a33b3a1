// Writes a calibration file.
#ifndef FILE_TCALIBRATIONFILEWRITER_H
#define FILE_TCALIBRATIONFILEWRITER_H

#include "data/TCorrectionList.h"
#include "file/CalibrationFile.h"
#include "file/CalibrationFormat.h"
#include "platform/FileStream.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// One file from opening to closing: Open, WriteGroupingNames (structure version 2 only), WriteCorrectionRecords, Close.
// Each returns a result code and leaves its text; after a failure the file is left as far as it was written.
class TCalibrationFileWriter {
public:
    explicit TCalibrationFileWriter(const CalibrationFile::TMessages& messageBuffers) : messages(messageBuffers) {}

    // Creates the file and writes signature and version. 769; -1, the file is then closed.
    unsigned int Open(const char* path, std::uint32_t structureVersion);

    // Each name is cut to 16 characters. -1.
    unsigned int WriteGroupingNames(const std::vector<std::string>& names);

    // -1; 271 when the list gets shorter meanwhile. Throws the TZRException of an entry's copy when there is no memory
    // for one.
    unsigned int WriteCorrectionRecords(const TCorrectionList& corrections);

    // The same for the corrections at some positions of the list, in the order of `positions`.
    unsigned int WriteCorrectionRecords(const TCorrectionList& corrections, const std::vector<std::size_t>& positions);

    // -1 when bytes written before turn out not to be stored.
    unsigned int Close();

private:
    bool WriteRecordHeader(const CalibrationFormat::TRecord& record, std::uint32_t dataLength);
    bool WriteRecord(const CalibrationFormat::TRecord& record, const void* data);
    bool WriteNumber(const CalibrationFormat::TRecord& record, std::uint32_t value);
    bool WriteFloat(const CalibrationFormat::TRecord& record, float value);
    bool WriteBackground(const TBackgroundCorrectionEntry& entry);
    bool WriteEntry(const TBackgroundCorrectionEntry& entry);
    template <typename TPositionOf>
    unsigned int WriteCorrections(const TCorrectionList& corrections, std::uint32_t count, TPositionOf positionOf);
    bool Item(bool written, const char* text);

    CalibrationFile::TMessages messages;
    Platform::TFileStream stream;
};

#endif
