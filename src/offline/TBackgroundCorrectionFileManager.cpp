// The store as an object: its end, its grouping names, its text.
#include "offline/TBackgroundCorrectionFileManager.h"

#include "boundary/Messages.h"
#include "offline/GroupFiles.h"
#include "offline/GroupNaming.h"

#include <cstring>

using namespace QX_KRLSDK;

TBackgroundCorrectionFileManager::~TBackgroundCorrectionFileManager()
{
    const TGuard guard(lock.Get());
    ReleaseCurrentGroup();
}

unsigned int TBackgroundCorrectionFileManager::SetGroupingParameters(const char* const* names, int count)
{
    const TGuard guard(lock.Get());
    if (names == nullptr) {
        return Fail(kFirstArgumentInvalid, Messages::kGroupingParametersNull);
    }
    if (!baseFileName.IsEmpty()) {
        if (currentGroup.processor != nullptr && !headerOnly) {
            WriteLoadedGroup();
        }
        ClearCorrections();
    }
    if (count <= 0) {
        return Fail(kFirstArgumentInvalid, Messages::kGroupingParameterNull);
    }
    for (int i = 0; i < count; ++i) {
        if (names[i] == nullptr || names[i][0] == '\0') {
            return Fail(kFirstArgumentInvalid, Messages::kGroupingParameterNull);
        }
        groupingNames.emplace_back(names[i]);
    }
    return kSuccess;
}

// A text of the store's own is cleared before it is handed out, so that the caller gets an empty one. Hosts have always
// seen it so.
const char* TBackgroundCorrectionFileManager::GetLastErrorMessage()
{
    const TGuard guard(lock.Get());
    if (message.IsEmpty()) {
        return currentGroup.processor != nullptr ? currentGroup.processor->GetLastErrorMessage() : nullptr;
    }
    message.Clear();
    return message.Text();
}

bool TBackgroundCorrectionFileManager::TExactRule::AreEqual(const char* left, const char* right) noexcept
{
    return std::strcmp(left, right) == 0;
}
