// The main library, loaded from this one's own folder, and its four exports.
#ifndef FLAT_TMAINLIBRARY_H
#define FLAT_TMAINLIBRARY_H

#include "QX_BackgroundCorrection.h"

#include <atomic>
#include <cstddef>

class TMainLibrary {
public:
    // The library, loaded by the first who asks; null when that fails, and the next one tries again. `reason`, of
    // `size` characters (at least 1), then says why.
    static const TMainLibrary* Get(char* reason, std::size_t size) noexcept;
    static const TMainLibrary* Get() noexcept;

    QX_KRLSDK::QX_IBackgroundCorrection* CreateProcessor() const { return create.load()(); }
    QX_KRLSDK::QX_IBackgroundCorrection* CreateStore(char** groupingParameters, int count) const
    {
        return createOffline.load()(groupingParameters, count);
    }
    unsigned int Delete(QX_KRLSDK::QX_IBackgroundCorrection* object) const { return destroy.load()(object); }
    const char* LastError() const { return lastError.load()(); }

private:
    bool Load(char* reason, std::size_t size) noexcept;

    // Threads that come at the same time all load, and write the same.
    std::atomic<QX_KRLSDK::CreateBackgroundCorrectionFunction> create{nullptr};
    std::atomic<QX_KRLSDK::CreateBackgroundCorrectionOfflineFunction> createOffline{nullptr};
    std::atomic<QX_KRLSDK::DeleteBackgroundCorrectionFunction> destroy{nullptr};
    std::atomic<QX_KRLSDK::GetLastBackgroundCorrectionDLLErrorFunction> lastError{nullptr};
    std::atomic<bool> isLoaded{false}; // set last
};

#endif
