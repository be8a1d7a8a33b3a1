// Measures how the work on a named store grows with its number of files: qxbc_store_scaling GROUPS...
// For each number of groups, of 10 corrections of 64 x 64 pixels each: saving the fresh store, opening it, selecting
// every group once, and copying it, as time per file; then the ratio of the last number's to the first's. 1 is linear.
// The folder for temporary files (TMPDIR) is the disk that is measured.
#include "offline/StoreSupport.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

constexpr int kPerGroup = 10;
constexpr int kSize = 64;

std::string Key(int group, int number)
{
    return "Session," + std::to_string(group / 10) + ",Exposure," + std::to_string(group % 10) + ",n," +
           std::to_string(number);
}

void Expect(bool holds, const char* what)
{
    if (!holds) {
        throw std::runtime_error(what);
    }
}

struct TTimes {
    double save = 0.0; // microseconds per file
    double open = 0.0;
    double select = 0.0;
    double copy = 0.0;
};

template <typename TWork> double MicrosecondsPerFile(int files, const TWork& work)
{
    const auto begin = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::micro> time = std::chrono::steady_clock::now() - begin;
    return time.count() / files;
}

TTimes Measure(int groups)
{
    const TStoreFolder folder;
    TTimes times;
    {
        TTestStore fresh({"Session", "Exposure"});
        const Literal::TImage image{kSize, kSize, std::vector<std::uint16_t>(kSize * kSize, 300)};
        for (int group = 0; group < groups; ++group) {
            for (int number = 0; number < kPerGroup; ++number) {
                Expect(fresh.AddFrames(Key(group, number), {image}, 1.0f, 1.0f) == 0, "adding");
            }
        }
        times.save = MicrosecondsPerFile(groups, [&] { Expect(fresh.Save("s") == 0, "saving"); });
    }
    TTestStore store({"Session", "Exposure"});
    times.open = MicrosecondsPerFile(groups, [&] { Expect(store.Load("s_Session_0_Exposure_0") == 0, "opening"); });
    Expect(store->GetNumberOfCorrections() == static_cast<unsigned int>(groups * kPerGroup), "finding every key");
    times.select = MicrosecondsPerFile(groups, [&] {
        for (int group = 0; group < groups; ++group) {
            Expect(store.Select(Key(group, group % kPerGroup)) == 0, "selecting");
        }
    });
    Expect(store.Corrected() == 700, "applying");
    times.copy = MicrosecondsPerFile(groups, [&] { Expect(store.Save("copy") == 0, "copying"); });
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
        files += entry.is_regular_file() ? 1U : 0U;
    }
    Expect(files == static_cast<std::size_t>(2 * groups), "copying every file");
    return times;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    try {
        std::vector<TTimes> all;
        std::printf("%8s %12s %12s %12s %12s   microseconds per file\n", "groups", "save", "open", "select", "copy");
        for (int i = 1; i < argumentCount; ++i) {
            const int groups = std::atoi(arguments[i]);
            Expect(groups > 0, "reading the number of groups");
            const TTimes times = Measure(groups);
            std::printf("%8d %12.1f %12.1f %12.1f %12.1f\n", groups, times.save, times.open, times.select, times.copy);
            all.push_back(times);
        }
        Expect(!all.empty(), "reading a number of groups");
        std::printf("%8s %12.2f %12.2f %12.2f %12.2f\n", "ratio", all.back().save / all.front().save,
                    all.back().open / all.front().open, all.back().select / all.front().select,
                    all.back().copy / all.front().copy);
        return 0;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "%s failed\n", failure.what());
        return 1;
    }
}
