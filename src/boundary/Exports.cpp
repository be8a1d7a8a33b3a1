// The four exported functions.
#include "QX_BackgroundCorrection.h"

#include "boundary/ExportDecoration.h"
#include "boundary/Messages.h"
#include "boundary/RunTimeType.h"
#include "boundary/TMessageBuffer.h"
#include "offline/TBackgroundCorrectionFileManager.h"
#include "processor/TBackgroundCorrectionProcessorUINT16.h"

#include <memory>

using namespace QX_KRLSDK;

namespace {

// The one state that the library shares between objects: the text of the last refused deletion. It has no lock.
TLibraryMessageBuffer libraryMessage;

} // namespace

// Without memory, std::bad_alloc reaches the host.
QX_EXPORT QX_IBackgroundCorrection* CreateBackgroundCorrection()
{
    return new TBackgroundCorrectionProcessorUINT16;
}

// A refused grouping name is not reported: the store is there, with the names before it.
QX_EXPORT QX_IBackgroundCorrection* CreateBackgroundCorrectionOffline(char** groupingParameters, int count)
{
    auto store = std::make_unique<TBackgroundCorrectionFileManager>();
    store->SetGroupingParameters(groupingParameters, count);
    return store.release();
}

QX_EXPORT unsigned int DeleteBackgroundCorrection(QX_IBackgroundCorrection* object)
{
    if (object == nullptr) {
        return kSuccess;
    }
    if (auto* const processor = RunTimeType::Cast<TBackgroundCorrectionProcessorUINT16>(object)) {
        delete processor;
        return kSuccess;
    }
    if (auto* const store = RunTimeType::Cast<TBackgroundCorrectionFileManager>(object)) {
        delete store;
        return kSuccess;
    }
    libraryMessage.Format(Messages::kNotAnInstance);
    return kFirstArgumentInvalid;
}

QX_EXPORT const char* GetLastBackgroundCorrectionDLLError()
{
    return libraryMessage.Text();
}
