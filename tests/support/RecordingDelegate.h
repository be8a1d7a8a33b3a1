// A host's delegate that writes down how it was called and does nothing else.
#ifndef QXBC_TESTS_RECORDING_DELEGATE_H
#define QXBC_TESTS_RECORDING_DELEGATE_H

#include "QX_BackgroundCorrection.h"

#include <functional>
#include <ostream>
#include <string>
#include <vector>

struct TDelegateCall {
    std::string operation;
    unsigned short* output;
    const unsigned short* image;
    int width;
    int height;
    bool delegateProcessing;
    bool delegateOption;

    bool operator==(const TDelegateCall& other) const
    {
        return operation == other.operation && output == other.output && image == other.image && width == other.width &&
               height == other.height && delegateProcessing == other.delegateProcessing &&
               delegateOption == other.delegateOption;
    }
};

inline std::ostream& operator<<(std::ostream& stream, const TDelegateCall& call)
{
    return stream << call.operation << "(output " << call.output << ", image " << call.image << ", " << call.width
                  << " x " << call.height << ", processing " << call.delegateProcessing << ", option "
                  << call.delegateOption << ')';
}

class TRecordingDelegate : public QX_KRLSDK::ICorrectionDelegate {
public:
    void Reserved0() override { reservedCalls += 1; }
    void Reserved1() override { reservedCalls += 1; }
    void Reserved2() override { reservedCalls += 1; }
    void Reserved3() override { reservedCalls += 1; }
    void Reserved4() override { reservedCalls += 1; }
    void Reserved5() override { reservedCalls += 1; }

    unsigned int SubtractInPlace(unsigned short* image, const unsigned short* background, int width, int height,
                                 bool delegateProcessing, bool delegateOption) override
    {
        return Record({"SubtractInPlace", nullptr, image, width, height, delegateProcessing, delegateOption},
                      background);
    }
    unsigned int SubtractInto(unsigned short* output, const unsigned short* image, const unsigned short* background,
                              int width, int height, bool delegateProcessing, bool delegateOption) override
    {
        return Record({"SubtractInto", output, image, width, height, delegateProcessing, delegateOption}, background);
    }
    unsigned int ProcessInPlace(unsigned short* image, int width, int height) override
    {
        return Record({"ProcessInPlace", nullptr, image, width, height, false, false}, nullptr);
    }

    std::vector<TDelegateCall> calls;
    std::vector<unsigned short> lastBackground;
    unsigned int result = 0;      // of every operation
    std::function<void()> action; // done within every operation
    int reservedCalls = 0;

private:
    unsigned int Record(const TDelegateCall& call, const unsigned short* background)
    {
        calls.push_back(call);
        const std::size_t count = static_cast<std::size_t>(call.width) * static_cast<std::size_t>(call.height);
        lastBackground = background != nullptr ? std::vector<unsigned short>(background, background + count)
                                               : std::vector<unsigned short>{};
        if (action) {
            action();
        }
        return result;
    }
};

#endif
