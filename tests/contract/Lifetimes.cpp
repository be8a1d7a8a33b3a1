// Making and deleting objects, and what is none of the library's business.
#include "Checks.h"
#include "ContractChecks.h"
#include "ForeignObject.h"
#include "HostPlatform.h"

#include <string>
#include <vector>

using Checks::Equal;
using Checks::Text;
using Checks::That;
using I = QX_KRLSDK::QX_IBackgroundCorrection;

namespace {

constexpr char kNotAnInstance[] = "Cannot delete object as it is not a valid QX_IBackgroundCorrection instance.";

void CheckRefused(const TExports& exports, I* foreign, const bool& destroyed, const std::string& what)
{
    Equal(Text(exports.destroy(foreign)), "513", "deleting " + what);
    That(!destroyed && foreign->GetNumberOfCorrections() == 4711, what + " is left alive");
    Equal(Text(exports.lastError()), kNotAnInstance, "library error after deleting " + what);

    I* const live = exports.CreateLive();
    Equal(Text(live->ImportCorrections(foreign, false)), "513", "importing " + what);
    Equal(Text(live->GetLastErrorMessage()), "The supplied import source is not the correct type.",
          "message after importing " + what);
    Equal(Text(exports.destroy(live)), "0", "deleting an object after a refusal");
    Equal(Text(exports.lastError()), kNotAnInstance, "library error after a success");

    delete foreign;
    That(destroyed, what + " is destroyed by its owner");
}

struct TWayToDelete {
    const char* what;
    void (*deleteObject)(const TExports& exports, I* object);
};

constexpr TWayToDelete kWaysToDelete[] = {
    {"through the export",
     [](const TExports& exports, I* object) { Equal(Text(exports.destroy(object)), "0", "delete"); }},
    {"through the interface", [](const TExports&, I* object) { delete object; }},
    {"through the table", [](const TExports&, I* object) { HostPlatform::DeleteThroughTable(object); }},
};

// Objects that own half a megabyte each come and go; the process must not keep it.
void CheckNothingIsKept(const TExports& exports, bool isStore, const TWayToDelete& way)
{
    constexpr int kSide = 512, kRounds = 48;
    const std::vector<unsigned short> frame(kSide * kSide, 100);
    const unsigned short* frames[] = {frame.data()};
    std::size_t bytesAfterFirst = 0;
    for (int round = 0; round < kRounds; ++round) {
        I* const object = isStore ? exports.CreateStore() : exports.CreateLive();
        const char key[] = "Camera,1";
        const unsigned int code = object->AddCorrection(key, frames, 1, kSide, kSide, 1.0f, 1.0f);
        if (code != 0 || object->SetActiveCorrection(key) != 0) {
            That(false, "an object to delete can be made");
            return;
        }
        way.deleteObject(exports, object);
        if (round == 0)
            bytesAfterFirst = HostPlatform::BytesInUse();
    }
    const std::size_t bytes = HostPlatform::BytesInUse();
    const std::string what = std::string(isStore ? "store" : "live processor") + " deleted " + way.what;
    That(bytes < bytesAfterFirst + (8u << 20), what + " frees its memory, which grew from " +
                                                   Text(static_cast<double>(bytesAfterFirst)) + " to " +
                                                   Text(static_cast<double>(bytes)));
}

} // namespace

void CheckLifetimes(const TExports& exports)
{
    That(exports.lastError() != nullptr && *exports.lastError() == '\0', "library error is empty before any failure");
    Equal(Text(exports.destroy(nullptr)), "0", "deleting null");
    Equal(Text(exports.lastError()), "", "library error after deleting null");

    bool destroyed = false;
    CheckRefused(exports, new TForeignObject<struct TOfThisHost>(&destroyed), destroyed, "a foreign object");
#ifdef _WIN32
    bool otherDestroyed = false;
    CheckRefused(exports, MakeForeignObjectWithoutRtti(&otherDestroyed), otherDestroyed, "an object without RTTI");
#endif
    Equal(Text(exports.destroy(nullptr)), "0", "deleting null after a failure");
    Equal(Text(exports.lastError()), kNotAnInstance, "library error after deleting null late");

    if (HostPlatform::Sanitizer()) {
        Checks::Skip("memory after deletion is not measured", HostPlatform::Sanitizer());
        return;
    }
    for (const bool isStore : {false, true})
        for (const TWayToDelete& way : kWaysToDelete)
            CheckNothingIsKept(exports, isStore, way);
}
