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
/// - background: the active correction, cut to the region and scaled to the settings. ApplyCorrection subtracts it.
/// - live processor: the object made by CreateBackgroundCorrection; it keeps every correction in memory.
/// - offline store: the object made by CreateBackgroundCorrectionOffline; it spreads its corrections over one
///   calibration file per group and loads one group at a time.
/// - header-only mode: entered by LoadFileHeaderOnly; keys, sizes and reference values are there, pixels are not.
///
/// Operations are described for the live processor. What the offline store does otherwise stands at the end of each
/// description, in a paragraph that begins with "Store:". A host that makes no store can skip them all.
///
/// For hosts
/// - Compilers. On Linux (x86-64): GCC and Clang, which follow the same C++ ABI (Itanium). On Windows (x64, which has
///   one calling convention): Microsoft's compiler and Clang for a windows-msvc target, whose ABI is the DLL's, and
///   MinGW's GCC and Clang. Those lay out a virtual destructor differently; for them slot 0 has another form here,
///   so that each operation is called by its name. A MinGW host destroys objects through DeleteBackgroundCorrection
///   ("delete" does not compile) and derives its delegate as any other. Three things do not cross: an exception of the
///   library ends a MinGW host, which cannot catch it (see Exceptions; QX_BackgroundCorrection_C.h turns it into a
///   code); an implementation of the interface of its own is refused by the library; typeid and dynamic_cast on an
///   object of the library are an error. A 32-bit Windows host does not compile.
/// - Finding the library. It is linked, or loaded by name (libQX_BACKGROUNDCORRECTION.so, QX_BACKGROUNDCORRECTION.dll).
///   On Linux the loader looks along LD_LIBRARY_PATH, the host's run path, and where the system keeps libraries; not in
///   the folder of the host's program, unless the host is linked with -Wl,-rpath,'$ORIGIN'. On Windows it looks in the
///   folder of the host's program first; put the DLL there. Both take an absolute path as it is.
/// - Table entries. In the Microsoft ABI slot n of the interface is entry n of the table of virtual functions; entry 0,
///   the destructor, takes a flag, with which 1 also frees the object. On Linux there are two destructor entries (0
///   destroys, 1 destroys and frees), so that from slot 1 on slot n stands at entry n + 1. The delegate's destructor
///   comes last: its operation of index n is entry n in both ABIs.
/// - Types. int, unsigned int and float have 32 bits, unsigned short has 16; bool is one byte, 0 or 1.
/// - Paths are narrow, NUL-terminated text. On Windows they are in the system's code page, as long as the C runtime
///   takes them, and both "\" and "/" separate folders. A store knows only "\" there: under a name with "/" it writes
///   files, but does not find them again; and it finds no files in folders with characters beyond 7 bits. On Linux
///   paths are bytes in any encoding, at most 4095, and every "\" counts as "/". A relative path starts at the folder
///   that is current when the call is made.
/// - Size. A correction has at most 2,147,483,647 pixels (2^31 - 1), and an image no more than an int can count. What
///   is larger is refused as if memory had run out, except in header-only mode, which needs none for pixels.
/// - First steps. Set exposure and intensity before the first image: an object that was never told them scales the
///   background by 1 / (reference exposure * reference intensity), 0.1 for dark frames of 0.1 s and 100 %. Until a
///   correction is active or a region is set, the region is 1 x 1, and ApplyCorrection refuses any larger image
///   (kSecondArgumentInvalid), although there is nothing to subtract.
/// - Cost of a setting. SetActiveCorrection, SetRegion, SetCorrectionLevel and SetExposureAndIntensity each scale the
///   whole region anew, even when the value is the one already set. Expect about the time of one pass of copying the
///   region (a rule of thumb, no promise). Call them when something changes, not before every image. ApplyCorrection
///   scales nothing and allocates nothing.
/// - Versions are MAJOR.MINOR.PATCH. PATCH counts corrected errors. MINOR counts additions, such as an exported
///   function or a constant; all that was there before keeps its slots, codes, pixel values and file format, so that
///   hosts need not be built again. MAJOR counts changes that a host may have to follow; even then no slot moves and no
///   code gets another meaning. At compile time, QX_BACKGROUNDCORRECTION_VERSION_MAJOR and so on (below) give the
///   version, and the CMake package offers itself to whoever asks for the same MAJOR. At run time, look into the
///   library's file: on Windows at its version resource (GetFileVersionInfo), on Linux at its package note (shown by
///   readelf -n). No exported function returns the version, and the file's name does not contain it.
///
/// Results
/// Operations that can fail return a result code (kSuccess is success) and leave a text in the object; see
/// GetLastErrorMessage. The checks of an operation are made in the order in which its codes are listed, and the first
/// that fails decides. A failed operation leaves the object as it was unless its description says otherwise. A success
/// does not clear an earlier text.
///
/// Files
/// The null device opens like a file: an empty one to load (kShortReadOrWrite), one that takes every save. Not opened
/// (kFileNotAccessible) are folders, and whatever could keep the caller waiting for ever: a pipe, a socket, a terminal.
///
/// Threads
/// Calls on one object are serialised by the object's own recursive lock; different objects are independent. Only
/// GetCorrectionLevel takes no lock. An import holds the lock of the importing object, then that of its source: two
/// threads must not import in opposite directions at the same time. Deleting an object that another thread is still
/// using is an error of the host.
///
/// Exceptions
/// Two operations may let an exception derived from std::exception reach the host, both when memory runs out:
/// ImportCorrections and SaveFile. The object stays usable and its lock is released. The factories, and the operations
/// of the offline store, may let std::bad_alloc through; those that switch the group also the exception of SaveFile,
/// since they write the group that is left. Catch by reference: a copy of the std::exception alone may lack the text.
/// No exception can be caught by a host built with MinGW.
#ifndef QX_BACKGROUNDCORRECTION_H
#define QX_BACKGROUNDCORRECTION_H

/// \name Version
/// The version of this header. The build takes the library's version from here.
/// @{

/// Changes that a host may have to follow.
#define QX_BACKGROUNDCORRECTION_VERSION_MAJOR 1
/// Additions.
#define QX_BACKGROUNDCORRECTION_VERSION_MINOR 0
/// Corrected errors.
#define QX_BACKGROUNDCORRECTION_VERSION_PATCH 0
/// The three numbers as a string literal, with dots between them.
#define QX_BACKGROUNDCORRECTION_VERSION_TEXT                                                                           \
    QX_BACKGROUNDCORRECTION_JOIN_(QX_BACKGROUNDCORRECTION_VERSION_MAJOR, QX_BACKGROUNDCORRECTION_VERSION_MINOR,        \
                                  QX_BACKGROUNDCORRECTION_VERSION_PATCH)
/// @}
/// \cond
#define QX_BACKGROUNDCORRECTION_JOIN_(major, minor, patch) QX_BACKGROUNDCORRECTION_QUOTE_(major, minor, patch)
#define QX_BACKGROUNDCORRECTION_QUOTE_(major, minor, patch) #major "." #minor "." #patch
/// \endcond

#if defined(_WIN32) && !defined(_WIN64)
#error "QX_BACKGROUNDCORRECTION is a 64-bit library: build this host for x64."
#endif

/// Defined where the compiler's own tables differ from those of the DLL, so that slot 0 is declared as a plain virtual
/// operation. The library's own unit tests, which MinGW builds whole, define QX_BACKGROUNDCORRECTION_OWN_TABLES: then
/// the destructor is a virtual one everywhere. Hosts do not define it.
#if (defined(__MINGW32__) || defined(__CYGWIN__)) && !defined(QX_BACKGROUNDCORRECTION_OWN_TABLES)
#define QX_BACKGROUNDCORRECTION_FOREIGN_TABLES
#endif

namespace QX_KRLSDK {

/// \name Result codes
/// kFirstArgumentInvalid to kSeventhArgumentInvalid say which argument was refused; one code therefore carries
/// different texts in different operations.
/// @{

/// All went well.
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
/// The first six operations are reserved: the library never calls them. Nor does it call the destructor, which is there
/// for the host. It is deliberately declared last: before the operations it would shift them by one slot in one
/// compiler's tables and by two in another's.
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
    /// \param width,height  the region's size in pixels
    /// \param delegateProcessing,delegateOption  as given to ApplyCorrection
    virtual unsigned int SubtractInPlace(unsigned short* image, const unsigned short* background, int width, int height,
                                         bool delegateProcessing, bool delegateOption) = 0;

    /// Index 7. Writes \p image minus \p background to \p output. Arguments as for SubtractInPlace.
    virtual unsigned int SubtractInto(unsigned short* output, const unsigned short* image,
                                      const unsigned short* background, int width, int height, bool delegateProcessing,
                                      bool delegateOption) = 0;

    /// Index 8. Does whatever else the host does to an image; called when there is nothing to subtract.
    virtual unsigned int ProcessInPlace(unsigned short* image, int width, int height) = 0;

    virtual ~ICorrectionDelegate() {} ///< Index 9 and, but for the Microsoft ABI, 10; never called by the library.
};

/// Background correction of 16-bit images. Objects are made by the exported factories and destroyed by
/// DeleteBackgroundCorrection (or, except with MinGW, by deleting through this interface, which is slot 0).
class QX_IBackgroundCorrection {
public:
#ifdef QX_BACKGROUNDCORRECTION_FOREIGN_TABLES
    /// Slot 0 as the DLL's tables have it; not for hosts, which call DeleteBackgroundCorrection.
    virtual void* DestroyInTheTablesForm(unsigned int flags) = 0;
#else
    /// Slot 0. Destroys the object and everything it owns. Writes no file: what was not saved is lost.
    virtual ~QX_IBackgroundCorrection() {}
#endif

    /// Slot 1. Builds a correction from a stack of dark frames and stores it at the end of the list: the frames are
    /// averaged pixel by pixel (single-precision sum in the order given, rounded half up; one frame is taken as it is)
    /// and the result is filtered with a 3 x 3 median. The active correction does not change.
    /// \param key                    name of the correction, not empty
    /// \param frames                 \p frameCount pointers, each to width * height pixels, read only; the pointers
    ///                               themselves are not checked
    /// \param frameCount             number of frames, at least 1
    /// \param width,height           size of every frame in pixels, at least 1
    /// \param exposureSeconds        exposure time of the frames in seconds, greater than 0 (NaN passes)
    /// \param lightIntensityPercent  light intensity of the frames in percent, greater than 0 (NaN passes)
    /// \return kHeaderOnlyMode; kFirstArgumentInvalid null key; kSecondArgumentInvalid null frames;
    ///         kThirdArgumentInvalid frameCount below 1; kFourthArgumentInvalid width below 1; kFifthArgumentInvalid
    ///         height below 1; kSixthArgumentInvalid exposure not above 0; kSeventhArgumentInvalid intensity not above
    ///         0; kFirstArgumentInvalid when the key is empty or taken, when exposure * intensity is 0 in single
    ///         precision, or when memory runs out. The list is then unchanged.
    ///
    /// Store: kFirstArgumentInvalid null key; kFirstArgumentInvalid (no text) when the key lacks a value for a grouping
    /// name; any failure of switching to the key's group; then as above. This call itself writes nothing to disk, but
    /// the group that is switched away from is written to its file when it was modified.
    virtual unsigned int AddCorrection(const char* key, const unsigned short** frames, int frameCount, int width,
                                       int height, float exposureSeconds, float lightIntensityPercent) = 0;

    /// Slot 2. Makes a stored correction the active one; the region becomes its whole image and the background is
    /// scaled anew. In header-only mode the activation succeeds while region and background stay as they were.
    /// \param key  letter case ignored; null means that no correction is active
    /// \return kFirstArgumentInvalid when no correction has this key: the previous one stays active.
    ///
    /// Store: switches to the key's group first and returns any failure of that.
    virtual unsigned int SetActiveCorrection(const char* key) = 0;

    /// Slot 3. \return the key of the active correction as it was stored, or null. Valid until that correction is
    /// deleted, overwritten, cleared or replaced by a load.
    ///
    /// Store: valid until another group is loaded, too.
    virtual const char* GetActiveCorrectionKey() = 0;

    /// Slot 4. \param index  position in the list, from 0, in the order of adding
    /// \return the key at that position, or null when \p index is not below the number of corrections. Valid as for
    ///         GetActiveCorrectionKey.
    ///
    /// Store: the keys of all groups, as they were given.
    virtual const char* GetCorrectionKey(unsigned int index) = 0;

    /// Slot 5. \return the number of stored corrections.
    ///
    /// Store: of all groups.
    virtual unsigned int GetNumberOfCorrections() = 0;

    /// Slot 6. Removes every correction, deactivates, and leaves header-only mode. Removes no file.
    /// \return always kSuccess.
    ///
    /// Store: also forgets its base name; the pending settings and grouping names stay.
    virtual unsigned int ClearCorrections() = 0;

    /// Slot 7. Removes one correction. The active correction is refused when \p key is spelled exactly like it; spelled
    /// in another letter case, it is removed and no correction is active afterwards.
    /// \return kHeaderOnlyMode; kFirstArgumentInvalid null key; kFirstArgumentInvalid the key is active;
    ///         kFirstArgumentInvalid no such key.
    ///
    /// Store: kFirstArgumentInvalid null key; switches to the key's group first and returns any failure of that; then
    /// as above.
    virtual unsigned int DeleteCorrection(const char* key) = 0;

    /// Slot 8. Sets how much of the background is subtracted.
    /// \param percent  clamped to 0 ... 100
    /// \return kHeaderOnlyMode. A failure to allocate the scaled background leaves the text "Error allocating
    ///         correction memory." but still returns kSuccess; ApplyCorrection then returns kOperationFailed. A change
    ///         that keeps the region's number of pixels needs no memory: the background stays where it is.
    ///
    /// Store: kept (unclamped) for groups loaded later.
    virtual unsigned int SetCorrectionLevel(int percent) = 0;

    /// Slot 9. Takes no lock. \return the level in percent; 50 of the 101 values come back one lower because the level
    /// is kept as a single-precision fraction (29 reads back as 28). 100 at first.
    ///
    /// Store: the value last given, -1 before that.
    virtual int GetCorrectionLevel() = 0;

    /// Slot 10. Sets the exposure (seconds) and light intensity (percent) of the images to be corrected; every value is
    /// accepted. The background is scaled by ((intensity * exposure) * level) / (reference intensity * reference
    /// exposure), in single precision. Both are -1 at first, which makes their product 1: until they are set, the
    /// background is divided by the product of the reference values.
    /// \return kHeaderOnlyMode; memory as for SetCorrectionLevel.
    ///
    /// Store: kept for groups loaded later.
    virtual unsigned int SetExposureAndIntensity(float exposureSeconds, float lightIntensityPercent) = 0;

    /// Slot 11. Gives the values last set, in seconds and percent. A null pointer is skipped.
    /// \return kHeaderOnlyMode.
    ///
    /// Store: kFirstArgumentInvalid null first pointer; kSecondArgumentInvalid null second pointer.
    virtual unsigned int GetExposureAndIntensity(float* exposureSeconds, float* lightIntensityPercent) = 0;

    /// Slot 12. Gives the exposure (seconds) and light intensity (percent) at which the active correction was taken;
    /// leaves the values alone when none is active. A null pointer is skipped.
    /// \return always kSuccess.
    ///
    /// Store: kFirstArgumentInvalid null first pointer; kSecondArgumentInvalid null second pointer; kNoCorrectionActive
    /// no group loaded.
    virtual unsigned int GetReferenceExposureAndIntensity(float* exposureSeconds, float* lightIntensityPercent) = 0;

    /// Slot 13. Gives minimum, maximum and average (truncated, not rounded) of the active correction's whole stored
    /// image; leaves the values alone when none is active or it has no pixels. A null pointer is skipped.
    /// \return kHeaderOnlyMode.
    ///
    /// Store: kFirstArgumentInvalid, kSecondArgumentInvalid, kThirdArgumentInvalid for a null pointer;
    /// kNoCorrectionActive no group loaded.
    virtual unsigned int GetCorrectionStatistics(unsigned short* minimum, unsigned short* maximum,
                                                 unsigned short* average) = 0;

    /// Slot 14. The same over the scaled background of the region. Codes as for GetCorrectionStatistics.
    virtual unsigned int GetScaledCorrectionStatistics(unsigned short* minimum, unsigned short* maximum,
                                                       unsigned short* average) = 0;

    /// Slot 15. Subtracts the scaled background from an image of the region's size; results below 0 become 0.
    /// With nothing active the image is copied to \p output (when that is another buffer); it has to have the region's
    /// size all the same, which is 1 x 1 at first.
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
    /// \return kHeaderOnlyMode; kFirstArgumentInvalid null image; kFourthArgumentInvalid lengths differ;
    ///         kSecondArgumentInvalid length is not that of the region; kOperationFailed when the background could not
    ///         be allocated; else kSuccess or the delegate's result. After a failure neither buffer has been written.
    ///
    /// Store: kFirstArgumentInvalid for any null image. With no group loaded it passes the image through:
    /// kHeaderOnlyMode; kFourthArgumentInvalid lengths differ; copy to \p output; then the delegate's ProcessInPlace
    /// with the pending region's size when \p useDelegate is true.
    virtual unsigned int ApplyCorrection(unsigned short* image, int imageLength, unsigned short* output,
                                         int outputLength, ICorrectionDelegate* delegate, bool useDelegate,
                                         bool delegateProcessing, bool delegateOption) = 0;

    /// Slot 16. Sets the rectangle of the active correction that images show, in pixels. At first (0, 0, 1, 1).
    /// With none active only the signs are checked. The correction's sizes count as signed: one that a file describes
    /// without pixels as 2^31 columns or more has no region at all. An import that replaces the active correction by
    /// one of another size leaves the region as it is: it then takes the pixel at (top + row) * width + left + column,
    /// with the new width, and 0 beyond the last.
    /// \return kHeaderOnlyMode; kFirstArgumentInvalid left, kSecondArgumentInvalid top, kThirdArgumentInvalid width or
    ///         kFourthArgumentInvalid height out of range: below 0 (sizes: below 1) or beyond the active correction.
    ///         Memory as for SetCorrectionLevel.
    ///
    /// Store: kept for groups loaded later; unchecked while no group is loaded.
    virtual unsigned int SetRegion(int left, int top, int width, int height) = 0;

    /// Slot 17. Gives the region in pixels.
    /// \return kHeaderOnlyMode; kFirstArgumentInvalid null left; kSecondArgumentInvalid null top; kThirdArgumentInvalid
    ///         null width; kThirdArgumentInvalid (not the fourth) null height.
    ///
    /// Store: kFirstArgumentInvalid, kSecondArgumentInvalid, kThirdArgumentInvalid, kFourthArgumentInvalid for a null
    /// pointer; -1 for each value that was never set, while no group is loaded.
    virtual unsigned int GetRegion(int* left, int* top, int* width, int* height) = 0;

    /// Slot 18. Copies the corrections of another live processor into this one, in their order. A key that is already
    /// there is skipped, or with \p overwrite replaced in its place.
    /// Throws (an exception derived from std::exception) when memory runs out; what was imported so far stays.
    /// \param source     another object of this library; not kept. With itself as source and \p overwrite every
    ///                   correction loses its pixels
    /// \param overwrite  whether a correction whose key is already there is replaced
    /// \return kHeaderOnlyMode; kFirstArgumentInvalid null source; kFirstArgumentInvalid source is not a live
    ///         processor.
    ///
    /// Store: takes live processors and other stores as source, group by group; what was imported before a failure
    /// stays. Given to itself with \p overwrite a store loses every second correction, the first one included.
    virtual unsigned int ImportCorrections(QX_IBackgroundCorrection* source, bool overwrite) = 0;

    /// Slot 19. Opens a calibration file without its pixels and enters header-only mode, also when it fails. The list
    /// is replaced once the file's count was read; nothing is active then.
    /// \param fileName  path; null counts as a file that cannot be opened
    /// \return kFileNotAccessible not opened or not a calibration file; kStructureVersionWrong another structure
    ///         version; kShortReadOrWrite the file ends early; kUnexpectedRecord see the calibration file's
    ///         description; kOperationFailed an entry was refused or memory ran out.
    ///
    /// Store: takes a base name or any one file of a store, or a file of structure version 1. kFirstArgumentInvalid
    /// null name; kFileNameInvalid; kFileNotFound; then as above. Failures leave the store unchanged, its mode
    /// included.
    virtual unsigned int LoadFileHeaderOnly(const char* fileName) = 0;

    /// Slot 20. Loads a calibration file whole and leaves header-only mode, also when it fails. Arguments and codes as
    /// for LoadFileHeaderOnly.
    ///
    /// Store: as for LoadFileHeaderOnly; but a file of structure version 1 whose last pixels are missing fails
    /// (kShortReadOrWrite) when the old store has been left already.
    virtual unsigned int LoadFile(const char* fileName) = 0;

    /// Slot 21. Writes all corrections to a calibration file. A file that failed half way stays as far as it was
    /// written. The object does not change.
    /// Throws (an exception derived from std::exception) when memory runs out.
    /// \param fileName  path; null counts as a file that cannot be created
    /// \return kHeaderOnlyMode; kFileNotAccessible not created; kShortReadOrWrite not written to its end, also when
    ///         only closing the file fails; kListEndedWhileSaving.
    ///
    /// Store: kFirstArgumentInvalid null name; then kHeaderOnlyMode. A store without a name is split into its group
    /// files and reopened from them; a named store is saved to itself or copied to another base name, whose old group
    /// files are removed first.
    virtual unsigned int SaveFile(const char* fileName) = 0;

    /// Slot 22. \return the text of the object's last failure, at most 256 characters; empty when there was none. The
    /// pointer stays valid for the life of the object, its text until the next failure.
    ///
    /// Store: a text of its own is cleared before it is returned, so that an empty text arrives; else the text of the
    /// loaded group's processor, or null when no group is loaded.
    virtual const char* GetLastErrorMessage() = 0;

#ifdef QX_BACKGROUNDCORRECTION_FOREIGN_TABLES
protected:
    ~QX_IBackgroundCorrection() {}
#endif
};

/// \name Types of the exported functions, for hosts that load the library at run time
/// @{

/// Type of CreateBackgroundCorrection.
typedef QX_IBackgroundCorrection* (*CreateBackgroundCorrectionFunction)();
/// Type of CreateBackgroundCorrectionOffline.
typedef QX_IBackgroundCorrection* (*CreateBackgroundCorrectionOfflineFunction)(char** groupingParameters, int count);
/// Type of DeleteBackgroundCorrection.
typedef unsigned int (*DeleteBackgroundCorrectionFunction)(QX_IBackgroundCorrection* object);
/// Type of GetLastBackgroundCorrectionDLLError.
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
/// \return kSuccess; kFirstArgumentInvalid when \p object is not one of this library's: it is left alone, and a text is
///         left for GetLastBackgroundCorrectionDLLError.
unsigned int DeleteBackgroundCorrection(QX_KRLSDK::QX_IBackgroundCorrection* object);

/// \return the text of the last refused deletion in this process, at most 512 characters, or an empty text; never null.
///         Takes no lock. Valid for the life of the process.
const char* GetLastBackgroundCorrectionDLLError();

} // extern "C"

#endif
