// One walk through all operations, made four times: by name and by position, on a live processor and on an offline
// store. Each step says what comes back from either implementation.
#include "Checks.h"
#include "ContractChecks.h"
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

// One image in flat frames of 100 and 103.
constexpr int kWidth = 4;
constexpr int kHeight = 3;

class TWalk {
public:
    TWalk(const TExports& libraryExports, bool onStore, TCallBy callBy)
        : exports(libraryExports), isStore(onStore), by(callBy),
          object(onStore ? libraryExports.CreateStore() : libraryExports.CreateLive(), callBy),
          fileName(onStore ? "contract-store" : "contract-live"),
          fileOnDisk(onStore ? fileName + "_Camera_1" : fileName)
    {
        std::remove(fileOnDisk.c_str());
    }

    void Make()
    {
        FreshObject();
        Corrections();
        ActiveCorrection();
        Images();
        DeletionAndImport();
        Files();
        for (std::size_t slot = 1; slot < kSlotCount; ++slot)
            Checks::That(object.CallsOf(slot) > 0, Who() + "slot " + Text(static_cast<double>(slot)) + " was called");
        Checks::That(std::remove(fileOnDisk.c_str()) == 0, Who() + "wrote " + fileOnDisk);
        if (by == TCallBy::Name)
            DeleteByName();
        else
            HostPlatform::DeleteThroughTable(object.Object());
    }

private:
    void DeleteByName()
    {
#ifdef QX_BACKGROUNDCORRECTION_FOREIGN_TABLES // "delete" would not compile
        Expect("delete", Text(exports.destroy(object.Object())), "0");
#else
        delete object.Object();
#endif
    }

    void FreshObject()
    {
        Expect("count, fresh", Count(), "0");
        Expect("level, fresh", Level(), "100", "-1");
        Expect("region, fresh", Region(), "0 0,0,1,1", "0 -1,-1,-1,-1");
        Expect("exposure, fresh", Exposure(), "0 -1,-1");
        Expect("active key, fresh", ActiveKey(), "(null)");
        Expect("message, fresh", Message(), "", "(null)");
        Expect("reference, fresh", Reference(), "0 7,7", "1280 7,7");
        Expect("statistics, fresh", Statistics(), "0 7,7,7", "1280 7,7,7");
        Expect("scaled statistics, fresh", ScaledStatistics(), "0 7,7,7", "1280 7,7,7");
        Expect("message, cleared by the store", Message(), "");
        Expect("apply, fresh", Apply(false, 1), "0 1000,9,9,9");
        Expect("apply to null, fresh", ApplyToNull(), "513");
    }

    void Corrections()
    {
        Expect("add two frames", Add(kDark, 2), "0");
        Expect("add a taken key", Add(kDarkInCapitals, 2), "513");
        Expect("add another", Add(kOther, 1), "0");
        Expect("add a null key", Add(nullptr, 1), "513");
        Expect("add no frame", Add(kUnknown, 0), "515");
        Expect("count", Count(), "2");
        Expect("key 0", Key(0), kDark);
        Expect("key 1", Key(1), kOther);
        Expect("key 2", Key(2), "(null)");
        Expect("key -1", Key(~0u), "(null)");
    }

    void ActiveCorrection()
    {
        Expect("activate", Activate(kDark), "0");
        Expect("activate an unknown key", Activate(kUnknown), "513");
        Expect("active key", ActiveKey(), kDark);
        Expect("region of the whole", Region(), "0 0,0,4,3");
        Expect("reference", Reference(), "0 0.5,50");
        Expect("statistics", Statistics(), "0 102,102,102");
        Expect("set exposure", Text(object.Call(10, &I::SetExposureAndIntensity, 1.0f, 50.0f)), "0");
        Expect("exposure", Exposure(), "0 1,50");
        Expect("scaled statistics", ScaledStatistics(), "0 204,204,204");
        Expect("set level 29", SetLevel(29), "0");
        Expect("level 29", Level(), "28", "29");
        Expect("scaled statistics at 29 %", ScaledStatistics(), "0 59,59,59");
        Expect("set level 100", SetLevel(100), "0");
        Expect("set region", SetRegion(1, 1, 2, 2), "0");
        Expect("set region too wide", SetRegion(0, 0, 5, 1), "515");
        Expect("message", Message(), "The input width [ 5 ] is out of range.", "");
        Expect("region", Region(), "0 1,1,2,2");
    }

    void Images()
    {
        Expect("apply in place", Apply(true, 4), "0 796,0,0,0");
        Expect("apply to output", Apply(false, 4), "0 796,0,0,0");
        Expect("apply to the wrong size", Apply(true, 3), "514 1000,204,203,0");
    }

    void DeletionAndImport()
    {
        Expect("delete the active", Delete(kDark), "513");
        Expect("delete", Delete(kOther), "0");
        Expect("delete again", Delete(kOther), "513");
        Expect("import null", Text(object.Call(18, &I::ImportCorrections, nullptr, false)), "513");
        Expect("import", ImportOne(), "0");
        Expect("count after import", Count(), "2");
        Expect("imported key", Key(1), kImported);
    }

    void Files()
    {
        Expect("save", Text(object.Call(21, &I::SaveFile, fileName.c_str())), "0");
        Expect("clear", Clear(), "0");
        Expect("count, cleared", Count(), "0");
        Expect("load", Load(fileName.c_str()), "0");
        Expect("count, loaded", Count(), "2");
        Expect("active key, loaded", ActiveKey(), "(null)");
        Expect("activate, loaded", Activate(kDark), "0");
        Expect("statistics, loaded", Statistics(), "0 102,102,102");
        Expect("load the null device", Load(HostPlatform::kNullDevice), "4294967295");
        Expect("save to the null device", Text(object.Call(21, &I::SaveFile, HostPlatform::kNullDevice)), "0",
               "4294967295");
        Expect("count, after the null device", Count(), "2");
        Expect("load headers", Text(object.Call(19, &I::LoadFileHeaderOnly, fileName.c_str())), "0");
        Expect("count, headers", Count(), "2");
        Expect("add, headers", Add(kOther, 1), "770");
        Expect("load a missing file", Load("no-such-file"), "769", "771");
        Expect("clear again", Clear(), "0");
        Expect("deactivate", Activate(nullptr), "0");
    }

    // The slots, each with its number and its name.
    std::string Add(const char* key, int frameCount) { return AddTo(object, key, frameCount); }
    std::string Activate(const char* key) { return Text(object.Call(2, &I::SetActiveCorrection, key)); }
    std::string ActiveKey() { return Text(object.Call(3, &I::GetActiveCorrectionKey)); }
    std::string Key(unsigned int index) { return Text(object.Call(4, &I::GetCorrectionKey, index)); }
    std::string Count() { return Text(object.Call(5, &I::GetNumberOfCorrections)); }
    std::string Clear() { return Text(object.Call(6, &I::ClearCorrections)); }
    std::string Delete(const char* key) { return Text(object.Call(7, &I::DeleteCorrection, key)); }
    std::string SetLevel(int percent) { return Text(object.Call(8, &I::SetCorrectionLevel, percent)); }
    std::string Level() { return Text(object.Call(9, &I::GetCorrectionLevel)); }
    std::string Exposure() { return Pair(11, &I::GetExposureAndIntensity); }
    std::string Reference() { return Pair(12, &I::GetReferenceExposureAndIntensity); }
    std::string Statistics() { return Triple(13, &I::GetCorrectionStatistics); }
    std::string ScaledStatistics() { return Triple(14, &I::GetScaledCorrectionStatistics); }

    // Corrects {1000, 204, 203, 0}, in place or into another buffer.
    std::string Apply(bool inPlace, int length)
    {
        Pixel image[] = {1000, 204, 203, 0}, output[] = {9, 9, 9, 9};
        const unsigned int code = object.Call(15, &I::ApplyCorrection, image, length, inPlace ? nullptr : output,
                                              length, nullptr, false, false, false);
        const Pixel* const result = inPlace ? image : output;
        return Text(code, result[0], result[1], result[2], result[3]);
    }

    std::string ApplyToNull()
    {
        return Text(object.Call(15, &I::ApplyCorrection, nullptr, 1, nullptr, 0, nullptr, false, false, false));
    }

    std::string SetRegion(int left, int top, int width, int height)
    {
        return Text(object.Call(16, &I::SetRegion, left, top, width, height));
    }

    std::string Region()
    {
        int left = 7, top = 7, width = 7, height = 7;
        const unsigned int code = object.Call(17, &I::GetRegion, &left, &top, &width, &height);
        return Text(code, left, top, width, height);
    }

    std::string ImportOne()
    {
        TSlotCaller source(exports.CreateLive(), by);
        AddTo(source, kImported, 1);
        const unsigned int code = object.Call(18, &I::ImportCorrections, source.Object(), false);
        exports.destroy(source.Object());
        return Text(code);
    }

    std::string Load(const char* name) { return Text(object.Call(20, &I::LoadFile, name)); }
    std::string Message() { return Text(object.Call(22, &I::GetLastErrorMessage)); }

    static std::string AddTo(TSlotCaller& receiver, const char* key, int frameCount)
    {
        Pixel dark[kWidth * kHeight], brighter[kWidth * kHeight];
        for (int i = 0; i < kWidth * kHeight; ++i) {
            dark[i] = 100;
            brighter[i] = 103;
        }
        const Pixel* frames[] = {dark, brighter};
        return Text(receiver.Call(1, &I::AddCorrection, key, frames, frameCount, kWidth, kHeight, 0.5f, 50.0f));
    }

    std::string Pair(std::size_t slot, unsigned int (I::*operation)(float*, float*))
    {
        float first = 7, second = 7;
        const unsigned int code = object.Call(slot, operation, &first, &second);
        return Text(code, first, second);
    }

    std::string Triple(std::size_t slot, unsigned int (I::*operation)(Pixel*, Pixel*, Pixel*))
    {
        Pixel minimum = 7, maximum = 7, average = 7;
        const unsigned int code = object.Call(slot, operation, &minimum, &maximum, &average);
        return Text(code, minimum, maximum, average);
    }

    std::string Who() const
    {
        return std::string(isStore ? "store, " : "live, ") + (by == TCallBy::Name ? "by name, " : "by position, ");
    }

    void Expect(const char* step, const std::string& result, const char* live, const char* store)
    {
        Checks::Equal(result, isStore ? store : live, Who() + step);
    }

    void Expect(const char* step, const std::string& result, const char* both) { Expect(step, result, both, both); }

    const TExports& exports;
    bool isStore;
    TCallBy by;
    TSlotCaller object;
    std::string fileName;
    std::string fileOnDisk; // a store writes one file per group
};

} // namespace

void CheckEverySlot(const TExports& exports)
{
    for (const bool isStore : {false, true})
        for (const TCallBy by : {TCallBy::Name, TCallBy::Position})
            TWalk(exports, isStore, by).Make();
}
