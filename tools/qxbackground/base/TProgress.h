#ifndef QXBACKGROUND_BASE_TPROGRESS_H
#define QXBACKGROUND_BASE_TPROGRESS_H

#include <cstdint>
#include <string>

namespace workbench {

// A bar on the standard error stream, drawn only when that is a terminal and the work takes noticeable time.
class TProgress {
public:
    TProgress(const std::string& what, std::uint64_t total);
    ~TProgress();
    TProgress(const TProgress&) = delete;
    TProgress& operator=(const TProgress&) = delete;

    // One more step done. Throws TToolError when the user asked to stop (Ctrl-C), so that the caller cleans up.
    void Step();

private:
    std::string what;
    std::uint64_t total;
    std::uint64_t done = 0;
    bool visible;
    int drawnPercent = -1;
};

// Throws TToolError when the user asked to stop.
void ThrowIfInterrupted();

} // namespace workbench

#endif
