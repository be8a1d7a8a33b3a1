#include "base/TProgress.h"

#include "base/Interrupts.h"
#include "base/TToolError.h"
#include "base/Terminal.h"

#include <cstdio>

namespace workbench {

namespace {

constexpr int kBarCharacters = 40;

} // namespace

void ThrowIfInterrupted()
{
    if (Interrupted())
        throw TToolError("interrupted; no unfinished file was left");
}

TProgress::TProgress(const std::string& text, std::uint64_t steps)
    : what(text), total(steps == 0 ? 1 : steps), visible(StandardErrorIsTerminal())
{}

TProgress::~TProgress()
{
    if (visible && drawnPercent >= 0)
        std::fputs("\r\033[K", stderr);
}

void TProgress::Step()
{
    ThrowIfInterrupted();
    ++done;
    const int percent = static_cast<int>(done >= total ? 100 : done * 100 / total);
    if (!visible || percent == drawnPercent)
        return;
    drawnPercent = percent;
    const int filled = percent * kBarCharacters / 100;
    std::fprintf(stderr, "\r%s [%s%s] %3d %%", what.c_str(), std::string(static_cast<std::size_t>(filled), '#').c_str(),
                 std::string(static_cast<std::size_t>(kBarCharacters - filled), ' ').c_str(), percent);
    std::fflush(stderr);
}

} // namespace workbench
