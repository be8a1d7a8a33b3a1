/// \file QX_BackgroundCorrection.h
/// The binary contract of QX_BACKGROUNDCORRECTION: one interface, one delegate, four exported functions, the result
/// codes. A host needs this file and nothing else of the library; it is plain C++98 and includes nothing.
///
/// THE ORDER OF THE VIRTUAL OPERATIONS IS THE CONTRACT. Hosts call by slot: nothing is inserted, moved or removed.
///
/// Words used below
/// - image: row-major array of unsigned 16-bit pixels, no padding between rows; lengths are counted in pixels.
/// - key: NUL-terminated narrow text that names a correction; the first 512 characters count, and letter case (ASCII)
///   does not: "Dark" and "dark" are the same key.
/// - live processor: the object made by CreateBackgroundCorrection; it keeps every correction in memory.
/// - offline store: the object made by CreateBackgroundCorrectionOffline; it spreads its corrections over one
///   calibration file per group and loads one group at a time. Where it differs, the operation says "Store:".
/// - header-only mode: entered by LoadFileHeaderOnly; keys, sizes and reference values are there, pixels are not.
///
/// Results
/// Operations that can fail return a result code (0 is success) and leave a text in the object; see
/// GetLastErrorMessage. The checks of an operation are made in the order in which its codes are listed, and the first
/// that fails decides. A failed operation leaves the object as it was unless its description says otherwise. A success
/// does not clear an earlier text.
///
/// Files
/// The null device opens like a file: an empty one to load (4294967295), one that takes every save. Folders cannot be
/// opened (769), nor what could keep the caller waiting for ever: a pipe, a socket, a terminal.
///
/// Threads
/// Calls on one object are serialised by the object's own recursive lock; different objects are independent. Only
/// GetCorrectionLevel takes no lock. An import holds the lock of the importing object, then that of its source: two
/// threads must not import in opposite directions at the same time. Deleting an object that another thread is still
/// using is an error of the host.
///
/// Exceptions
/// Two operations may let an exception derived from std::exception reach the host, both for want of memory:
/// ImportCorrections and SaveFile. The object stays usable and its lock is released. The factories, and the operations
/// of the offline store, may let std::bad_alloc through; those that switch the group, also the exception of SaveFile,
/// for they write the group that is left. Catch by reference: a copy of the std::exception alone may lack the text.
#ifndef QX_BACKGROUNDCORRECTION_H
#define QX_BACKGROUNDCORRECTION_H

/// \name Version
/// The version of this header. The build takes the library's version from here.
/// @{
#define QX_BACKGROUNDCORRECTION_VERSION_MAJOR 1
#define QX_BACKGROUNDCORRECTION_VERSION_MINOR 0
#define QX_BACKGROUNDCORRECTION_VERSION_PATCH 0
/// The three numbers as a string literal, with dots between them.
#define QX_BACKGROUNDCORRECTION_VERSION_TEXT                                                                           \
    QX_BACKGROUNDCORRECTION_JOIN_(QX_BACKGROUNDCORRECTION_VERSION_MAJOR, QX_BACKGROUNDCORRECTION_VERSION_MINOR,        \
                                  QX_BACKGROUNDCORRECTION_VERSION_PATCH)
/// @}
#define QX_BACKGROUNDCORRECTION_JOIN_(major, minor, patch) QX_BACKGROUNDCORRECTION_QUOTE_(major, minor, patch)
#define QX_BACKGROUNDCORRECTION_QUOTE_(major, minor, patch) #major "." #minor "." #patch

namespace QX_KRLSDK {

/// \name Result codes
/// Codes from 513 up to 519 say which argument was refused (513 the first, 514 the second, ...); one code therefore
/// carries different texts in different operations.
/// @{
const unsigned int kSuccess = 0;
/// The list of corrections ended early while a calibration file was being written.
const unsigned int kListEndedWhileSaving = 271;
/// First argument missing or invalid; key not found; object not valid; the data layer refused the work.
const unsigned int kFirstArgumentInvalid = 513;
/// Second argument missing or invalid.
const unsigned int kSecondArgumentInvalid = 514;
/// Third argument missing or invalid.
const unsigned int kThirdArgumentInvalid = 515;
/// Fourth argument missing or invalid; image lengths that differ.
const unsigned int kFourthArgumentInvalid = 516;
/// Fifth argument invalid.
const unsigned int kFifthArgumentInvalid = 517;
/// Sixth argument invalid.
const unsigned int kSixthArgumentInvalid = 518;
/// Seventh argument invalid.
const unsigned int kSeventhArgumentInvalid = 519;
/// Offline store: a file that records grouping names does not carry them in its own name.
const unsigned int kFileNameInvalid = 768;
/// A calibration file cannot be created, opened or recognised.
const unsigned int kFileNotAccessible = 769;
/// The object is in header-only mode, in which corrections cannot be modified or applied.
const unsigned int kHeaderOnlyMode = 770;
/// Offline store: neither a file nor any group file of that name exists.
const unsigned int kFileNotFound = 771;
/// A calibration file has a structure version other than the one asked for.
const unsigned int kStructureVersionWrong = 772;
/// Memory, or the creation of an entry from stored data, failed inside an operation.
const unsigned int kOperationFailed = 1024;
/// Offline store: no group is loaded.
const unsigned int kNoCorrectionActive = 1280;
/// A calibration file ended early, or could not be written to its end (-1 as unsigned).
const unsigned int kShortReadOrWrite = 4294967295u;
/// The last correction of a calibration file was given up at its opening record (-2 as unsigned).
const unsigned int kUnexpectedRecord = 4294967294u;
/// @}

/// Longest key, in characters, that is stored; what follows is cut.
const unsigned int kMaximumKeyLength = 512;

/// An object of the host that ApplyCorrection may hand its work to. The library calls it during that call only, while
/// it holds the object's lock, and never owns or keeps it. The result of each operation becomes the result of
/// ApplyCorrection. Operations must not throw. They may call the object back on the same thread (the background they
/// were given is gone once a setting or the active correction changes), but must not wait for another thread that does.
///
/// The first six operations are reserved: the library never calls them. There is deliberately no virtual destructor,
/// which would shift the operations by one slot in one compiler's tables and by two in another's.
class ICorrectionDelegate {
public:
    virtual void Reserved0() {} ///< Index 0; never called.
    virtual void Reserved1() {} ///< Index 1; never called.
    virtual void Reserved2() {} ///< Index 2; never called.
    virtual void Reserved3() {} ///< Index 3; never called.
    virtual void Reserved4() {} ///< Index 4; never called.
    virtual void Reserved5() {} ///< Index 5; never called.

    /// Index 6. Subtracts \p background from \p image in place.
    /// \param image       width * height pixels; null when the host gave ApplyCorrection a null image
    /// \param background  the scaled background of the region, width * height pixels, read only
    /// \param width, height  the region's size in pixels
    /// \param delegateProcessing, delegateOption  as given to ApplyCorrection
    virtual unsigned int SubtractInPlace(unsigned short* image, const unsigned short* background, int width, int height,
                                         bool delegateProcessing, bool delegateOption) = 0;

    /// Index 7. Writes \p image minus \p background to \p output. Arguments as for SubtractInPlace.
    virtual unsigned int SubtractInto(unsigned short* output, const unsigned short* image,
                                      const unsigned short* background, int width, int height, bool delegateProcessing,
                                      bool delegateOption) = 0;

    /// Index 8. Does whatever else the host does to an image; called when there is nothing to subtract.
    virtual unsigned int ProcessInPlace(unsigned short* image, int width, int height) = 0;

protected:
    ~ICorrectionDelegate() {}
};

/// Background correction of 16-bit images. Objects are made by the exported factories and destroyed by
/// DeleteBackgroundCorrection (or by deleting through this interface, which is slot 0).
class QX_IBackgroundCorrection {
public:
    /// Slot 0. Destroys the object and everything it owns. Writes no file: what was not saved is lost.
    virtual ~QX_IBackgroundCorrection() {}

    /// Slot 1. Builds a correction from a stack of dark frames and stores it at the end of the list: the frames are
    /// averaged pixel by pixel (single-precision sum in the order given, rounded half up; one frame is taken as it is)
    /// and the result is filtered with a 3 x 3 median. The active correction does not change.
    /// \param key                    name of the correction, not empty
    /// \param frames                 \p frameCount pointers, each to width * height pixels, read only; the pointers
    ///                               themselves are not checked
    /// \param frameCount             number of frames, at least 1
    /// \param width, height          size of every frame in pixels, at least 1
    /// \param exposureSeconds        exposure time of the frames in seconds, greater than 0 (NaN passes)
    /// \param lightIntensityPercent  light intensity of the frames in percent, greater than 0 (NaN passes)
    /// \return 770 in header-only mode; 513 null key; 514 null frames; 515 frameCount < 1; 516 width < 1;
    ///         517 height < 1; 518 exposure not above 0; 519 intensity not above 0; 513 when the key is empty or taken,
    ///         when exposure * intensity is 0 in single precision, or when memory runs out. The list is then unchanged.
    /// Store: 513 null key; 513 (no text) when the key lacks a value for a grouping name; any failure of switching to
    /// the key's group; then as above. Nothing is written to disk by this call itself, but the group that is switched
    /// away from is written to its file when it was modified.
    virtual unsigned int AddCorrection(const char* key, const unsigned short** frames, int frameCount, int width,
                                       int height, float exposureSeconds, float lightIntensityPercent) = 0;

    /// Slot 2. Makes a stored correction the active one; the region becomes its whole image and the background is
    /// scaled anew. In header-only mode the activation succeeds while region and background stay as they were.
    /// \param key  letter case ignored; null means that no correction is active
    /// \return 513 when no correction has this key: the previous one stays active.
    /// Store: switches to the key's group first and returns any failure of that.
    virtual unsigned int SetActiveCorrection(const char* key) = 0;

    /// Slot 3. \return the key of the active correction as it was stored, or null. Valid until that correction is
    /// deleted, overwritten, cleared or replaced by a load (Store: or until another group is loaded).
    virtual const char* GetActiveCorrectionKey() = 0;

    /// Slot 4. \param index  position in the list, from 0, in the order of adding
    /// \return the key at that position, or null when \p index is not below the number of corrections. Valid as for
    /// GetActiveCorrectionKey. Store: the keys of all groups, as they were given.
    virtual const char* GetCorrectionKey(unsigned int index) = 0;

    /// Slot 5. \return the number of stored corrections. Store: of all groups.
    virtual unsigned int GetNumberOfCorrections() = 0;

    /// Slot 6. Removes every correction, deactivates, and leaves header-only mode. Removes no file.
    /// \return always 0. Store: also forgets its base name; the pending settings and grouping names stay.
    virtual unsigned int ClearCorrections() = 0;

    /// Slot 7. Removes one correction. The active correction is refused when \p key is spelled exactly like it; spelled
    /// in another letter case, it is removed and no correction is active afterwards.
    /// \return 770 in header-only mode; 513 null key; 513 the key is active; 513 no such key.
    /// Store: 513 null key; switches to the key's group first and returns any failure of that; then as above.
    virtual unsigned int DeleteCorrection(const char* key) = 0;

    /// Slot 8. Sets how much of the background is subtracted.
    /// \param percent  clamped to 0 ... 100
    /// \return 770 in header-only mode. A failure to allocate the scaled background leaves the text "Error allocating
    /// correction memory." but still returns 0; ApplyCorrection then returns 1024. A change that keeps the region's
    /// number of pixels needs no memory: the background stays where it is.
    /// Store: kept (unclamped) for groups loaded later.
    virtual unsigned int SetCorrectionLevel(int percent) = 0;

    /// Slot 9. Takes no lock. \return the level in percent; 50 of the 101 values come back one lower because the level
    /// is kept as a single-precision fraction (29 reads back as 28). 100 at first.
    /// Store: the value last given, -1 before that.
    virtual int GetCorrectionLevel() = 0;

    /// Slot 10. Sets the exposure (seconds) and light intensity (percent) of the images to be corrected; every value is
    /// accepted. The background is scaled by ((intensity * exposure) * level) / (reference intensity * reference
    /// exposure), in single precision. Both are -1 at first, which makes their product 1.
    /// \return 770 in header-only mode; memory as for SetCorrectionLevel. Store: kept for groups loaded later.
    virtual unsigned int SetExposureAndIntensity(float exposureSeconds, float lightIntensityPercent) = 0;

    /// Slot 11. Gives the values last set, in seconds and percent. A null pointer is skipped.
    /// \return 770 in header-only mode. Store: 513 null first pointer; 514 null second pointer.
    virtual unsigned int GetExposureAndIntensity(float* exposureSeconds, float* lightIntensityPercent) = 0;

    /// Slot 12. Gives the exposure (seconds) and light intensity (percent) at which the active correction was taken;
    /// leaves the values alone when none is active. A null pointer is skipped.
    /// \return always 0. Store: 513 null first pointer; 514 null second pointer; 1280 no group loaded.
    virtual unsigned int GetReferenceExposureAndIntensity(float* exposureSeconds, float* lightIntensityPercent) = 0;

    /// Slot 13. Gives minimum, maximum and average (truncated, not rounded) of the active correction's whole stored
    /// image; leaves the values alone when none is active or it has no pixels. A null pointer is skipped.
    /// \return 770 in header-only mode. Store: 513, 514, 515 for a null pointer; 1280 no group loaded.
    virtual unsigned int GetCorrectionStatistics(unsigned short* minimum, unsigned short* maximum,
                                                 unsigned short* average) = 0;

    /// Slot 14. The same over the scaled background of the region. Codes as for GetCorrectionStatistics.
    virtual unsigned int GetScaledCorrectionStatistics(unsigned short* minimum, unsigned short* maximum,
                                                       unsigned short* average) = 0;

    /// Slot 15. Subtracts the scaled background from an image of the region's size; results below 0 become 0.
    /// With nothing active the image is copied to \p output (when that is another buffer).
    /// \param image               width * height pixels of the region; may be null only when \p useDelegate is true and
    ///                            \p delegateProcessing is false
    /// \param imageLength         number of pixels in \p image
    /// \param output              null: the image is changed in place; else the result goes here. It must be \p image
    ///                            itself or not overlap it
    /// \param outputLength        number of pixels in \p output; not looked at when \p output is null
    /// \param delegate            object of the host; null counts as no delegate
    /// \param useDelegate         hands the subtraction to \p delegate
    /// \param delegateProcessing  with \p useDelegate: hands images to the delegate's ProcessInPlace when nothing is
    ///                            active; passed on to its other operations
    /// \param delegateOption      passed on to the delegate
    /// \return 770 in header-only mode; 513 null image; 516 lengths differ; 514 length is not that of the region;
    ///         1024 when the background could not be allocated; else 0 or the delegate's result. After a failure
    ///         neither buffer has been written.
    /// Store: 513 for any null image. With no group loaded it passes the image through: 770; 516; copy to \p output;
    /// then the delegate's ProcessInPlace with the pending region's size when \p useDelegate is true.
    virtual unsigned int ApplyCorrection(unsigned short* image, int imageLength, unsigned short* output,
                                         int outputLength, ICorrectionDelegate* delegate, bool useDelegate,
                                         bool delegateProcessing, bool delegateOption) = 0;

    /// Slot 16. Sets the rectangle of the active correction that images show, in pixels. At first (0, 0, 1, 1).
    /// \return 770 in header-only mode; 513 left, 514 top, 515 width or 516 height out of range: below 0 (sizes: below
    /// 1) or beyond the active correction. With none active only the signs are checked. The correction's sizes count as
    /// signed: one that a file describes without pixels as 2^31 columns or more has no region at all. An import that
    /// replaces the active correction by one of another size leaves the region as it is: it then takes the pixel at
    /// (top + row) * width + left + column, with the new width, and 0 beyond the last. Memory as for
    /// SetCorrectionLevel. Store: kept for groups loaded later; unchecked while no group is loaded.
    virtual unsigned int SetRegion(int left, int top, int width, int height) = 0;

    /// Slot 17. Gives the region in pixels.
    /// \return 770 in header-only mode; 513 null left; 514 null top; 515 null width; 515 null height.
    /// Store: 513, 514, 515, 516; -1 for each value that was never set, while no group is loaded.
    virtual unsigned int GetRegion(int* left, int* top, int* width, int* height) = 0;

    /// Slot 18. Copies the corrections of another live processor into this one, in their order. A key that is already
    /// there is skipped, or with \p overwrite replaced in its place.
    /// \param source  another object of this library; not kept. With itself as source and \p overwrite every correction
    ///                loses its pixels
    /// \return 770 in header-only mode; 513 null source; 513 source is not a live processor.
    /// Throws (an exception derived from std::exception) when memory runs out; what was imported so far stays.
    /// Store: takes live processors and other stores as source, group by group; what was imported before a failure
    /// stays. Given to itself with \p overwrite a store loses every second correction, the first one included.
    virtual unsigned int ImportCorrections(QX_IBackgroundCorrection* source, bool overwrite) = 0;

    /// Slot 19. Opens a calibration file without its pixels and enters header-only mode, also when it fails (Store: not
    /// then). The list is replaced once the file's count was read; nothing is active then.
    /// \param fileName  path; null counts as a file that cannot be opened
    /// \return 769 not opened or not a calibration file; 772 another structure version; 4294967295 the file ends early;
    ///         4294967294 see the calibration file's description; 1024 an entry was refused or memory ran out.
    /// Store: takes a base name or any one file of a store, or a file of structure version 1. 513 null name; 768; 771;
    /// failures leave it unchanged.
    virtual unsigned int LoadFileHeaderOnly(const char* fileName) = 0;

    /// Slot 20. Loads a calibration file whole and leaves header-only mode, also when it fails (Store: not then).
    /// Arguments and codes as for LoadFileHeaderOnly.
    virtual unsigned int LoadFile(const char* fileName) = 0;

    /// Slot 21. Writes all corrections to a calibration file. A file that failed half way stays as far as it was
    /// written. The object does not change.
    /// \param fileName  path; null counts as a file that cannot be created
    /// \return 770 in header-only mode; 769 not created; 4294967295 not written to its end, also when only closing the
    ///         file fails; 271.
    /// Throws (an exception derived from std::exception) when memory runs out.
    /// Store: 513 null name; a store without a name is split into its group files and reopened from them; a named store
    /// is saved to itself or copied to another base name, whose old group files are removed first.
    virtual unsigned int SaveFile(const char* fileName) = 0;

    /// Slot 22. \return the text of the object's last failure, at most 256 characters; empty when there was none. The
    /// pointer stays valid for the life of the object, its text until the next failure.
    /// Store: a text of its own is cleared before it is returned, so that an empty text arrives; else the text of the
    /// loaded group's processor, or null when no group is loaded.
    virtual const char* GetLastErrorMessage() = 0;
};

/// \name Types of the exported functions, for hosts that load the library at run time
/// @{
typedef QX_IBackgroundCorrection* (*CreateBackgroundCorrectionFunction)();
typedef QX_IBackgroundCorrection* (*CreateBackgroundCorrectionOfflineFunction)(char** groupingParameters, int count);
typedef unsigned int (*DeleteBackgroundCorrectionFunction)(QX_IBackgroundCorrection* object);
typedef const char* (*GetLastBackgroundCorrectionDLLErrorFunction)();
/// @}

} // namespace QX_KRLSDK

extern "C" {

/// Makes a live processor: no corrections, nothing active, region (0, 0, 1, 1), level 100 %, exposure and intensity -1.
/// \return the object, which the caller owns until DeleteBackgroundCorrection; null (or std::bad_alloc) without memory.
QX_KRLSDK::QX_IBackgroundCorrection* CreateBackgroundCorrection();

/// Makes an offline store whose files are told apart by the values of \p groupingParameters.
/// \param groupingParameters  \p count names, none null or empty; copied. Each keeps 16 characters in files
/// \param count               number of names, at least 1
/// \return the object, also when a name was refused: the names before it then stay, and the caller is not told.
QX_KRLSDK::QX_IBackgroundCorrection* CreateBackgroundCorrectionOffline(char** groupingParameters, int count);

/// Destroys an object made by one of the factories. Null does nothing.
/// \return 0; 513 when \p object is not one of this library's: it is left alone, and a text is left for
/// GetLastBackgroundCorrectionDLLError.
unsigned int DeleteBackgroundCorrection(QX_KRLSDK::QX_IBackgroundCorrection* object);

/// \return the text of the last refused deletion in this process, at most 512 characters, or an empty text; never null.
/// Takes no lock. Valid for the life of the process.
const char* GetLastBackgroundCorrectionDLLError();

} // extern "C"

#endif
