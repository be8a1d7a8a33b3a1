// Every text that the library leaves behind, once. The codes that go with them are in the public header; which
// operation uses which is documented there, operation by operation.
#ifndef BOUNDARY_MESSAGES_H
#define BOUNDARY_MESSAGES_H

namespace Messages {

// Library error buffer.
constexpr char kNotAnInstance[] = "Cannot delete object as it is not a valid QX_IBackgroundCorrection instance.";

// Modes and memory.
constexpr char kHeaderOnly[] = "This file has been opened in header only mode. Cannot modify or apply corrections.";
constexpr char kHeaderOnlyStatistics[] =
    "This file has been opened in header only mode. Cannot access correction data information.";
constexpr char kErrorAllocating[] = "Error allocating correction memory.";
constexpr char kNoCorrectionActive[] = "No correction active.";

// Adding, finding and removing corrections.
constexpr char kInputKeyNull[] = "Input key is NULL.";
constexpr char kInputImagesNull[] = "Input images are NULL.";
constexpr char kInvalidNumberOfImages[] = "Invalid number of images.";
constexpr char kInvalidWidth[] = "Invalid input width.";
constexpr char kInvalidHeight[] = "Invalid input height.";
constexpr char kExposureNotPositive[] = "Exposure time must be greater than zero.";
constexpr char kIntensityNotPositive[] = "Light intensity must be greater than zero.";
constexpr char kCouldNotAdd[] = "Could not add background correction - '%s'";
constexpr char kKeyNotFound[] = "Background correction key not found - '%s'";
constexpr char kSuppliedKeyNull[] = "Supplied key is NULL.";
constexpr char kSuppliedKeyActive[] = "The supplied key is currently active.";
constexpr char kSuppliedKeyNotFound[] = "The supplied key was not found - '%s'";

// The data layer's exceptions.
constexpr char kKeyNotValid[] = "The key is not valid - '%s'.";
constexpr char kProductIsZero[] = "Reference exposure and light intensity product is zero [ %f ] * [ %f ].";
constexpr char kKeyNotUnique[] = "Supplied Key is not unique - '%s'";
constexpr char kIndexOutOfRange[] = "Index %d is out of range - Size = %d";
constexpr char kOutOfMemoryConstructing[] = "Ran out of memory in Background correction construction.\n"
                                            "Try restarting the application if the problem persists.";
constexpr char kOutOfMemoryCreating[] = "Ran out of memory when trying to create new correction.\n"
                                        "Try restarting the application if the problem persists.";
constexpr char kOutOfMemoryAdding[] = "Ran out of memory when trying to add new correction.\n"
                                      "Try restarting the application if the problem persists.";
constexpr char kOutOfMemoryImporting[] = "Could not allocate memory during import.";

// Region.
constexpr char kLeftOutOfRange[] = "The input left [ %d ] is out of range.";
constexpr char kTopOutOfRange[] = "The input top [ %d ] is out of range.";
constexpr char kWidthOutOfRange[] = "The input width [ %d ] is out of range.";
constexpr char kHeightOutOfRange[] = "The input height [ %d ] is out of range.";
constexpr char kInputLeftNull[] = "The input left is NULL.";
constexpr char kInputTopNull[] = "The input top is NULL.";
constexpr char kInputWidthNull[] = "The input width is NULL.";
constexpr char kInputHeightNull[] = "The input height is NULL.";

// Applying.
constexpr char kInputImageNull[] = "The input image is NULL.";
constexpr char kImageSizesDiffer[] = "The input image sizes do not match.";
constexpr char kImageSizeWrong[] = "The input image size does not match parameters.";

// Import.
constexpr char kImportSourceNull[] = "Supplied import source is NULL.";
constexpr char kImportSourceWrongType[] = "The supplied import source is not the correct type.";
constexpr char kImportFailed[] = "Error importing corrections from supplied object.";

// Calibration files: opening and entries (main message buffer).
constexpr char kCouldNotCreateFile[] = "Could not create file - '%s'";
constexpr char kCouldNotOpenFile[] = "Could not open file - '%s'";
constexpr char kHeaderNotCorrect[] = "Could not load file - '%s'\nHeader not correct.";
constexpr char kStructureVersionWrong[] = "Could not load file - '%s'\nStructure version not correct [ %d ].";
constexpr char kListEndedWhileSaving[] = "Unexpected end to list of corrections while saving.";
constexpr char kReadMemory[] = "Memory allocation error during reading.";
constexpr char kCouldNotCreateEntry[] = "Couldn't create new background entry - '%s'";
constexpr char kErrorLoading[] = "Error loading file - '%s'";

// Calibration files: single items (file message buffer).
constexpr char kCouldNotWriteEntryId[] = "Couldn't write Entry ID in calibration file.";
constexpr char kCouldNotWriteEntryVersion[] = "Couldn't write Entry Version in calibration file.";
constexpr char kCouldNotWriteEntryDataLength[] = "Couldn't write Entry Data Length in calibration file.";
constexpr char kCouldNotWriteHeader[] = "Couldn't write Data in calibration file.";
constexpr char kCouldNotReadEntryId[] = "Couldn't read Entry ID from calibration file.";
constexpr char kCouldNotReadEntryVersion[] = "Couldn't read Entry Version from calibration file.";
constexpr char kCouldNotReadEntryDataLength[] = "Couldn't read Entry Data Length from calibration file.";
// Also what a failed write of a record's data says: hosts have always seen these words there.
constexpr char kCouldNotReadData[] = "Couldn't read Data from calibration file.";
constexpr char kInvalidData[] = "Calibration file contains invalid data.";
constexpr char kUnexpectedEndOfFile[] = "Unexpected end of calibration file.";

// Offline store.
constexpr char kGroupingParametersNull[] = "Grouping parameters are NULL.";
constexpr char kGroupingParameterNull[] = "One of the grouping parameter is NULL.";
constexpr char kIncorrectFileName[] = "Incorrect file name.";
constexpr char kInputFileNameNull[] = "Input file name is NULL.";
constexpr char kStoreImportSourceNull[] = "The supplied import source is NULL.";
constexpr char kStoreImageNull[] = "Input Source image 1 pointer is NULL.";
constexpr char kExposurePointerNull[] = "Exposure seconds pointer is NULL.";
constexpr char kIntensityPointerNull[] = "Light intensity percent pointer is NULL.";
constexpr char kReferenceExposurePointerNull[] = "Reference exposure seconds pointer is NULL.";
constexpr char kReferenceIntensityPointerNull[] = "Reference light intensity percent pointer is NULL.";
constexpr char kMinimumPointerNull[] = "Min pointer is NULL.";
constexpr char kMaximumPointerNull[] = "Max pointer is NULL.";
constexpr char kAveragePointerNull[] = "Average pointer is NULL.";
constexpr char kLeftPointerNull[] = "Left pointer is NULL.";
constexpr char kTopPointerNull[] = "Top pointer is NULL.";
constexpr char kWidthPointerNull[] = "Width pointer is NULL.";
constexpr char kHeightPointerNull[] = "Height pointer is NULL.";

} // namespace Messages

#endif
