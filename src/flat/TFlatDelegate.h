// A delegate whose operations are functions of the host.
#ifndef FLAT_TFLATDELEGATE_H
#define FLAT_TFLATDELEGATE_H

#include "QX_BackgroundCorrection.h"
#include "QX_BackgroundCorrection_C.h"

class TFlatDelegate final : public QX_KRLSDK::ICorrectionDelegate {
public:
    // `hostFunctions` may be null as long as nobody calls the delegate.
    explicit TFlatDelegate(const QXBC_Delegate* hostFunctions) : functions(hostFunctions) {}

    unsigned int SubtractInPlace(unsigned short* image, const unsigned short* background, int width, int height,
                                 bool delegateProcessing, bool delegateOption) override
    {
        if (functions->subtractInPlace == nullptr) {
            return QXBC_FIFTH_ARGUMENT_INVALID;
        }
        return functions->subtractInPlace(functions->user, image, background, width, height, delegateProcessing,
                                          delegateOption);
    }

    unsigned int SubtractInto(unsigned short* output, const unsigned short* image, const unsigned short* background,
                              int width, int height, bool delegateProcessing, bool delegateOption) override
    {
        if (functions->subtractInto == nullptr) {
            return QXBC_FIFTH_ARGUMENT_INVALID;
        }
        return functions->subtractInto(functions->user, output, image, background, width, height, delegateProcessing,
                                       delegateOption);
    }

    unsigned int ProcessInPlace(unsigned short* image, int width, int height) override
    {
        if (functions->processInPlace == nullptr) {
            return QXBC_FIFTH_ARGUMENT_INVALID;
        }
        return functions->processInPlace(functions->user, image, width, height);
    }

private:
    const QXBC_Delegate* functions;
};

#endif
