// What a call through the flat interface and one through the comfort header cost beyond the call itself:
// ApplyCorrection on images of 1 x 1 pixel, through the C++ interface and through each of them, on the same object, in
// turns.
//   qxbc_flat_calls [CALLS]     (calls per round, default 10000)
#include "QX_BackgroundCorrection.hpp"
#include "QX_BackgroundCorrection_C.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int kRounds = 2000;

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

// What else runs on the machine only ever adds to a round.
double Fastest(const std::vector<double>& rounds)
{
    return *std::min_element(rounds.begin(), rounds.end());
}

} // namespace

int main(int argumentCount, char** arguments)
{
    const int calls = argumentCount > 1 ? std::atoi(arguments[1]) : 10000;
    // The flat interface loads the library that lies beside it; by its plain name it is then that one.
    if (calls < 1 || QXBC_LoadLibrary(nullptr, 0) != QXBC_SUCCESS) {
        std::fprintf(stderr, "usage: qxbc_flat_calls [CALLS]\n");
        return 2;
    }
    const QX_KRLSDK::TBackgroundCorrectionLibrary library;
    QX_KRLSDK::TBackgroundCorrection comfort = library.MakeProcessor();
    const unsigned short dark = 7;
    comfort.Add("dark", {{&dark, 1, 1}}, 1.0f, 100.0f);
    comfort.SetActive("dark");
    comfort.SetExposureAndIntensity(1.0f, 100.0f);
    QX_KRLSDK::QX_IBackgroundCorrection* const object = &comfort.Get();
    auto* const flat = reinterpret_cast<QXBC_Object*>(object); // the handle is the object

    unsigned short pixel = 1000;
    std::vector<double> direct, throughComfort, throughFlat;
    for (int round = 0; round < kRounds; ++round) {
        direct.push_back(NanosecondsPerCall(
            calls, [&] { return object->ApplyCorrection(&pixel, 1, nullptr, 0, nullptr, false, false, false); }));
        throughComfort.push_back(NanosecondsPerCall(calls, [&] {
            comfort.Apply({&pixel, 1, 1});
            return QXBC_SUCCESS;
        }));
        throughFlat.push_back(NanosecondsPerCall(
            calls, [&] { return QXBC_ApplyCorrection(flat, &pixel, 1, nullptr, 0, nullptr, 0, 0, 0); }));
    }
    std::printf("ApplyCorrection, 1 x 1, fastest of %d rounds of %d calls\n", kRounds, calls);
    const double call = Fastest(direct);
    std::printf("  through the C++ interface   %6.1f ns\n", call);
    const auto print = [call](const char* way, double time) {
        std::printf("  through the %-14s  %6.1f ns   %+.1f ns   %.2f of the call itself\n", way, time, time - call,
                    time / call);
    };
    print("comfort header", Fastest(throughComfort));
    print("flat interface", Fastest(throughFlat));
    return 0;
}
