// Construction and destruction of the processor, and what it shares between its operations.
#include "processor/TBackgroundCorrectionProcessorUINT16.h"

// The region (0, 0, 1, 1) that the members start with passes the checks of SetRegion, and without an active entry there
// is no background to calculate: nothing is left to do.
TBackgroundCorrectionProcessorUINT16::TBackgroundCorrectionProcessorUINT16()
    : fileMessage(new TObjectMessageBuffer), corrections(new TCorrectionList)
{}

TBackgroundCorrectionProcessorUINT16::~TBackgroundCorrectionProcessorUINT16() = default;

const char* TBackgroundCorrectionProcessorUINT16::GetLastErrorMessage()
{
    const TGuard guard(lock.Get());
    return message.Text();
}

// What SetActiveCorrection(null) does. Whoever removes the active entry calls this, so that nothing points to it.
void TBackgroundCorrectionProcessorUINT16::Deactivate() noexcept
{
    activeEntry = nullptr;
    correctionActive = false;
}
