// Reads a calibration file.
#ifndef FILE_TCALIBRATIONFILEREADER_H
#define FILE_TCALIBRATIONFILEREADER_H

#include "data/TCorrectionList.h"
#include "file/CalibrationFile.h"
#include "file/CalibrationFormat.h"
#include "platform/FileStream.h"

#include <cstdint>
#include <string>
#include <vector>

// One file from opening to closing, which the destructor does: Open, ReadGroupingNames (structure version 2 only),
// ReadCorrectionRecords. Each returns a result code and leaves its text.
//
// Takes any bytes: work and memory are bounded by the file's size, not by the numbers in it.
class TCalibrationFileReader {
public:
    explicit TCalibrationFileReader(const CalibrationFile::TMessages& messageBuffers) : messages(messageBuffers) {}

    // Opens the file and checks signature and version. On 772, `structureVersion` takes the file's version and reading
    // may go on. 769; -1 when the file ends before that.
    unsigned int Open(const char* path, std::uint32_t& structureVersion);

    // Appends the names to `names`. -1. May throw std::bad_alloc.
    unsigned int ReadGroupingNames(std::vector<std::string>& names);

    // Replaces the list's content, once the count could be read. A correction that cannot be read is skipped with a
    // text; the result is that of the last one tried: 0, -1 or -2. 1024 at once, with what was read so far in the list,
    // when an entry is refused or memory runs out.
    unsigned int ReadCorrectionRecords(TCorrectionList& corrections, bool headerOnly);

    // Whether ReadCorrectionRecords has emptied the list.
    bool HasClearedList() const noexcept { return listCleared; }

private:
    // What becomes of one correction.
    enum class TOutcome {
        kRead,
        kSkipped,  // it is left out, and the load goes on
        kLoadEnds, // the whole load ends here
    };

    unsigned int ReadRecordHeader(const CalibrationFormat::TRecord& record, bool lengthIsFixed);
    unsigned int ReadRecord(const CalibrationFormat::TRecord& record, void* data);
    unsigned int ReadNumber(const CalibrationFormat::TRecord& record, std::uint32_t& value);
    unsigned int ReadFloat(const CalibrationFormat::TRecord& record, float& value);
    unsigned int ReadBytes(void* bytes, std::size_t length);
    TOutcome ReadCorrection(TCorrectionList& corrections, bool headerOnly, unsigned int& result);
    TOutcome ReadPixels(std::uint32_t width, std::uint32_t height, unsigned int& result, std::uint16_t*& pixels);
    TOutcome SkipPixels(std::uint32_t width, std::uint32_t height, unsigned int& result);

    CalibrationFile::TMessages messages;
    Platform::TFileStream stream;
    bool listCleared = false;
};

#endif
