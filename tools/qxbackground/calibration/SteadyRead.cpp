#include "calibration/SteadyRead.h"

#include "base/TProgress.h"
#include "base/TToolError.h"

#include <algorithm>
#include <chrono>
#include <system_error>
#include <thread>

namespace workbench {

namespace fs = std::filesystem;

namespace {

constexpr auto kPatience = std::chrono::seconds(30);
constexpr auto kPause = std::chrono::milliseconds(3);

} // namespace

TFileStates StatesOfStore(const TStorePlace& place)
{
    TFileStates states;
    std::error_code error;
    for (fs::directory_iterator entry(place.Folder(), error), end; !error && entry != end; entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (IsClaimed(place, name))
            states.emplace_back(name, StateOf(entry->path()));
    }
    std::sort(states.begin(), states.end(), [](const auto& one, const auto& other) { return one.first < other.first; });
    return states;
}

void ReadSteadily(const std::string& name, const std::function<TFileStates()>& states,
                  const std::function<void()>& read)
{
    const auto start = std::chrono::steady_clock::now();
    for (;;) {
        const TFileStates before = states();
        try {
            read();
            if (states() == before)
                return;
        } catch (const std::exception&) {
            if (states() == before)
                throw;
        }
        ThrowIfInterrupted();
        if (std::chrono::steady_clock::now() - start > kPatience)
            throw TToolError(name, "is changed by other processes all the time; try again later");
        std::this_thread::sleep_for(kPause);
    }
}

void ReadFileSteadily(const std::string& path, const std::function<void()>& read)
{
    ReadSteadily(path, [&] { return TFileStates{{path, StateOf(path)}}; }, read);
}

void ReadStoreSteadily(const TStorePlace& place, const std::function<void()>& read)
{
    ReadSteadily(place.Text(), [&] { return StatesOfStore(place); }, read);
}

} // namespace workbench
