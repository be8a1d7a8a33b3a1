#ifndef QXBACKGROUND_REPORT_TCORRECTIONSET_H
#define QXBACKGROUND_REPORT_TCORRECTIONSET_H

#include "calibration/TContext.h"
#include "calibration/TStorePlace.h"
#include "images/TImage.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

// How frames were taken, as the library keeps it.
using TReference = QX_KRLSDK::TBackgroundCorrection::TReference;

// All corrections of a calibration file or of an offline store, looked at through the library alone.
class TCorrectionSet {
public:
    // `groups`: see FindStore; a calibration file has none. Throws TToolError when it does not load whole.
    TCorrectionSet(const TContext& context, const std::string& path, const std::vector<std::string>& groups);

    const std::string& Path() const { return path; }
    const std::vector<std::string>& Keys() const { return keys; }
    const std::optional<TStorePlace>& Store() const { return store; }
    // The file that holds a correction.
    std::string FileOf(std::size_t index) const;

    // Makes a correction the active one; returns its size. The conditions stay as they were last set.
    TSize Activate(std::size_t index);
    TReference Reference();
    QX_KRLSDK::TBackgroundCorrection::TStatistics Statistics();
    void SetConditions(const TReference& conditions);
    void SetLevel(int percent);
    // Calls `look` with what the library would subtract from `image`, which has the active correction's size.
    void LookAtBackground(TImage& image, const std::function<void(const std::uint16_t* background)>& look);
    // The pixels of the active correction, by way of its own conditions, at which the library scales by exactly 1.
    void CopyStored(TImage& image);
    void Apply(TImage& image);

private:
    std::string path;
    std::optional<TStorePlace> store;
    QX_KRLSDK::TBackgroundCorrection object;
    std::vector<std::string> keys;
    TSize size; // of the active correction
};

// Whether the path is one calibration file, no store.
bool IsCalibrationFile(const std::string& path);
// The store that it is otherwise. Throws TToolError, see FindStore; also where nothing of that name is there.
TStorePlace StoreOf(const std::string& path, const std::vector<std::string>& groups);

} // namespace workbench

#endif
