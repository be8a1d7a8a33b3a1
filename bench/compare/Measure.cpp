#include "compare/Measure.h"

#include <algorithm>
#include <chrono>
#include <cstddef>

namespace {

double Seconds(const std::function<void()>& run, int count)
{
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < count; ++i) {
        run();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count() / count;
}

int RunsPerSample(const std::function<void()>& run)
{
    constexpr double kSampleSeconds = 0.002;
    run();
    return std::clamp(static_cast<int>(kSampleSeconds / std::max(Seconds(run, 1), 1e-9)), 1, 20000);
}

} // namespace

std::vector<TTiming> Measure(const std::vector<TRival>& rivals, int rounds)
{
    std::vector<int> runs;
    for (const TRival& rival : rivals) {
        runs.push_back(rounds > 1 ? RunsPerSample(rival.run) : 1);
    }
    std::vector<std::vector<double>> samples(rivals.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < rivals.size(); ++i) {
            // Until what the others left in the caches is gone; a ring of images is larger than they are.
            for (int warmUp = 0; warmUp < (rounds > 1 && rivals[i].images == 1 ? 5 : 1); ++warmUp) {
                rivals[i].run();
            }
            samples[i].push_back(Seconds(rivals[i].run, runs[i]));
        }
    }
    std::vector<TTiming> timings;
    for (std::size_t i = 0; i < rivals.size(); ++i) {
        std::sort(samples[i].begin(), samples[i].end());
        const double images = rivals[i].images;
        const TTiming timing = {rivals[i].name, samples[i][samples[i].size() / 2] / images, samples[i].front() / images,
                                samples[i].back() / images};
        const auto same = std::find_if(timings.begin(), timings.end(),
                                       [&](const TTiming& other) { return other.rival == timing.rival; });
        if (same == timings.end()) {
            timings.push_back(timing);
        } else if (timing.medianSeconds < same->medianSeconds) {
            *same = timing;
        }
    }
    return timings;
}
