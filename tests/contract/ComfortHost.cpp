// A host with the comfort header: contract_comfort_host <library> <a library that lacks an export>. Built natively, in
// the Microsoft ABI and with MinGW. ComfortImages.cpp and ComfortStore.cpp hold the checks of images and of stores.
#include "ComfortChecks.h"

#include <cstdio>

using Checks::Equal;
using Checks::Text;
using Checks::That;
using namespace QX_KRLSDK;

namespace {

void CheckVersions(const TBackgroundCorrectionLibrary& library)
{
    constexpr TBackgroundCorrectionVersion kHeader = kBackgroundCorrectionHeaderVersion;
    static_assert(kHeader.majorNumber == QX_BACKGROUNDCORRECTION_VERSION_MAJOR &&
                  kHeader.minorNumber == QX_BACKGROUNDCORRECTION_VERSION_MINOR &&
                  kHeader.patchNumber == QX_BACKGROUNDCORRECTION_VERSION_PATCH);
    Equal(kHeader.Text(), QX_BACKGROUNDCORRECTION_VERSION_TEXT, "version of the headers");
    const auto version = library.Version();
    if (That(version.has_value(), "the library tells its version")) {
        Equal(version->Text(), QX_BACKGROUNDCORRECTION_VERSION_TEXT, "version of the library");
        That(version->Serves(kHeader), "the library serves its own headers");
    }
    using V = TBackgroundCorrectionVersion;
    static_assert(V{1, 2, 3}.Serves(V{1, 2, 4}) && V{1, 3, 0}.Serves(V{1, 2, 4}), "what is newer serves");
    static_assert(!V{1, 1, 9}.Serves(V{1, 2, 0}), "what lacks additions does not");
    static_assert(!V{2, 2, 0}.Serves(V{1, 2, 0}) && !V{0, 2, 0}.Serves(V{1, 2, 0}), "nor does another interface");
}

void CheckLoading(const char* lacking)
{
    const auto textOf = [](const char* path) {
        try {
            const TBackgroundCorrectionLibrary library(path);
            return std::string("loaded");
        } catch (const std::runtime_error& error) {
            return std::string(error.what());
        }
    };
    That(textOf("./comfort-nowhere").find("Cannot load ./comfort-nowhere") == 0, "a missing library is named");
    Equal(textOf(lacking), "The library does not export CreateBackgroundCorrectionOffline.", "a missing export");
}

void CheckErrors()
{
    Equal(TBackgroundCorrectionError(kHeaderOnlyMode, "text").what(), "text", "an error with a text");
    const TBackgroundCorrectionError bare(kFileNotFound, "");
    Equal(bare.what(), "Neither a file nor any group file of that name exists.", "an error without a text");
    Equal(Text(bare.Code()), "771", "its code");
    Equal(DescribeBackgroundCorrectionCode(4711), "Unknown result code.", "a code that nobody knows");
}

void CheckCorrections(const TBackgroundCorrectionLibrary& library)
{
    TBackgroundCorrection object = library.MakeProcessor();
    const TPixels dark1(12, 100), dark2(12, 103), narrow(8, 100);
    Equal(Text(object.Count()), "0", "number of corrections at first");
    object.Add("a", {{dark1, 4, 3}, {dark2, 4, 3}}, 0.5f, 100.0f);
    object.Add("b", {dark1.data(), dark2.data()}, 6, 2, 0.5f, 50.0f);
    Equal(Refusal([&] { object.Add("c", {{dark1, 4, 3}, {dark1, 3, 4}}, 1, 100); }), "514 The frames differ in size.",
          "frames of two shapes");
    Equal(Refusal([&] { object.Add("c", {{dark1, 4, 3}, {narrow, 4, 2}}, 1, 100); }), "514 The frames differ in size.",
          "frames of two heights");
    const TPixels small(9, 100);
    Equal(Refusal([&] { object.Add("c", {{dark1, 4, 3}, {small, 3, 3}}, 1, 100); }), "514 The frames differ in size.",
          "frames of two widths");
    Equal(Refusal([&] { object.Add("c", std::vector<TConstImageView>(), 1, 100); }).substr(0, 3), "514", "no frames");
    Equal(Refusal([&] { object.Add("", {{dark1, 4, 3}}, 1, 100); }).substr(0, 3), "513", "an empty key");
    Equal(Refusal([&] { object.Add("c", {{dark1, 4, 3}}, 0, 100); }).substr(0, 3), "518", "no exposure");
    Equal(Text(object.Count()), "2", "number of corrections");
    Equal(Join(object.Keys()), "a b", "keys");
    That(object.Key(1) == "b" && !object.Key(2), "key by index");

    That(!object.ActiveKey(), "nothing is active at first");
    Equal(RegionText(object.Region()), "0 0 1 1", "region at first");
    Equal(Refusal([&] { object.SetActive("x"); }), "513 Background correction key not found - 'x'", "an unknown key");
    object.SetActive("B");
    That(object.ActiveKey() == "b", "the active key");
    Equal(RegionText(object.Region()), "0 0 6 2", "region of what was made active");
    Equal(Text(object.Reference().exposureSeconds, object.Reference().lightIntensityPercent), "0.5 50", "reference");
    Equal(StatisticsText(object.Statistics()), "102 102 102", "statistics");

    Equal(Text(object.Level(), object.ExposureAndIntensity().exposureSeconds,
               object.ExposureAndIntensity().lightIntensityPercent),
          "100 -1,-1", "settings at first");
    object.SetExposureAndIntensity(1.0f, 25.0f);
    object.SetLevel(50);
    object.SetRegion({1, 0, 5, 2});
    Equal(Text(object.Level(), object.ExposureAndIntensity().exposureSeconds,
               object.ExposureAndIntensity().lightIntensityPercent),
          "50 1,25", "settings");
    Equal(RegionText(object.Region()), "1 0 5 2", "region");
    Equal(StatisticsText(object.ScaledStatistics()), "51 51 51", "statistics of the background");
    Equal(Refusal([&] { object.SetRegion({2, 0, 5, 2}); }).substr(0, 3), "515", "a region too wide");
    That(!object.LastErrorMessage().empty(), "the last failure left a text");

    Equal(Refusal([&] { object.Delete("b"); }).substr(0, 3), "513", "deleting the active correction");
    object.Deactivate();
    That(!object.ActiveKey(), "deactivated");
    object.Delete("b");
    Equal(Join(object.Keys()), "a", "keys after deleting");

    TBackgroundCorrection other = library.MakeProcessor();
    other.Add("a", {{narrow, 4, 2}}, 1, 100);
    other.Import(object, false);
    other.SetActive("a");
    Equal(RegionText(other.Region()), "0 0 4 2", "imported, keeping what was there");
    other.Import(object, true);
    other.SetActive("a");
    Equal(RegionText(other.Region()), "0 0 4 3", "imported over what was there");
    other.Clear();
    Equal(Text(other.Count()), "0", "number of corrections after clearing");
}

void CheckFiles(const TBackgroundCorrectionLibrary& library)
{
    const std::string name = "comfort-file";
    TBackgroundCorrection object = library.MakeProcessor();
    const TPixels dark(12, 100);
    object.Add("a", {{dark, 4, 3}}, 0.5f, 100.0f);
    object.Save(name);
    TBackgroundCorrection loaded = library.MakeProcessor();
    loaded.LoadHeaderOnly(name);
    Equal(Refusal([&] { loaded.SetLevel(3); }).substr(0, 3), "770", "header-only mode");
    loaded.Load(name);
    loaded.SetActive("a");
    Equal(StatisticsText(loaded.Statistics()), "100 100 100", "statistics of what was loaded");
    std::remove(name.c_str());
    Equal(Refusal([&] { loaded.Load(name); }).substr(0, 3), "769", "a file that is gone");
}

// An object is deleted by the library that made it, which stays loaded until then, wherever it is moved.
void CheckOwnership(const char* path)
{
    static_assert(!std::is_copy_constructible_v<TBackgroundCorrection> &&
                  !std::is_copy_assignable_v<TBackgroundCorrection> &&
                  std::is_nothrow_move_constructible_v<TBackgroundCorrection> &&
                  std::is_nothrow_move_assignable_v<TBackgroundCorrection>);
    auto first = std::make_shared<const TBackgroundCorrectionModule>(path);
    const std::weak_ptr<const TBackgroundCorrectionModule> watched = first;
    TBackgroundCorrection object(first, first->create());
    first.reset();
    That(!watched.expired(), "an object keeps its library");
    TBackgroundCorrection moved = std::move(object);
    Equal(Text(moved.Count()), "0", "a moved object works");
    moved = TBackgroundCorrectionLibrary(path).MakeProcessor();
    That(watched.expired(), "an object that is replaced lets its library go");
    Equal(Text(moved.Count()), "0", "what replaced it works");
    That(moved.Get().GetCorrectionLevel() == 100, "the object itself");
    bool refused = false;
    try {
        TBackgroundCorrection(std::make_shared<const TBackgroundCorrectionModule>(path), nullptr);
    } catch (const std::bad_alloc&) {
        refused = true;
    }
    That(refused, "no object is bad_alloc");
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 3) {
        std::printf("usage: contract_comfort_host <library> <a library that lacks an export>\n");
        return 2;
    }
    try {
        const TBackgroundCorrectionLibrary library(arguments[1]);
        CheckVersions(library);
        CheckLoading(arguments[2]);
        CheckErrors();
        CheckCorrections(library);
        CheckFiles(library);
        CheckOwnership(arguments[1]);
        CheckImageViews();
        CheckImages(library);
        CheckDelegates(library);
        CheckCallables(library);
        CheckStore(library);
    } catch (const std::exception& error) {
        That(false, std::string("unexpected: ") + error.what());
    }
    std::printf("%u checks, %u failed\n", Checks::made, Checks::failed);
    return Checks::failed == 0 ? 0 : 1;
}
