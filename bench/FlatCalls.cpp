// What a call through the flat interface costs beyond the call itself: ApplyCorrection on images of 1 x 1 pixel,
// through the C++ interface and through the flat one, on the same object, in turns.
//   qxbc_flat_calls [CALLS]     (calls per round, default 2000000)
#include "QX_BackgroundCorrection.h"
#include "QX_BackgroundCorrection_C.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int kRounds = 15;

template <class TCall> double NanosecondsPerCall(int calls, const TCall& call)
{
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i) {
        if (call() != QXBC_SUCCESS) {
            std::fprintf(stderr, "ApplyCorrection failed\n");
            std::exit(2);
        }
    }
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() / calls;
}

double Median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

} // namespace

int main(int argumentCount, char** arguments)
{
    const int calls = argumentCount > 1 ? std::atoi(arguments[1]) : 2000000;
    QXBC_Object* flat = nullptr;
    const unsigned short dark = 7;
    const unsigned short* const frames[] = {&dark};
    if (calls < 1 || QXBC_CreateProcessor(&flat) != QXBC_SUCCESS ||
        QXBC_AddCorrection(flat, "dark", frames, 1, 1, 1, 1.0f, 100.0f) != QXBC_SUCCESS ||
        QXBC_SetActiveCorrection(flat, "dark") != QXBC_SUCCESS ||
        QXBC_SetExposureAndIntensity(flat, 1.0f, 100.0f) != QXBC_SUCCESS) {
        std::fprintf(stderr, "usage: qxbc_flat_calls [CALLS]\n");
        return 2;
    }
    // The handle is the object.
    auto* const object = reinterpret_cast<QX_KRLSDK::QX_IBackgroundCorrection*>(flat);
    unsigned short pixel = 1000;
    std::vector<double> direct, throughFlat;
    for (int round = 0; round < kRounds; ++round) {
        direct.push_back(NanosecondsPerCall(
            calls, [&] { return object->ApplyCorrection(&pixel, 1, nullptr, 0, nullptr, false, false, false); }));
        throughFlat.push_back(NanosecondsPerCall(
            calls, [&] { return QXBC_ApplyCorrection(flat, &pixel, 1, nullptr, 0, nullptr, 0, 0, 0); }));
    }
    std::printf("ApplyCorrection, 1 x 1, median of %d rounds of %d calls\n", kRounds, calls);
    std::printf("  through the C++ interface   %6.1f ns\n", Median(direct));
    std::printf("  through the flat interface  %6.1f ns   %+.1f ns\n", Median(throughFlat),
                Median(throughFlat) - Median(direct));
    return QXBC_Delete(flat) == QXBC_SUCCESS ? 0 : 1;
}
