// A host built with MinGW: contract_mingw_host <library>. The public header gives its calls the DLL's slots, by name,
// and the DLL calls its delegate back. An object of its own follows other rules than the DLL's; handing it one is a
// mistake, which the DLL must refuse and not fall over.
#include "Checks.h"
#include "ContractChecks.h"
#include "ForeignObject.h"
#include "HostPlatform.h"

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
    const auto createOffline = reinterpret_cast<QX_KRLSDK::CreateBackgroundCorrectionOfflineFunction>(
        HostPlatform::FindExport("CreateBackgroundCorrectionOffline"));
    const auto destroy = reinterpret_cast<QX_KRLSDK::DeleteBackgroundCorrectionFunction>(
        HostPlatform::FindExport("DeleteBackgroundCorrection"));
    const auto lastError = reinterpret_cast<QX_KRLSDK::GetLastBackgroundCorrectionDLLErrorFunction>(
        HostPlatform::FindExport("GetLastBackgroundCorrectionDLLError"));

    bool destroyed = false;
    TForeignObject<struct TOfMinGw> foreign(&destroyed);
    I* const object = create();

    Equal(Text(object->GetCorrectionLevel()), "100", "the DLL's own object answers by name");
    Equal(Text(destroy(&foreign)), "513", "deleting a MinGW object");
    Equal(Text(lastError()), "Cannot delete object as it is not a valid QX_IBackgroundCorrection instance.",
          "library error after deleting a MinGW object");
    Equal(Text(object->ImportCorrections(&foreign, true)), "513", "importing a MinGW object");
    That(!destroyed && foreign.GetNumberOfCorrections() == 4711, "the MinGW object is left alive");
    Equal(Text(destroy(nullptr)), "0", "deleting null");
    Equal(Text(destroy(object)), "0", "deleting the DLL's own object");

    const TExports exports{create, createOffline, destroy, lastError};
    CheckEverySlot(exports);
    CheckDelegates(exports);

    std::printf("%u checks, %u failed\n", Checks::made, Checks::failed);
    return Checks::failed == 0 ? 0 : 1;
}
