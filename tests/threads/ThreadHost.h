// What the thread tests have in common: threads that begin at the same moment, and hosts that do anything at all.
#ifndef QXBC_TESTS_THREADS_THREADHOST_H
#define QXBC_TESTS_THREADS_THREADHOST_H

#include "QX_BackgroundCorrection.h"

#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#if defined(__SANITIZE_THREAD__)
#define QXBC_UNDER_TSAN 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define QXBC_UNDER_TSAN 1
#endif
#endif
#ifndef QXBC_UNDER_TSAN
#define QXBC_UNDER_TSAN 0
#endif

namespace ThreadHost {

using QX_KRLSDK::QX_IBackgroundCorrection;

// As many as most tests run together.
constexpr int kThreads = 4;

// Runs `work` with the numbers 0 to `count` - 1, each on a thread of its own; all begin at once, after each has been
// started. Returns when all have ended.
void RunTogether(int count, const std::function<void(int)>& work);

// Made by a factory; destroyed with this.
class TObject {
public:
    TObject();                                                  // a live processor
    explicit TObject(const std::vector<std::string>& grouping); // a store
    ~TObject();
    TObject(const TObject&) = delete;
    TObject& operator=(const TObject&) = delete;

    QX_IBackgroundCorrection* operator->() const { return object; }
    QX_IBackgroundCorrection* Get() const { return object; }

private:
    QX_IBackgroundCorrection* object;
};

// All frames are of this size and every pixel of a frame has the same value, so that an image that was corrected with
// one background, and not with the halves of two, has one value as well.
constexpr int kSide = 8;
constexpr int kPixels = kSide * kSide;

unsigned int AddFlat(QX_IBackgroundCorrection& object, const std::string& key, std::uint16_t value);

// Corrects an image in one of three ways. Gives the code; fails the test when pixels differ among themselves.
unsigned int ApplyToFlat(QX_IBackgroundCorrection& object, std::uint16_t value, unsigned int way);

// Does one operation after the other, drawn by lot, with every slot of the interface among them. Fails the test when
// a code comes that the operation does not give. Texts and keys that the object hands out are not read: another thread
// may be replacing them, and that is for hosts to arrange.
class TMixer {
public:
    TMixer(QX_IBackgroundCorrection& mixedObject, unsigned int seed, const std::vector<std::string>& fileNames)
        : object(mixedObject), random(seed), files(fileNames)
    {}

    void Do(int operations);
    // Sources that may be imported from; none at first.
    std::vector<QX_IBackgroundCorrection*> sources;

private:
    void One();
    unsigned int Below(unsigned int limit) { return static_cast<unsigned int>(random() % limit); }
    std::string Key();
    const char* File() { return files[Below(static_cast<unsigned int>(files.size()))].c_str(); }

    QX_IBackgroundCorrection& object;
    std::mt19937 random;
    std::vector<std::string> files;
};

} // namespace ThreadHost

#endif
