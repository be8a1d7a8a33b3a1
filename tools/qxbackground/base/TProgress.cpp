#include "base/TProgress.h"

#include "base/Interrupts.h"
#include "base/TToolError.h"
#include "base/Terminal.h"

#include <fmt/format.h>

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
    const std::string bar(static_cast<std::size_t>(percent * kBarCharacters / 100), '#');
    std::fputs(fmt::format("\r{} [{:<{}}] {:3} %", what, bar, kBarCharacters, percent).c_str(), stderr);
    std::fflush(stderr);
}

} // namespace workbench
