// The flat interface: each function is one call of the main library's interface, behind a check of the handle.
#include "QX_BackgroundCorrection_C.h"

#include "QX_BackgroundCorrection.h"

#include "boundary/ExportDecoration.h"
#include "flat/TFlatDelegate.h"
#include "flat/TMainLibrary.h"
#include "platform/Utf8Path.h"

#include <exception>

using namespace QX_KRLSDK;
using I = QX_IBackgroundCorrection;

static_assert(QXBC_SUCCESS == kSuccess && QXBC_LIST_ENDED_WHILE_SAVING == kListEndedWhileSaving &&
                  QXBC_FIRST_ARGUMENT_INVALID == kFirstArgumentInvalid &&
                  QXBC_SECOND_ARGUMENT_INVALID == kSecondArgumentInvalid &&
                  QXBC_THIRD_ARGUMENT_INVALID == kThirdArgumentInvalid &&
                  QXBC_FOURTH_ARGUMENT_INVALID == kFourthArgumentInvalid &&
                  QXBC_FIFTH_ARGUMENT_INVALID == kFifthArgumentInvalid &&
                  QXBC_SIXTH_ARGUMENT_INVALID == kSixthArgumentInvalid &&
                  QXBC_SEVENTH_ARGUMENT_INVALID == kSeventhArgumentInvalid &&
                  QXBC_FILE_NAME_INVALID == kFileNameInvalid && QXBC_FILE_NOT_ACCESSIBLE == kFileNotAccessible &&
                  QXBC_HEADER_ONLY_MODE == kHeaderOnlyMode && QXBC_FILE_NOT_FOUND == kFileNotFound &&
                  QXBC_STRUCTURE_VERSION_WRONG == kStructureVersionWrong && QXBC_OPERATION_FAILED == kOperationFailed &&
                  QXBC_NO_CORRECTION_ACTIVE == kNoCorrectionActive && QXBC_SHORT_READ_OR_WRITE == kShortReadOrWrite &&
                  QXBC_UNEXPECTED_RECORD == kUnexpectedRecord,
              "both headers give the main library's codes the same numbers");

namespace {

// What `work` returns; an exception becomes a code. By the contract all exceptions of the main library mean that memory
// ran out.
template <class TWork> unsigned int CodeOf(const TWork& work) noexcept
{
    try {
        return work();
    } catch (const std::exception&) {
        return QXBC_OUT_OF_MEMORY;
    } catch (...) {
        return QXBC_UNKNOWN_EXCEPTION;
    }
}

// The code of an operation.
template <class... TParameter, class... TArgument>
unsigned int Call(QXBC_Object* object, unsigned int (I::*operation)(TParameter...), TArgument... arguments) noexcept
{
    if (object == nullptr) {
        return QXBC_NO_OBJECT;
    }
    return CodeOf([&] { return (reinterpret_cast<I*>(object)->*operation)(arguments...); });
}

// The value of an operation that returns no code, or `otherwise`.
template <class TValue, class... TParameter, class... TArgument>
TValue Ask(TValue otherwise, QXBC_Object* object, TValue (I::*operation)(TParameter...),
           TArgument... arguments) noexcept
{
    if (object == nullptr) {
        return otherwise;
    }
    try {
        return (reinterpret_cast<I*>(object)->*operation)(arguments...);
    } catch (...) {
        return otherwise;
    }
}

// The code of an operation on a file.
unsigned int CallWithPath(QXBC_Object* object, unsigned int (I::*operation)(const char*), const char* path) noexcept
{
    if (object == nullptr) {
        return QXBC_NO_OBJECT;
    }
    return CodeOf([&]() -> unsigned int {
        const Platform::TUtf8Path native(path);
        if (!native.IsSpelled()) {
            return QXBC_PATH_NOT_SPELLED;
        }
        return (reinterpret_cast<I*>(object)->*operation)(native.Text());
    });
}

// Makes an object with one of the main library's factories.
template <class TMake> unsigned int Create(QXBC_Object** object, const TMake& make) noexcept
{
    const TMainLibrary* const library = TMainLibrary::Get();
    if (library == nullptr) {
        return QXBC_NO_LIBRARY;
    }
    return CodeOf([&] {
        *object = reinterpret_cast<QXBC_Object*>(make(*library));
        return *object != nullptr ? QXBC_SUCCESS : QXBC_OUT_OF_MEMORY;
    });
}

} // namespace

QX_EXPORT unsigned int QXBC_LoadLibrary(char* reason, unsigned int reasonSize)
{
    char unread[1];
    const bool isWanted = reason != nullptr && reasonSize > 0;
    char* const room = isWanted ? reason : unread;
    room[0] = '\0';
    return TMainLibrary::Get(room, isWanted ? reasonSize : 1) != nullptr ? QXBC_SUCCESS : QXBC_NO_LIBRARY;
}

QX_EXPORT const char* QXBC_DescribeCode(unsigned int code)
{
    switch (code) {
    case QXBC_NO_LIBRARY:
        return "QX_BACKGROUNDCORRECTION cannot be loaded from the folder of QX_BACKGROUNDCORRECTION_C.";
    case QXBC_NO_OBJECT:
        return "The handle is null.";
    case QXBC_OUT_OF_MEMORY:
        return "Memory ran out.";
    case QXBC_PATH_NOT_SPELLED:
        return "The path is not valid UTF-8 or has characters that the system's code page lacks.";
    case QXBC_UNKNOWN_EXCEPTION:
        return "Something unknown was thrown.";
    default:
        return "";
    }
}

QX_EXPORT unsigned int QXBC_CreateProcessor(QXBC_Object** object)
{
    if (object == nullptr) {
        return QXBC_FIRST_ARGUMENT_INVALID;
    }
    *object = nullptr;
    return Create(object, [](const TMainLibrary& library) { return library.CreateProcessor(); });
}

QX_EXPORT unsigned int QXBC_CreateStore(const char* const* groupingParameters, int count, QXBC_Object** object)
{
    if (object != nullptr) {
        *object = nullptr;
    }
    if (groupingParameters == nullptr) {
        return QXBC_FIRST_ARGUMENT_INVALID;
    }
    for (int i = 0; i < count; ++i) {
        if (groupingParameters[i] == nullptr || groupingParameters[i][0] == '\0') {
            return QXBC_FIRST_ARGUMENT_INVALID;
        }
    }
    if (count < 1) {
        return QXBC_SECOND_ARGUMENT_INVALID;
    }
    if (object == nullptr) {
        return QXBC_THIRD_ARGUMENT_INVALID;
    }
    // The main library copies the names and changes none, whatever its type says.
    return Create(object, [&](const TMainLibrary& library) {
        return library.CreateStore(const_cast<char**>(groupingParameters), count);
    });
}

QX_EXPORT unsigned int QXBC_Delete(QXBC_Object* object)
{
    if (object == nullptr) {
        return QXBC_SUCCESS;
    }
    const TMainLibrary* const library = TMainLibrary::Get();
    if (library == nullptr) {
        return QXBC_NO_LIBRARY;
    }
    return CodeOf([&] { return library->Delete(reinterpret_cast<I*>(object)); });
}

QX_EXPORT const char* QXBC_GetLastDeletionError(void)
{
    const TMainLibrary* const library = TMainLibrary::Get();
    return library != nullptr ? library->LastError() : "";
}

QX_EXPORT unsigned int QXBC_AddCorrection(QXBC_Object* object, const char* key, const unsigned short* const* frames,
                                          int frameCount, int width, int height, float exposureSeconds,
                                          float lightIntensityPercent)
{
    // The main library only reads the pointers.
    return Call(object, &I::AddCorrection, key, const_cast<const unsigned short**>(frames), frameCount, width, height,
                exposureSeconds, lightIntensityPercent);
}

QX_EXPORT unsigned int QXBC_SetActiveCorrection(QXBC_Object* object, const char* key)
{
    return Call(object, &I::SetActiveCorrection, key);
}

QX_EXPORT const char* QXBC_GetActiveCorrectionKey(QXBC_Object* object)
{
    return Ask<const char*>(nullptr, object, &I::GetActiveCorrectionKey);
}

QX_EXPORT const char* QXBC_GetCorrectionKey(QXBC_Object* object, unsigned int index)
{
    return Ask<const char*>(nullptr, object, &I::GetCorrectionKey, index);
}

QX_EXPORT unsigned int QXBC_GetNumberOfCorrections(QXBC_Object* object)
{
    return Ask(0u, object, &I::GetNumberOfCorrections);
}

QX_EXPORT unsigned int QXBC_ClearCorrections(QXBC_Object* object)
{
    return Call(object, &I::ClearCorrections);
}

QX_EXPORT unsigned int QXBC_DeleteCorrection(QXBC_Object* object, const char* key)
{
    return Call(object, &I::DeleteCorrection, key);
}

QX_EXPORT unsigned int QXBC_SetCorrectionLevel(QXBC_Object* object, int percent)
{
    return Call(object, &I::SetCorrectionLevel, percent);
}

QX_EXPORT int QXBC_GetCorrectionLevel(QXBC_Object* object)
{
    return Ask(-1, object, &I::GetCorrectionLevel);
}

QX_EXPORT unsigned int QXBC_SetExposureAndIntensity(QXBC_Object* object, float exposureSeconds,
                                                    float lightIntensityPercent)
{
    return Call(object, &I::SetExposureAndIntensity, exposureSeconds, lightIntensityPercent);
}

QX_EXPORT unsigned int QXBC_GetExposureAndIntensity(QXBC_Object* object, float* exposureSeconds,
                                                    float* lightIntensityPercent)
{
    return Call(object, &I::GetExposureAndIntensity, exposureSeconds, lightIntensityPercent);
}

QX_EXPORT unsigned int QXBC_GetReferenceExposureAndIntensity(QXBC_Object* object, float* exposureSeconds,
                                                             float* lightIntensityPercent)
{
    return Call(object, &I::GetReferenceExposureAndIntensity, exposureSeconds, lightIntensityPercent);
}

QX_EXPORT unsigned int QXBC_GetCorrectionStatistics(QXBC_Object* object, unsigned short* minimum,
                                                    unsigned short* maximum, unsigned short* average)
{
    return Call(object, &I::GetCorrectionStatistics, minimum, maximum, average);
}

QX_EXPORT unsigned int QXBC_GetScaledCorrectionStatistics(QXBC_Object* object, unsigned short* minimum,
                                                          unsigned short* maximum, unsigned short* average)
{
    return Call(object, &I::GetScaledCorrectionStatistics, minimum, maximum, average);
}

QX_EXPORT unsigned int QXBC_ApplyCorrection(QXBC_Object* object, unsigned short* image, int imageLength,
                                            unsigned short* output, int outputLength, const QXBC_Delegate* delegate,
                                            int useDelegate, int delegateProcessing, int delegateOption)
{
    TFlatDelegate flatDelegate(delegate);
    return Call(object, &I::ApplyCorrection, image, imageLength, output, outputLength,
                delegate != nullptr ? &flatDelegate : nullptr, useDelegate != 0, delegateProcessing != 0,
                delegateOption != 0);
}

QX_EXPORT unsigned int QXBC_SetRegion(QXBC_Object* object, int left, int top, int width, int height)
{
    return Call(object, &I::SetRegion, left, top, width, height);
}

QX_EXPORT unsigned int QXBC_GetRegion(QXBC_Object* object, int* left, int* top, int* width, int* height)
{
    return Call(object, &I::GetRegion, left, top, width, height);
}

QX_EXPORT unsigned int QXBC_ImportCorrections(QXBC_Object* object, QXBC_Object* source, int overwrite)
{
    return Call(object, &I::ImportCorrections, reinterpret_cast<I*>(source), overwrite != 0);
}

QX_EXPORT unsigned int QXBC_LoadFileHeaderOnly(QXBC_Object* object, const char* fileName)
{
    return CallWithPath(object, &I::LoadFileHeaderOnly, fileName);
}

QX_EXPORT unsigned int QXBC_LoadFile(QXBC_Object* object, const char* fileName)
{
    return CallWithPath(object, &I::LoadFile, fileName);
}

QX_EXPORT unsigned int QXBC_SaveFile(QXBC_Object* object, const char* fileName)
{
    return CallWithPath(object, &I::SaveFile, fileName);
}

QX_EXPORT const char* QXBC_GetLastErrorMessage(QXBC_Object* object)
{
    return Ask<const char*>(nullptr, object, &I::GetLastErrorMessage);
}
