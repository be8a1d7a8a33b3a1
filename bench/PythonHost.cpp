// The C++ host that bench/python.py compares Python with: it corrects images on Python's own object and in Python's own
// memory, so that nothing differs but who calls.
#include "QX_BackgroundCorrection.h"

#include <chrono>

#if defined(__GNUC__)
#define QXBC_BENCH_EXPORT extern "C" __attribute__((visibility("default")))
#else
#define QXBC_BENCH_EXPORT extern "C"
#endif

/// Corrects an image in place. The handle of the flat interface is the object.
/// \return how long it took in nanoseconds, or -1 where the library refused
QXBC_BENCH_EXPORT double NanosecondsToApply(QX_KRLSDK::QX_IBackgroundCorrection* object, unsigned short* image,
                                            int imageLength)
{
    const auto start = std::chrono::steady_clock::now();
    const unsigned int code = object->ApplyCorrection(image, imageLength, nullptr, 0, nullptr, false, false, false);
    const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - start;
    return code == QX_KRLSDK::kSuccess ? taken.count() : -1;
}
