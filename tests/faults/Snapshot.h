// An object seen from outside, as text: what is compared before and after something has failed.
#ifndef TESTS_FAULTS_SNAPSHOT_H
#define TESTS_FAULTS_SNAPSHOT_H

#include "QX_BackgroundCorrection.h"

#include "file/FileBytes.h"
#include "processor/TBackgroundCorrectionProcessorUINT16.h"

#include <map>
#include <string>
#include <vector>

// The objects of one attempt. Destroyed through the export.
struct TWorld {
    TWorld() = default;
    ~TWorld();
    TWorld(const TWorld&) = delete;
    TWorld& operator=(const TWorld&) = delete;

    void MakeProcessor();
    // Groups by A and B.
    void MakeStore();

    bool IsStore() const;
    // The object, when it is a live processor.
    TBackgroundCorrectionProcessorUINT16& Processor() const;
    // The object's text, without what reading it does to a store's.
    std::string Text() const;
    // Takes a store's own text away, so that the next one is seen.
    void ForgetText() const;

    QX_KRLSDK::QX_IBackgroundCorrection* object = nullptr;
    QX_KRLSDK::QX_IBackgroundCorrection* source = nullptr; // of imports
    std::string keyToUse = "A,use,B,use";                  // a new one

private:
    const char* ownText = nullptr; // of a store
};

struct TSnapshot {
    std::map<std::string, std::string> fields;      // empty without an object
    std::vector<std::string> entries;               // a live processor's corrections with their pixels, a store's keys
    std::map<std::string, FileBytes::TBytes> files; // of the current folder
};

namespace Snapshots {

// Changes nothing but the texts.
TSnapshot Take(const TWorld& world);
// The same with every correction as it is found by activating it, which switches a store's groups.
TSnapshot TakeWithContents(const TWorld& world);
std::map<std::string, FileBytes::TBytes> Files();
void RestoreFiles(const std::map<std::string, FileBytes::TBytes>& files);

// What holds for every object at any time and does not; empty: nothing.
std::string Contradictions(const TWorld& world);
// Whether a thread that is not this one gets at the object.
bool LockIsFree(QX_KRLSDK::QX_IBackgroundCorrection* object);
// Adds, chooses, applies, saves and loads; all corrections of the list must come back when `everything` is said to be
// in order, otherwise that of a list made anew. What went wrong, or an empty text.
std::string Use(TWorld& world, bool everything);
// Descriptors of the process; 0 where the system does not tell.
std::size_t OpenDescriptors();

// What differs, for people; empty: nothing.
std::string Difference(const TSnapshot& expected, const TSnapshot& actual);

} // namespace Snapshots

// Stores a correction made from one even frame, so that its pixels are known.
unsigned int AddEven(QX_KRLSDK::QX_IBackgroundCorrection& object, const char* key, int width, int height,
                     unsigned short value);

#endif
