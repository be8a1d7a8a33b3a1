#include "flat/TMainLibrary.h"

#include "platform/NeighbourLibrary.h"

#include <cstdio>

namespace {

constexpr char kName[] = "QX_BACKGROUNDCORRECTION";

template <class TExport>
bool Find(std::atomic<TExport>& found, void* library, const char* name, char* reason, std::size_t size) noexcept
{
    const Platform::TFunction function = Platform::FindFunction(library, name);
    if (function == nullptr) {
        std::snprintf(reason, size, "%s does not export %s.", kName, name);
        return false;
    }
    found = reinterpret_cast<TExport>(function);
    return true;
}

} // namespace

const TMainLibrary* TMainLibrary::Get(char* reason, std::size_t size) noexcept
{
    static TMainLibrary library; // constant-initialised: needs no guard
    return library.isLoaded || library.Load(reason, size) ? &library : nullptr;
}

const TMainLibrary* TMainLibrary::Get() noexcept
{
    char unread[1];
    return Get(unread, sizeof unread);
}

bool TMainLibrary::Load(char* reason, std::size_t size) noexcept
{
    void* const library = Platform::LoadNeighbour(kName, reason, size);
    isLoaded = library != nullptr && Find(create, library, "CreateBackgroundCorrection", reason, size) &&
               Find(createOffline, library, "CreateBackgroundCorrectionOffline", reason, size) &&
               Find(destroy, library, "DeleteBackgroundCorrection", reason, size) &&
               Find(lastError, library, "GetLastBackgroundCorrectionDLLError", reason, size);
    return isLoaded;
}
