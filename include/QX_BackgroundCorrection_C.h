/**
 * \file QX_BackgroundCorrection_C.h
 * The flat interface: QX_BACKGROUNDCORRECTION for hosts whose language cannot call a C++ interface (C, C#, MATLAB,
 * LabVIEW, Julia, Rust, Python, and so on). Plain functions over opaque handles, exported by a small library of its
 * own, libQX_BACKGROUNDCORRECTION_C.so or QX_BACKGROUNDCORRECTION_C.dll. This file is C89 and C++98 and includes
 * nothing.
 *
 * Each function is the operation of the same name in QX_BackgroundCorrection.h, which says what it does, what its codes
 * mean, how long a returned text is valid, and what the words "key", "region", "background" and "store" mean. A call
 * costs one call more, and copies nothing but a path on Windows. What is different:
 *
 * - Where it is. The library loads the main one from its own folder when it is first needed, and keeps it loaded until
 *   the process ends. Keep the two files side by side, and do not unload this one either.
 * - Handles. A null handle is QXBC_NO_OBJECT; functions that return no code then return null, 0, or a level of -1. Any
 *   other wrong handle is an error of the host, as it is with a pointer.
 * - Exceptions. None leaves the library. The two operations that throw when memory runs out (import and save, and what
 *   switches the group of a store) return QXBC_OUT_OF_MEMORY.
 * - Paths are UTF-8 on both systems. On Linux the bytes go to the system as they are. On Windows they are turned into
 *   the code page in which the main library opens files; what that code page cannot spell, and what is no UTF-8, is
 *   QXBC_PATH_NOT_SPELLED, and nothing is opened. (A host that gives the C runtime of Windows a UTF-8 locale changes
 *   how that opens files: it had better keep its paths to ASCII.) Keys are passed on as they are, and texts of the
 *   library come back as they are: a path in one is in the code page. (A store writes grouping values into the names
 *   of its files: keep those values to ASCII.)
 * - Truth values are int: 0 is false, anything else is true.
 * - Types. int and unsigned int and float have 32 bits, unsigned short has 16. Calls follow the system's one calling
 *   convention for 64-bit programs.
 * - Threads. As in QX_BackgroundCorrection.h; the making of objects may start on several threads at once.
 */
#ifndef QX_BACKGROUNDCORRECTION_C_H
#define QX_BACKGROUNDCORRECTION_C_H

#if defined(_WIN32) && !defined(_WIN64)
#error "QX_BACKGROUNDCORRECTION is a 64-bit library: build this host for x64."
#endif

#ifdef __cplusplus
extern "C" {
#endif

/**
 * \name Result codes of the main library
 * See QX_BackgroundCorrection.h for what they mean.
 * @{
 */
#define QXBC_SUCCESS 0u                      /**< kSuccess */
#define QXBC_LIST_ENDED_WHILE_SAVING 271u    /**< kListEndedWhileSaving */
#define QXBC_FIRST_ARGUMENT_INVALID 513u     /**< kFirstArgumentInvalid */
#define QXBC_SECOND_ARGUMENT_INVALID 514u    /**< kSecondArgumentInvalid */
#define QXBC_THIRD_ARGUMENT_INVALID 515u     /**< kThirdArgumentInvalid */
#define QXBC_FOURTH_ARGUMENT_INVALID 516u    /**< kFourthArgumentInvalid */
#define QXBC_FIFTH_ARGUMENT_INVALID 517u     /**< kFifthArgumentInvalid */
#define QXBC_SIXTH_ARGUMENT_INVALID 518u     /**< kSixthArgumentInvalid */
#define QXBC_SEVENTH_ARGUMENT_INVALID 519u   /**< kSeventhArgumentInvalid */
#define QXBC_FILE_NAME_INVALID 768u          /**< kFileNameInvalid */
#define QXBC_FILE_NOT_ACCESSIBLE 769u        /**< kFileNotAccessible */
#define QXBC_HEADER_ONLY_MODE 770u           /**< kHeaderOnlyMode */
#define QXBC_FILE_NOT_FOUND 771u             /**< kFileNotFound */
#define QXBC_STRUCTURE_VERSION_WRONG 772u    /**< kStructureVersionWrong */
#define QXBC_OPERATION_FAILED 1024u          /**< kOperationFailed */
#define QXBC_NO_CORRECTION_ACTIVE 1280u      /**< kNoCorrectionActive */
#define QXBC_SHORT_READ_OR_WRITE 4294967295u /**< kShortReadOrWrite */
#define QXBC_UNEXPECTED_RECORD 4294967294u   /**< kUnexpectedRecord */
/** @} */

/**
 * \name Result codes of the flat interface itself
 * The main library never returns them, and they leave no text in the object; QXBC_DescribeCode has one.
 * @{
 */
/** The main library is not in the folder of this one, cannot be loaded or is another library. */
#define QXBC_NO_LIBRARY 65537u
/** The handle is null. */
#define QXBC_NO_OBJECT 65538u
/** Memory ran out: the library threw an exception. The object stays usable. */
#define QXBC_OUT_OF_MEMORY 65539u
/** Windows: the path is no UTF-8, or has characters that the system's code page lacks. */
#define QXBC_PATH_NOT_SPELLED 65540u
/** Something other than an exception of the C++ standard library was thrown. It should not happen. */
#define QXBC_UNKNOWN_EXCEPTION 65541u
/** @} */

/** An object of the library. */
typedef struct QXBC_Object QXBC_Object;

/**
 * Functions of the host that QXBC_ApplyCorrection may hand its work to; see ICorrectionDelegate. They are called during
 * that call only, on its thread, while it holds the object's lock; their result becomes its result. No exception and no
 * longjmp may leave them. A function that is null is never called: where it would be, the result is
 * QXBC_FIFTH_ARGUMENT_INVALID.
 */
typedef struct QXBC_Delegate {
    void* user; /**< Handed to each function as it is. */
    /**
     * Subtracts background from image in place; width * height pixels each. image is null when QXBC_ApplyCorrection was
     * given a null image.
     */
    unsigned int (*subtractInPlace)(void* user, unsigned short* image, const unsigned short* background, int width,
                                    int height, int delegateProcessing, int delegateOption);
    /** Writes image minus background to output. */
    unsigned int (*subtractInto)(void* user, unsigned short* output, const unsigned short* image,
                                 const unsigned short* background, int width, int height, int delegateProcessing,
                                 int delegateOption);
    /** Does whatever else the host does to an image; called when there is nothing to subtract. */
    unsigned int (*processInPlace)(void* user, unsigned short* image, int width, int height);
} QXBC_Delegate;

/**
 * Loads the main library now. Nobody needs to call it: the functions that make an object do the same. It says why when
 * it fails.
 * \param reason      null, or room for a text that is cut and terminated; empty after a success
 * \param reasonSize  size of that room in characters
 * \return QXBC_SUCCESS or QXBC_NO_LIBRARY.
 */
unsigned int QXBC_LoadLibrary(char* reason, unsigned int reasonSize);

/** \return a short sentence for a code of the flat interface itself, an empty text for any other. Never null. */
const char* QXBC_DescribeCode(unsigned int code);

/**
 * \name Making and deleting objects
 * @{
 */
/**
 * Makes a live processor.
 * \param object  receives the handle, which the caller owns until QXBC_Delete; null after a failure
 * \return QXBC_FIRST_ARGUMENT_INVALID null object; QXBC_NO_LIBRARY; QXBC_OUT_OF_MEMORY.
 */
unsigned int QXBC_CreateProcessor(QXBC_Object** object);
/**
 * Makes an offline store.
 * \param groupingParameters  count names, copied
 * \param count               number of names, at least 1
 * \param object              receives the handle; null after a failure
 * \return QXBC_FIRST_ARGUMENT_INVALID null groupingParameters, or a name among them that is null or empty (which the
 * main library would pass over in silence); QXBC_SECOND_ARGUMENT_INVALID count below 1; QXBC_THIRD_ARGUMENT_INVALID
 *         null object; QXBC_NO_LIBRARY; QXBC_OUT_OF_MEMORY.
 */
unsigned int QXBC_CreateStore(const char* const* groupingParameters, int count, QXBC_Object** object);
/**
 * Destroys an object and everything it owns. Null does nothing. What was not saved is lost.
 * \return QXBC_FIRST_ARGUMENT_INVALID when object is not one of the library's.
 */
unsigned int QXBC_Delete(QXBC_Object* object);
/** \return the text of the last refused deletion in this process, or an empty text; never null. */
const char* QXBC_GetLastDeletionError(void);
/** @} */

/**
 * \name Operations
 * Each can also return QXBC_NO_OBJECT, QXBC_OUT_OF_MEMORY and QXBC_UNKNOWN_EXCEPTION, or QXBC_PATH_NOT_SPELLED where
 * there is a path. Argument codes count as in QX_BackgroundCorrection.h, where the object is no argument.
 * @{
 */
/** See QX_IBackgroundCorrection::AddCorrection. */
unsigned int QXBC_AddCorrection(QXBC_Object* object, const char* key, const unsigned short* const* frames,
                                int frameCount, int width, int height, float exposureSeconds,
                                float lightIntensityPercent);
/** See QX_IBackgroundCorrection::SetActiveCorrection. A null key deactivates. */
unsigned int QXBC_SetActiveCorrection(QXBC_Object* object, const char* key);
/** See QX_IBackgroundCorrection::GetActiveCorrectionKey. */
const char* QXBC_GetActiveCorrectionKey(QXBC_Object* object);
/** See QX_IBackgroundCorrection::GetCorrectionKey. */
const char* QXBC_GetCorrectionKey(QXBC_Object* object, unsigned int index);
/** See QX_IBackgroundCorrection::GetNumberOfCorrections. */
unsigned int QXBC_GetNumberOfCorrections(QXBC_Object* object);
/** See QX_IBackgroundCorrection::ClearCorrections. */
unsigned int QXBC_ClearCorrections(QXBC_Object* object);
/** See QX_IBackgroundCorrection::DeleteCorrection. */
unsigned int QXBC_DeleteCorrection(QXBC_Object* object, const char* key);
/** See QX_IBackgroundCorrection::SetCorrectionLevel. */
unsigned int QXBC_SetCorrectionLevel(QXBC_Object* object, int percent);
/** See QX_IBackgroundCorrection::GetCorrectionLevel. */
int QXBC_GetCorrectionLevel(QXBC_Object* object);
/** See QX_IBackgroundCorrection::SetExposureAndIntensity. */
unsigned int QXBC_SetExposureAndIntensity(QXBC_Object* object, float exposureSeconds, float lightIntensityPercent);
/** See QX_IBackgroundCorrection::GetExposureAndIntensity. */
unsigned int QXBC_GetExposureAndIntensity(QXBC_Object* object, float* exposureSeconds, float* lightIntensityPercent);
/** See QX_IBackgroundCorrection::GetReferenceExposureAndIntensity. */
unsigned int QXBC_GetReferenceExposureAndIntensity(QXBC_Object* object, float* exposureSeconds,
                                                   float* lightIntensityPercent);
/** See QX_IBackgroundCorrection::GetCorrectionStatistics. */
unsigned int QXBC_GetCorrectionStatistics(QXBC_Object* object, unsigned short* minimum, unsigned short* maximum,
                                          unsigned short* average);
/** See QX_IBackgroundCorrection::GetScaledCorrectionStatistics. */
unsigned int QXBC_GetScaledCorrectionStatistics(QXBC_Object* object, unsigned short* minimum, unsigned short* maximum,
                                                unsigned short* average);
/**
 * Subtracts the background from an image of the region's size, in place when output is null. delegate is null, or the
 * host's functions, which are read during the call only. See QX_IBackgroundCorrection::ApplyCorrection.
 */
unsigned int QXBC_ApplyCorrection(QXBC_Object* object, unsigned short* image, int imageLength, unsigned short* output,
                                  int outputLength, const QXBC_Delegate* delegate, int useDelegate,
                                  int delegateProcessing, int delegateOption);
/** See QX_IBackgroundCorrection::SetRegion. */
unsigned int QXBC_SetRegion(QXBC_Object* object, int left, int top, int width, int height);
/** See QX_IBackgroundCorrection::GetRegion. */
unsigned int QXBC_GetRegion(QXBC_Object* object, int* left, int* top, int* width, int* height);
/** See QX_IBackgroundCorrection::ImportCorrections. A null source is QXBC_FIRST_ARGUMENT_INVALID. */
unsigned int QXBC_ImportCorrections(QXBC_Object* object, QXBC_Object* source, int overwrite);
/** See QX_IBackgroundCorrection::LoadFileHeaderOnly. */
unsigned int QXBC_LoadFileHeaderOnly(QXBC_Object* object, const char* fileName);
/** See QX_IBackgroundCorrection::LoadFile. */
unsigned int QXBC_LoadFile(QXBC_Object* object, const char* fileName);
/** See QX_IBackgroundCorrection::SaveFile. */
unsigned int QXBC_SaveFile(QXBC_Object* object, const char* fileName);
/** See QX_IBackgroundCorrection::GetLastErrorMessage. */
const char* QXBC_GetLastErrorMessage(QXBC_Object* object);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
