// The processor's calibration files.
#include "processor/TBackgroundCorrectionProcessorUINT16.h"

#include "boundary/Messages.h"
#include "file/TCalibrationFileReader.h"
#include "file/TCalibrationFileWriter.h"

using namespace QX_KRLSDK;

namespace {

// Saving has succeeded only when closing the file has. After an earlier failure the writer's destructor closes the file
// instead, so that a failure to close does not replace the first text.
unsigned int CloseAfter(TCalibrationFileWriter& writer, unsigned int result)
{
    return result != kSuccess ? result : writer.Close();
}

unsigned int OpenGrouped(TCalibrationFileWriter& writer, const char* path,
                         const std::vector<std::string>& groupingNames)
{
    const unsigned int result = writer.Open(path, CalibrationFormat::kGroupedVersion);
    return result == kSuccess ? writer.WriteGroupingNames(groupingNames) : result;
}

} // namespace

unsigned int TBackgroundCorrectionProcessorUINT16::SaveFile(const char* fileName)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    TCalibrationFileWriter writer({message, *fileMessage});
    const unsigned int result = writer.Open(fileName, CalibrationFormat::kUngroupedVersion);
    if (result != kSuccess) {
        return result;
    }
    return CloseAfter(writer, writer.WriteCorrectionRecords(*corrections));
}

unsigned int TBackgroundCorrectionProcessorUINT16::SaveGroupedFile(const char* path,
                                                                   const std::vector<std::string>& groupingNames)
{
    const TGuard guard(lock.Get());
    if (headerOnly) {
        return Fail(kHeaderOnlyMode, Messages::kHeaderOnly);
    }
    TCalibrationFileWriter writer({message, *fileMessage});
    unsigned int result = OpenGrouped(writer, path, groupingNames);
    if (result == kSuccess) {
        result = writer.WriteCorrectionRecords(*corrections);
    }
    return CloseAfter(writer, result);
}

unsigned int TBackgroundCorrectionProcessorUINT16::SaveGroupedFileOf(const char* path,
                                                                     const std::vector<std::string>& groupingNames,
                                                                     const std::vector<std::size_t>& positions)
{
    const TGuard guard(lock.Get());
    TObjectMessageBuffer unread;
    TCalibrationFileWriter writer({unread, unread});
    unsigned int result = OpenGrouped(writer, path, groupingNames);
    if (result == kSuccess) {
        result = writer.WriteCorrectionRecords(*corrections, positions);
    }
    return CloseAfter(writer, result);
}

unsigned int TBackgroundCorrectionProcessorUINT16::LoadFileHeaderOnly(const char* fileName)
{
    return LoadUngroupedFile(fileName, true);
}

unsigned int TBackgroundCorrectionProcessorUINT16::LoadFile(const char* fileName)
{
    return LoadUngroupedFile(fileName, false);
}

// The mode changes first, and stays changed when loading fails.
unsigned int TBackgroundCorrectionProcessorUINT16::LoadUngroupedFile(const char* path, bool enterHeaderOnly)
{
    const TGuard guard(lock.Get());
    headerOnly = enterHeaderOnly;
    TCalibrationFileReader reader({message, *fileMessage});
    std::uint32_t structureVersion = CalibrationFormat::kUngroupedVersion;
    const unsigned int result = reader.Open(path, structureVersion);
    return result == kSuccess ? ReadCorrections(reader) : result;
}

unsigned int TBackgroundCorrectionProcessorUINT16::LoadGroupedFile(const char* path,
                                                                   std::vector<std::string>& groupingNames,
                                                                   std::uint32_t& structureVersion,
                                                                   bool enterHeaderOnly)
{
    const TGuard guard(lock.Get());
    structureVersion = CalibrationFormat::kGroupedVersion;
    groupingNames.clear();
    headerOnly = enterHeaderOnly;
    TCalibrationFileReader reader({message, *fileMessage});
    unsigned int result = reader.Open(path, structureVersion);
    if (result == kStructureVersionWrong && structureVersion == CalibrationFormat::kUngroupedVersion) {
        return ReadCorrections(reader);
    }
    if (result != kSuccess) {
        return result;
    }
    result = reader.ReadGroupingNames(groupingNames);
    if (result != kSuccess) {
        groupingNames.clear();
        return result;
    }
    return ReadCorrections(reader);
}

unsigned int TBackgroundCorrectionProcessorUINT16::LoadGroupedFileHeaderOnly(const char* path,
                                                                             std::vector<std::string>& groupingNames,
                                                                             std::uint32_t& structureVersion)
{
    return LoadGroupedFile(path, groupingNames, structureVersion, true);
}

unsigned int TBackgroundCorrectionProcessorUINT16::LoadGroupedFileFull(const char* path,
                                                                       std::vector<std::string>& groupingNames,
                                                                       std::uint32_t& structureVersion)
{
    return LoadGroupedFile(path, groupingNames, structureVersion, false);
}

// Once the list was emptied the active entry no longer exists, even when reading failed.
unsigned int TBackgroundCorrectionProcessorUINT16::ReadCorrections(TCalibrationFileReader& reader)
{
    const unsigned int result = reader.ReadCorrectionRecords(*corrections, headerOnly);
    if (reader.HasClearedList()) {
        Deactivate();
    }
    return result;
}
