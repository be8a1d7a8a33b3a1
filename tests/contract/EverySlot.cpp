// One walk through all operations, made four times: by name and by position, on a live processor and on an offline
// store. Each step says what comes back from either implementation.
#include "Checks.h"
#include "ContractChecks.h"
#include "ForeignObject.h"
#include "SlotCaller.h"

#include <cstdio>
#include <string>

using Checks::Text;
using I = QX_KRLSDK::QX_IBackgroundCorrection;
using Pixel = unsigned short;

namespace {

// The same keys serve both implementations: a store finds its grouping value in them.
constexpr char kDark[] = "Camera,1,Dark,a";
constexpr char kDarkInCapitals[] = "Camera,1,DARK,A";
constexpr char kOther[] = "Camera,1,Dark,b";
constexpr char kImported[] = "Camera,1,Dark,c";
constexpr char kUnknown[] = "Camera,1,Dark,x";

constexpr int kWidth = 4;
constexpr int kHeight = 3;

struct TScene {
    const TExports& exports;
    std::string fileName;
};

Pixel flat100[kWidth * kHeight], flat103[kWidth * kHeight];

unsigned int Add(TSlotCaller& object, const char* key, int frameCount)
{
    const Pixel* frames[] = {flat100, flat103};
    return object.Call(1, &I::AddCorrection, key, frames, frameCount, kWidth, kHeight, 0.5f, 50.0f);
}

using TStatistics = unsigned int (I::*)(Pixel*, Pixel*, Pixel*);

std::string Statistics(TSlotCaller& object, std::size_t slot, TStatistics operation)
{
    Pixel minimum = 7, maximum = 7, average = 7;
    const unsigned int code = object.Call(slot, operation, &minimum, &maximum, &average);
    return Text(code, minimum, maximum, average);
}

using TExposure = unsigned int (I::*)(float*, float*);

std::string Exposure(TSlotCaller& object, std::size_t slot, TExposure operation)
{
    float exposure = 7, intensity = 7;
    const unsigned int code = object.Call(slot, operation, &exposure, &intensity);
    return Text(code, exposure, intensity);
}

std::string Region(TSlotCaller& object)
{
    int left = 7, top = 7, width = 7, height = 7;
    const unsigned int code = object.Call(17, &I::GetRegion, &left, &top, &width, &height);
    return Text(code, left, top, width, height);
}

// Corrects {1000, 204, 203, 0}, in place or into another buffer.
std::string Apply(TSlotCaller& object, bool inPlace, int length)
{
    Pixel image[] = {1000, 204, 203, 0}, output[] = {9, 9, 9, 9};
    const unsigned int code = object.Call(15, &I::ApplyCorrection, image, length, inPlace ? nullptr : output, length,
                                          nullptr, false, false, false);
    const Pixel* const result = inPlace ? image : output;
    return Text(code, result[0], result[1], result[2], result[3]);
}

std::string ImportOneCorrection(TSlotCaller& object, const TScene& scene)
{
    I* const source = scene.exports.CreateLive();
    TSlotCaller sourceCaller(source, TCallBy::Name);
    const unsigned int added = Add(sourceCaller, kImported, 1);
    const unsigned int code = object.Call(18, &I::ImportCorrections, source, false);
    return Text(code, added, scene.exports.destroy(source));
}

struct TStep {
    const char* what;
    std::string (*take)(TSlotCaller& object, const TScene& scene);
    const char* live;
    const char* store;
};

#define STEP [](TSlotCaller & o, [[maybe_unused]] const TScene& scene) -> std::string
constexpr TStep kSteps[] = {{"count, fresh", STEP{return Text(o.Call(5, &I::GetNumberOfCorrections));
} // namespace
, "0", "0"
}
, {"level, fresh", STEP{return Text(o.Call(9, &I::GetCorrectionLevel));
}
, "100", "-1"
}
, {"region, fresh", STEP{return Region(o);
}
, "0 0,0,1,1", "0 -1,-1,-1,-1"
}
, {"exposure, fresh", STEP{return Exposure(o, 11, &I::GetExposureAndIntensity);
}
, "0 -1,-1", "0 -1,-1"
}
, {"active key, fresh", STEP{return Text(o.Call(3, &I::GetActiveCorrectionKey));
}
, "(null)", "(null)"
}
, {"message, fresh", STEP{return Text(o.Call(22, &I::GetLastErrorMessage));
}
, "", "(null)"
}
, {"reference, fresh", STEP{return Exposure(o, 12, &I::GetReferenceExposureAndIntensity);
}
, "0 7,7", "1280 7,7"
}
, {"statistics, fresh", STEP{return Statistics(o, 13, &I::GetCorrectionStatistics);
}
, "0 7,7,7", "1280 7,7,7"
}
, {"scaled, fresh", STEP{return Statistics(o, 14, &I::GetScaledCorrectionStatistics);
}
, "0 7,7,7", "1280 7,7,7"
}
, {"message, cleared", STEP{return Text(o.Call(22, &I::GetLastErrorMessage));
}
, "", ""
}
, {"apply, fresh", STEP{return Apply(o, false, 1);
}
, "0 1000,9,9,9", "0 1000,9,9,9"
}
, {"apply, fresh, null image",
   STEP{return Text(o.Call(15, &I::ApplyCorrection, nullptr, 1, nullptr, 0, nullptr, false, false, false));
}
, "513", "513"
}
,

    {"add two frames", STEP{return Text(Add(o, kDark, 2));
}
, "0", "0"
}
, {"add a taken key", STEP{return Text(Add(o, kDarkInCapitals, 2));
}
, "513", "513"
}
, {"add another", STEP{return Text(Add(o, kOther, 1));
}
, "0", "0"
}
, {"add a null key", STEP{return Text(Add(o, nullptr, 1));
}
, "513", "513"
}
, {"add no frame", STEP{return Text(Add(o, kUnknown, 0));
}
, "515", "515"
}
, {"count", STEP{return Text(o.Call(5, &I::GetNumberOfCorrections));
}
, "2", "2"
}
, {"key 0", STEP{return Text(o.Call(4, &I::GetCorrectionKey, 0u));
}
, kDark, kDark
}
, {"key 1", STEP{return Text(o.Call(4, &I::GetCorrectionKey, 1u));
}
, kOther, kOther
}
, {"key 2", STEP{return Text(o.Call(4, &I::GetCorrectionKey, 2u));
}
, "(null)", "(null)"
}
, {"key -1", STEP{return Text(o.Call(4, &I::GetCorrectionKey, ~0u));
}
, "(null)", "(null)"
}
,

    {"activate", STEP{return Text(o.Call(2, &I::SetActiveCorrection, kDark));
}
, "0", "0"
}
, {"activate unknown", STEP{return Text(o.Call(2, &I::SetActiveCorrection, kUnknown));
}
, "513", "513"
}
, {"active key", STEP{return Text(o.Call(3, &I::GetActiveCorrectionKey));
}
, kDark, kDark
}
, {"region of all", STEP{return Region(o);
}
, "0 0,0,4,3", "0 0,0,4,3"
}
, {"reference", STEP{return Exposure(o, 12, &I::GetReferenceExposureAndIntensity);
}
, "0 0.5,50", "0 0.5,50"
}
, {"statistics", STEP{return Statistics(o, 13, &I::GetCorrectionStatistics);
}
, "0 102,102,102", "0 102,102,102"
}
, {"set exposure", STEP{return Text(o.Call(10, &I::SetExposureAndIntensity, 1.0f, 50.0f));
}
, "0", "0"
}
, {"exposure", STEP{return Exposure(o, 11, &I::GetExposureAndIntensity);
}
, "0 1,50", "0 1,50"
}
, {"scaled", STEP{return Statistics(o, 14, &I::GetScaledCorrectionStatistics);
}
, "0 204,204,204", "0 204,204,204"
}
, {"set level 29", STEP{return Text(o.Call(8, &I::SetCorrectionLevel, 29));
}
, "0", "0"
}
, {"level 29", STEP{return Text(o.Call(9, &I::GetCorrectionLevel));
}
, "28", "29"
}
, {"scaled, 29 %", STEP{return Statistics(o, 14, &I::GetScaledCorrectionStatistics);
}
, "0 59,59,59", "0 59,59,59"
}
, {"set level 100", STEP{return Text(o.Call(8, &I::SetCorrectionLevel, 100));
}
, "0", "0"
}
, {"set region", STEP{return Text(o.Call(16, &I::SetRegion, 1, 1, 2, 2));
}
, "0", "0"
}
, {"set region too wide", STEP{return Text(o.Call(16, &I::SetRegion, 0, 0, 5, 1));
}
, "515", "515"
}
, {"message", STEP{return Text(o.Call(22, &I::GetLastErrorMessage));
}
, "The input width [ 5 ] is out of range.", ""
}
, {"region", STEP{return Region(o);
}
, "0 1,1,2,2", "0 1,1,2,2"
}
, {"apply in place", STEP{return Apply(o, true, 4);
}
, "0 796,0,0,0", "0 796,0,0,0"
}
, {"apply to output", STEP{return Apply(o, false, 4);
}
, "0 796,0,0,0", "0 796,0,0,0"
}
, {"apply, wrong size", STEP{return Apply(o, true, 3);
}
, "514 1000,204,203,0", "514 1000,204,203,0"
}
,

    {"delete the active", STEP{return Text(o.Call(7, &I::DeleteCorrection, kDark));
}
, "513", "513"
}
, {"delete", STEP{return Text(o.Call(7, &I::DeleteCorrection, kOther));
}
, "0", "0"
}
, {"delete again", STEP{return Text(o.Call(7, &I::DeleteCorrection, kOther));
}
, "513", "513"
}
, {"import null", STEP{return Text(o.Call(18, &I::ImportCorrections, nullptr, false));
}
, "513", "513"
}
, {"import", STEP{return ImportOneCorrection(o, scene);
}
, "0 0,0", "0 0,0"
}
, {"count after import", STEP{return Text(o.Call(5, &I::GetNumberOfCorrections));
}
, "2", "2"
}
, {"imported key", STEP{return Text(o.Call(4, &I::GetCorrectionKey, 1u));
}
, kImported, kImported
}
,

    {"save", STEP{return Text(o.Call(21, &I::SaveFile, scene.fileName.c_str()));
}
, "0", "0"
}
, {"clear", STEP{return Text(o.Call(6, &I::ClearCorrections));
}
, "0", "0"
}
, {"count, cleared", STEP{return Text(o.Call(5, &I::GetNumberOfCorrections));
}
, "0", "0"
}
, {"load", STEP{return Text(o.Call(20, &I::LoadFile, scene.fileName.c_str()));
}
, "0", "0"
}
, {"count, loaded", STEP{return Text(o.Call(5, &I::GetNumberOfCorrections));
}
, "2", "2"
}
, {"active key, loaded", STEP{return Text(o.Call(3, &I::GetActiveCorrectionKey));
}
, "(null)", "(null)"
}
, {"activate, loaded", STEP{return Text(o.Call(2, &I::SetActiveCorrection, kDark));
}
, "0", "0"
}
, {"statistics, loaded", STEP{return Statistics(o, 13, &I::GetCorrectionStatistics);
}
, "0 102,102,102", "0 102,102,102"
}
, {"load headers", STEP{return Text(o.Call(19, &I::LoadFileHeaderOnly, scene.fileName.c_str()));
}
, "0", "0"
}
, {"count, headers", STEP{return Text(o.Call(5, &I::GetNumberOfCorrections));
}
, "2", "2"
}
, {"add, headers", STEP{return Text(Add(o, kOther, 1));
}
, "770", "770"
}
, {"load nothing", STEP{return Text(o.Call(20, &I::LoadFile, "no-such-file"));
}
, "769", "771"
}
, {"clear again", STEP{return Text(o.Call(6, &I::ClearCorrections));
}
, "0", "0"
}
, {"deactivate", STEP{return Text(o.Call(2, &I::SetActiveCorrection, nullptr));
}
, "0", "0"
}
,
}
;
#undef STEP

void Walk(const TExports& exports, bool isStore, TCallBy by)
{
    const std::string name = isStore ? "contract-store" : "contract-live";
    const std::string onDisk = isStore ? name + "_Camera_1" : name;
    std::remove(onDisk.c_str());

    const TScene scene{exports, name};
    TSlotCaller object(isStore ? exports.CreateStore() : exports.CreateLive(), by);
    const std::string who =
        std::string(isStore ? "store, " : "live, ") + (by == TCallBy::Name ? "by name, " : "by position, ");
    for (const TStep& step : kSteps)
        Checks::Equal(step.take(object, scene), isStore ? step.store : step.live, who + step.what);
    for (std::size_t slot = 1; slot < kSlotCount; ++slot)
        Checks::That(object.CallsOf(slot) > 0, who + "slot " + Text(static_cast<double>(slot)) + " was called");
    Checks::That(std::remove(onDisk.c_str()) == 0, who + "wrote " + onDisk);

    if (by == TCallBy::Name)
        delete object.Object();
    else
        HostPlatform::DeleteThroughTable(object.Object());
}

} // namespace

void CheckEverySlot(const TExports& exports)
{
    for (int i = 0; i < kWidth * kHeight; ++i) {
        flat100[i] = 100;
        flat103[i] = 103;
    }
    for (const bool isStore : {false, true})
        for (const TCallBy by : {TCallBy::Name, TCallBy::Position})
            Walk(exports, isStore, by);
}
