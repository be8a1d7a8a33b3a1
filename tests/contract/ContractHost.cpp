// A host that knows the public header only: contract_host <library>. Built natively and in the Microsoft ABI.
#include "Checks.h"
#include "ContractChecks.h"
#include "HostPlatform.h"

namespace {

template <class TExport> bool Find(const char* name, TExport& function)
{
    function = reinterpret_cast<TExport>(HostPlatform::FindExport(name));
    return Checks::That(function != nullptr, std::string("the library exports ") + name);
}

} // namespace

int main(int argumentCount, char** arguments)
{
    if (argumentCount != 2 || !HostPlatform::OpenLibrary(arguments[1])) {
        std::printf("usage: contract_host <library>\n");
        return 2;
    }
    TExports exports{};
    bool found = Find("CreateBackgroundCorrection", exports.createLive);
    found = Find("CreateBackgroundCorrectionOffline", exports.createOffline) && found;
    found = Find("DeleteBackgroundCorrection", exports.destroy) && found;
    found = Find("GetLastBackgroundCorrectionDLLError", exports.lastError) && found;
    if (found) {
        const HostPlatform::TVersion version = HostPlatform::LibraryVersion();
        Checks::That(version.major == QX_BACKGROUNDCORRECTION_VERSION_MAJOR &&
                         version.minor == QX_BACKGROUNDCORRECTION_VERSION_MINOR &&
                         version.patch == QX_BACKGROUNDCORRECTION_VERSION_PATCH,
                     "the library carries the header's version");
        CheckLifetimes(exports);
        CheckEverySlot(exports);
        CheckDelegates(exports);
        CheckExhaustedMemory(exports);
    }
    std::printf("%u checks, %u failed\n", Checks::made, Checks::failed);
    return Checks::failed == 0 ? 0 : 1;
}
