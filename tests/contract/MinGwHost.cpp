// A host built with MinGW, whose objects follow other rules than the DLL: contract_mingw_host <library>. Handing it one
// is a mistake; the DLL must refuse it and not fall over it.
#include "Checks.h"
#include "ContractChecks.h"
#include "ForeignObject.h"
#include "SlotCaller.h"

using Checks::Equal;
using Checks::Text;
using Checks::That;
using I = QX_KRLSDK::QX_IBackgroundCorrection;

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2 || !HostPlatform::OpenLibrary(arguments[1])) {
        std::printf("usage: contract_mingw_host <library>\n");
        return 2;
    }
    const auto create = reinterpret_cast<QX_KRLSDK::CreateBackgroundCorrectionFunction>(
        HostPlatform::FindExport("CreateBackgroundCorrection"));
    const auto destroy = reinterpret_cast<QX_KRLSDK::DeleteBackgroundCorrectionFunction>(
        HostPlatform::FindExport("DeleteBackgroundCorrection"));
    const auto lastError = reinterpret_cast<QX_KRLSDK::GetLastBackgroundCorrectionDLLErrorFunction>(
        HostPlatform::FindExport("GetLastBackgroundCorrectionDLLError"));

    bool destroyed = false;
    TForeignObject<struct TOfMinGw> foreign(&destroyed);
    I* const object = create();
    // Slots of the DLL's objects can be called by position only: this compiler counts one further.
    TSlotCaller caller(object, TCallBy::Position);

    Equal(Text(caller.Call(9, &I::GetCorrectionLevel)), "100", "the DLL's own object answers by position");
    Equal(Text(destroy(&foreign)), "513", "deleting a MinGW object");
    Equal(Text(lastError()), "Cannot delete object as it is not a valid QX_IBackgroundCorrection instance.",
          "library error after deleting a MinGW object");
    Equal(Text(caller.Call(18, &I::ImportCorrections, static_cast<I*>(&foreign), true)), "513",
          "importing a MinGW object");
    That(!destroyed && foreign.GetNumberOfCorrections() == 4711, "the MinGW object is left alive");
    Equal(Text(destroy(nullptr)), "0", "deleting null");
    Equal(Text(destroy(object)), "0", "deleting the DLL's own object");

    std::printf("%u checks, %u failed\n", Checks::made, Checks::failed);
    return Checks::failed == 0 ? 0 : 1;
}
