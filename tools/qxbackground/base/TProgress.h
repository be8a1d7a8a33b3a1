#ifndef QXBACKGROUND_BASE_TPROGRESS_H
#define QXBACKGROUND_BASE_TPROGRESS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace workbench {

// A bar on the standard error stream, with the time that is left, drawn only when that is a terminal and the work takes
// noticeable time.
class TProgress {
public:
    // `total` in whatever unit the steps are counted.
    TProgress(const std::string& what, std::uint64_t total);
    ~TProgress();
    TProgress(const TProgress&) = delete;
    TProgress& operator=(const TProgress&) = delete;

    // One more step done, or so many in all. Both throw TToolError when the user asked to stop (Ctrl-C), so that the
    // caller cleans up.
    void Step() { Reach(done + 1); }
    void Reach(std::uint64_t stepsDone);
    // Prints a line on the standard error stream, above the bar.
    void Say(const std::string& line);

private:
    void Draw(int percent);
    void Clear();
    void Print(const std::string& line) const;

    std::string what;
    std::uint64_t total;
    std::uint64_t done = 0;
    bool visible;
    bool takesEscapes; // otherwise blanks go over what is left of a longer line
    std::size_t drawnColumns = 0;
    int drawnPercent = -1;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point drawn;
};

// Throws TToolError when the user asked to stop.
void ThrowIfInterrupted();

// "12 s", "3 min 20 s", "2 h 5 min".
std::string DurationText(double seconds);

} // namespace workbench

#endif
