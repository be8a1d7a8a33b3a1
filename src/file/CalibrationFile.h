// What the writer and the reader of a calibration file share: their results, and where their texts go.
#ifndef FILE_CALIBRATIONFILE_H
#define FILE_CALIBRATIONFILE_H

#include "QX_BackgroundCorrection.h"

#include "boundary/TMessageBuffer.h"

namespace CalibrationFile {

using QX_KRLSDK::kFileNotAccessible;
using QX_KRLSDK::kListEndedWhileSaving;
using QX_KRLSDK::kOperationFailed;
using QX_KRLSDK::kShortReadOrWrite;
using QX_KRLSDK::kStructureVersionWrong;
using QX_KRLSDK::kSuccess;
using QX_KRLSDK::kUnexpectedRecord;

// Where the texts go: what concerns the file as a whole or an entry to `main`, which the host reads; what concerns
// single items of the file to `file`.
struct TMessages {
    TObjectMessageBuffer& main;
    TObjectMessageBuffer& file;
};

} // namespace CalibrationFile

#endif
