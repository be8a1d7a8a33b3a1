// The offline store.
#ifndef OFFLINE_TBACKGROUNDCORRECTIONFILEMANAGER_H
#define OFFLINE_TBACKGROUNDCORRECTIONFILEMANAGER_H

#include "QX_BackgroundCorrection.h"

#include "boundary/TAutoVelmorCriticalSection.h"
#include "boundary/TMessageBuffer.h"
#include "data/containers/TKeyText.h"
#include "data/containers/TOrderedRegister.h"
#include "offline/GroupNaming.h"
#include "offline/TDualString.h"
#include "processor/TBackgroundCorrectionProcessorUINT16.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

// Spreads corrections over one calibration file per group of grouping values, and loads one group at a time into a
// processor of its own. The operations of the interface are documented there.
//
// A store without a base file name is unnamed: one processor then holds the corrections of every group, until SaveFile
// splits them. Settings made while no group is loaded are kept and applied to every group that is loaded later.
//
// Every operation holds the recursive lock for its whole run, except GetCorrectionLevel. Locks are taken in one order:
// this object, its processor, an import source. May let std::bad_alloc through, and TZRException when there is no
// memory to write a group; it is then as it was before the step that failed. An import that ends so leaves nothing
// active.
class TBackgroundCorrectionFileManager : public QX_KRLSDK::QX_IBackgroundCorrection {
public:
    TBackgroundCorrectionFileManager() = default;
    // Writes nothing: what was not saved is lost.
    ~TBackgroundCorrectionFileManager() override;
    TBackgroundCorrectionFileManager(const TBackgroundCorrectionFileManager&) = delete;
    TBackgroundCorrectionFileManager& operator=(const TBackgroundCorrectionFileManager&) = delete;

    // Appends grouping names; called once by the factory. A named store is written and cleared first. 513 with a text:
    // no names, or a name that is null or empty; the names before that stay.
    unsigned int SetGroupingParameters(const char* const* names, int count);

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

private:
    using TProcessor = TBackgroundCorrectionProcessorUINT16;
    using TGuard = VelmorUtility::TAutoVelmorCriticalSection;

    // The loaded group: a processor, or none, and the values that it was loaded for.
    struct GroupSlot {
        std::unique_ptr<TProcessor> processor;
        TTextList values;
    };

    // A running call of ApplyCorrection. The host's delegate may call back and have another group loaded; the
    // processor that called the delegate then lives on here until the call returns.
    struct TApplying {
        explicit TApplying(TBackgroundCorrectionFileManager& manager)
            : processor(manager.currentGroup.processor.get()), innermost(manager.applying), outer(manager.applying)
        {
            innermost = this;
        }
        ~TApplying() { innermost = outer; }
        TApplying(const TApplying&) = delete;
        TApplying& operator=(const TApplying&) = delete;

        TProcessor* processor;
        TApplying*& innermost;
        TApplying* outer; // the call from whose delegate this one came, or null
        std::unique_ptr<TProcessor> dismissed;
    };

    struct TExactRule {
        static const char* Text(const TKeyText& text) noexcept { return text.Text(); }
        static bool AreEqual(const char* left, const char* right) noexcept;
        static std::uint64_t Hash(const char* text, const TextHash::TSeed& seed) noexcept
        {
            return TextHash::Of(text, seed);
        }
    };
    using TKeyRegister = TOrderedRegister<TKeyText, TExactRule>;

    // Leaves the text of a failure and gives its code.
    template <typename... TArguments>
    unsigned int Fail(unsigned int code, const char* format, TArguments... arguments) noexcept
    {
        message.Format(format, arguments...);
        return code;
    }

    unsigned int CheckStatistics(const unsigned short* minimum, const unsigned short* maximum,
                                 const unsigned short* average);

    // Groups (TBackgroundCorrectionFileManagerGroups.cpp).
    unsigned int SelectGroup(const TDualString& key);
    bool IsCurrentGroup(const TTextList& values) const;
    void ApplyPendingSettings(TProcessor& processor);
    void ReplaceCurrentGroup(std::unique_ptr<TProcessor> processor, TTextList values) noexcept;
    void ReleaseCurrentGroup();
    TBackgroundCorrectionEntry* FindEntryForKey(const TDualString& key);

    // Import (TBackgroundCorrectionFileManagerImport.cpp).
    class TImportSource;
    unsigned int ImportKey(TImportSource& source, unsigned int index, const TDualString& key, bool overwrite);

    // Files (TBackgroundCorrectionFileManagerFiles.cpp).
    unsigned int DeriveBaseFileName(const TDualString& path, TTextList& names, TDualString& base,
                                    std::uint32_t& structureVersion);
    static void CollectCorrectionKeys(TProcessor& processor, TKeyRegister& collected);
    static std::vector<std::vector<std::size_t>> RetainOnlyKeys(TProcessor& processor,
                                                                const GroupNaming::TBuckets& buckets);
    unsigned int RemoveStoreFiles(const TDualString& path);
    unsigned int WriteLoadedGroup();
    unsigned int ReplaceTarget(const TDualString& path, TDualString& targetBase);
    unsigned int SplitIntoGroups(const TDualString& targetBase, const GroupNaming::TBuckets& buckets);
    unsigned int CopyGroups(const TDualString& targetBase);

    GroupSlot currentGroup;
    TTextList& currentGroupValues = currentGroup.values; // what the loaded group's file is named after
    TApplying* applying = nullptr;                       // the innermost call
    std::unique_ptr<TKeyRegister> keys =
        std::make_unique<TKeyRegister>(); // of all groups, as they were given, in the order in which they became known
    TTextList groupingNames;              // in the order given
    TDualString baseFileName;             // empty while the store is unnamed
    TDualString spareFileName;            // always empty; kept beside the base file name
    float exposureSeconds = -1.0f;        // pending; -1: unset
    float lightIntensityPercent = -1.0f;  // pending; -1: unset
    int regionLeft = -1;                  // pending; -1 in any of the four: unset
    int regionTop = -1;
    int regionWidth = -1;
    int regionHeight = -1;
    std::atomic<int> correctionLevel{-1}; // pending, percent; -1: unset; atomic because it is read without the lock
    bool headerOnly = false;
    VelmorUtility::TOwnedCriticalSection lock;
    TObjectMessageBuffer message;
};

#endif
