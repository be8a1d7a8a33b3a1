// The live processor.
#ifndef PROCESSOR_TBACKGROUNDCORRECTIONPROCESSORUINT16_H
#define PROCESSOR_TBACKGROUNDCORRECTIONPROCESSORUINT16_H

#include "QX_BackgroundCorrection.h"

#include "boundary/TAutoVelmorCriticalSection.h"
#include "boundary/TMessageBuffer.h"
#include "data/TCorrectionList.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

class TCalibrationFileReader;

// Holds corrections of 16-bit images in memory, and applies the active one. The operations of the interface are
// documented there.
//
// Owns its corrections and the scaled background. Every operation holds the recursive lock for its whole run, except
// GetCorrectionLevel. Invariants: the active entry is null or an element of the list; the scaled background, when
// present, has regionWidth * regionHeight elements.
class TBackgroundCorrectionProcessorUINT16 : public QX_KRLSDK::QX_IBackgroundCorrection {
public:
    TBackgroundCorrectionProcessorUINT16();
    ~TBackgroundCorrectionProcessorUINT16() override;
    TBackgroundCorrectionProcessorUINT16(const TBackgroundCorrectionProcessorUINT16&) = delete;
    TBackgroundCorrectionProcessorUINT16& operator=(const TBackgroundCorrectionProcessorUINT16&) = delete;

    unsigned int AddCorrection(const char* key, const unsigned short** frames, int frameCount, int width, int height,
                               float exposureSeconds, float lightIntensityPercent) override;
    unsigned int SetActiveCorrection(const char* key) override;
    const char* GetActiveCorrectionKey() override;
    const char* GetCorrectionKey(unsigned int index) override;
    unsigned int GetNumberOfCorrections() override;
    unsigned int ClearCorrections() override;
    unsigned int DeleteCorrection(const char* key) override;
    unsigned int SetCorrectionLevel(int percent) override;
    int GetCorrectionLevel() override;
    unsigned int SetExposureAndIntensity(float exposureSeconds, float lightIntensityPercent) override;
    unsigned int GetExposureAndIntensity(float* exposureSeconds, float* lightIntensityPercent) override;
    unsigned int GetReferenceExposureAndIntensity(float* exposureSeconds, float* lightIntensityPercent) override;
    unsigned int GetCorrectionStatistics(unsigned short* minimum, unsigned short* maximum,
                                         unsigned short* average) override;
    unsigned int GetScaledCorrectionStatistics(unsigned short* minimum, unsigned short* maximum,
                                               unsigned short* average) override;
    unsigned int ApplyCorrection(unsigned short* image, int imageLength, unsigned short* output, int outputLength,
                                 QX_KRLSDK::ICorrectionDelegate* delegate, bool useDelegate, bool delegateProcessing,
                                 bool delegateOption) override;
    unsigned int SetRegion(int left, int top, int width, int height) override;
    unsigned int GetRegion(int* left, int* top, int* width, int* height) override;
    unsigned int ImportCorrections(QX_KRLSDK::QX_IBackgroundCorrection* source, bool overwrite) override;
    unsigned int LoadFileHeaderOnly(const char* fileName) override;
    unsigned int LoadFile(const char* fileName) override;
    unsigned int SaveFile(const char* fileName) override;
    const char* GetLastErrorMessage() override;

    // For the offline store, which keeps its groups in processors of this class.

    // Writes a file of structure version 2, with the grouping names before the corrections. Codes as SaveFile.
    unsigned int SaveGroupedFile(const char* path, const std::vector<std::string>& groupingNames);

    // The same for the corrections at some positions only, in that order. Leaves no text: it stands for saving another
    // processor that holds just these.
    unsigned int SaveGroupedFileOf(const char* path, const std::vector<std::string>& groupingNames,
                                   const std::vector<std::size_t>& positions);

    // Loads a file of structure version 2 or 1, and enters or leaves header-only mode, also when that fails.
    // `groupingNames` becomes the names that the file records: none for version 1, and none after a failure to read
    // them. `structureVersion` becomes 2, or the file's version on 772. Codes as LoadFile; 772 for any other version.
    // May throw std::bad_alloc for the names.
    unsigned int LoadGroupedFile(const char* path, std::vector<std::string>& groupingNames,
                                 std::uint32_t& structureVersion, bool enterHeaderOnly);
    unsigned int LoadGroupedFileHeaderOnly(const char* path, std::vector<std::string>& groupingNames,
                                           std::uint32_t& structureVersion);
    unsigned int LoadGroupedFileFull(const char* path, std::vector<std::string>& groupingNames,
                                     std::uint32_t& structureVersion);

    // The entry at a position, or null. Valid until it is removed.
    TBackgroundCorrectionEntry* GetEntryAt(unsigned int index);

    // The entry whose key is spelled exactly so, or null. Valid until it is removed.
    TBackgroundCorrectionEntry* FindEntrySpelled(const char* key);

    // Adds a copy of an entry, also in header-only mode. 1024 when the key is taken or memory runs out.
    unsigned int AddEntryCopy(const TBackgroundCorrectionEntry& entry);

    // Set when the corrections change, and never cleared: a file that was written from them does not count.
    bool IsModified() const noexcept { return modified; }

    // The texts of the file reader and writer about single items of a file.
    const char* FileMessage() const noexcept { return fileMessage->Text(); }

    // The object's lock, for a store that has to hold it over several operations.
    Platform::CRITICAL_SECTION* Lock() noexcept { return lock.Get(); }

private:
    using TGuard = VelmorUtility::TAutoVelmorCriticalSection;

    // Leaves the text of a failure and gives its code.
    template <typename... TArguments>
    unsigned int Fail(unsigned int code, const char* format, TArguments... arguments) noexcept
    {
        message.Format(format, arguments...);
        return code;
    }

    unsigned int RecalculateScaledBackground() noexcept;
    std::uint16_t* ScaledBackground() const noexcept; // which must not be null
    float ScaleFactor() const noexcept;
    unsigned int LoadUngroupedFile(const char* path, bool enterHeaderOnly);
    unsigned int ReadCorrections(TCalibrationFileReader& reader);
    void Deactivate() noexcept;

    VelmorUtility::TOwnedCriticalSection lock; // first made, last removed
    std::unique_ptr<TObjectMessageBuffer> fileMessage;
    std::unique_ptr<TCorrectionList> corrections;
    bool correctionActive = false;
    TObjectMessageBuffer message;
    TBackgroundCorrectionEntry* activeEntry = nullptr; // an element of the list
    float exposure = -1.0f;                            // seconds
    float lightIntensity = -1.0f;                      // percent
    int regionLeft = 0;
    int regionTop = 0;
    int regionWidth = 1;
    int regionHeight = 1;
    std::atomic<float> correctionLevel{1.0f};          // fraction; atomic because it is read without the lock
    std::unique_ptr<std::uint16_t[]> scaledBackground; // begins in front of its pixels
    std::size_t scaledBackgroundLength = 0;
    bool headerOnly = false;
    bool modified = false;
};

#endif
