#include "report/TCorrectionSet.h"

#include "base/Wording.h"
#include "calibration/CalibrationFile.h"
#include "calibration/TCalibrationWalk.h"
#include "calibration/TWorkingFolder.h"

#include "file/CalibrationFormat.h"

#include <filesystem>

namespace workbench {

namespace {

using QX_KRLSDK::TBackgroundCorrection;

TBackgroundCorrection MakeObject(const TContext& context, const std::optional<TStorePlace>& store)
{
    const QX_KRLSDK::TBackgroundCorrectionLibrary library = context.Library();
    return store ? library.MakeStore(store->names) : library.MakeProcessor();
}

} // namespace

bool IsCalibrationFile(const std::string& path)
{
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) &&
           WalkCalibrationFile(path).structureVersion != CalibrationFormat::kGroupedVersion;
}

TStorePlace StoreOf(const std::string& path, const std::vector<std::string>& groups)
{
    std::error_code error;
    if (groups.empty() && !std::filesystem::exists(path, error))
        throw TToolError(path,
                         "there is no such calibration file or group file; a store's base name needs its grouping "
                         "names (--group)");
    return FindStore(path, groups);
}

TCorrectionSet::TCorrectionSet(const TContext& context, const std::string& name, const std::vector<std::string>& groups)
    : path(name), store(IsCalibrationFile(name) ? std::optional<TStorePlace>() : StoreOf(name, groups)),
      object(MakeObject(context, store))
{
    if (store) {
        for (const std::string& file : OwnFiles(*store))
            RequireWhole(store->PathOf(file).string());
        const TWorkingFolder working(store->folder);
        Call(store->Text(), [&] { object.Load(store->base); });
    } else {
        LoadWhole(object, path);
    }
    keys = object.Keys();
    if (keys.empty())
        throw TToolError(path, "holds no correction; there is nothing to report");
}

std::string TCorrectionSet::FileOf(std::size_t index) const
{
    return store ? store->PathOf(GroupFileOf(*store, keys[index])).string() : path;
}

TSize TCorrectionSet::Activate(std::size_t index)
{
    Call(path + ": key '" + Printable(keys[index]) + "'", [&] {
        if (store) {
            const TWorkingFolder working(store->folder);
            object.SetActive(keys[index]);
        } else {
            object.SetActive(keys[index]);
        }
        const TBackgroundCorrection::TRegion region = object.Region();
        size = {region.width, region.height};
    });
    return size;
}

TReference TCorrectionSet::Reference()
{
    return object.Reference();
}

TBackgroundCorrection::TStatistics TCorrectionSet::Statistics()
{
    return object.Statistics();
}

void TCorrectionSet::SetConditions(const TReference& conditions)
{
    Call(path, [&] { object.SetExposureAndIntensity(conditions.exposureSeconds, conditions.lightIntensityPercent); });
}

void TCorrectionSet::SetLevel(int percent)
{
    Call(path, [&] { object.SetLevel(percent); });
}

void TCorrectionSet::LookAtBackground(TImage& image, const std::function<void(const std::uint16_t*)>& look)
{
    // As a delegate of the host, which is given the background as it would be subtracted.
    const QX_KRLSDK::TImageView view(image.pixels.data(), image.size.width, image.size.height);
    Call(path, [&] { object.Apply(view, [&look](const QX_KRLSDK::TDelegateTask& task) { look(task.background); }); });
}

void TCorrectionSet::CopyStored(TImage& image)
{
    SetConditions(Reference());
    image.size = size;
    image.pixels.resize(size.Pixels());
    LookAtBackground(image, [&image](const std::uint16_t* background) {
        image.pixels.assign(background, background + image.pixels.size());
    });
}

void TCorrectionSet::Apply(TImage& image)
{
    Call(path, [&] { object.Apply(image.pixels.data(), static_cast<int>(image.pixels.size())); });
}

} // namespace workbench
