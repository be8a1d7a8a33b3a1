#include "base/TProgress.h"

#include "base/Escapes.h"
#include "base/Interrupts.h"
#include "base/TToolError.h"
#include "base/Terminal.h"

#include <fmt/format.h>

#include <algorithm>
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
    : what(text), total(steps == 0 ? 1 : steps), visible(StandardErrorIsTerminal()),
      takesEscapes(TakesEscapes(TStream::Error))
{}

TProgress::~TProgress()
{
    Clear();
}

void TProgress::Reach(std::uint64_t stepsDone)
{
    ThrowIfInterrupted();
    done = stepsDone;
    if (!visible)
        return;
    const auto now = std::chrono::steady_clock::now();
    const int percent =
        done >= total ? 100 : static_cast<int>(static_cast<double>(done) / static_cast<double>(total) * 100);
    // Once a second also within a percent, because the time left goes on.
    if (percent == drawnPercent && now - drawn < std::chrono::seconds(1))
        return;
    drawn = now;
    Draw(percent);
}

void TProgress::Draw(int percent)
{
    constexpr double kEnoughToTell = 2; // seconds
    drawnPercent = percent;
    const std::string bar(static_cast<std::size_t>(percent * kBarCharacters / 100), '#');
    const double seconds = std::chrono::duration<double>(drawn - start).count();
    std::string left;
    if (seconds > kEnoughToTell && done > 0 && done < total)
        left = ", " + DurationText(seconds * static_cast<double>(total - done) / static_cast<double>(done)) + " left";
    const std::string line = fmt::format("{} [{:<{}}] {:3} %{}", what, bar, kBarCharacters, percent, left);
    Print(line);
    drawnColumns = line.size();
}

void TProgress::Print(const std::string& line) const
{
    const std::string rest =
        takesEscapes ? "\033[K" : std::string(drawnColumns - std::min(drawnColumns, line.size()), ' ');
    std::fputs(("\r" + line + rest).c_str(), stderr);
    std::fflush(stderr);
}

void TProgress::Clear()
{
    if (visible && drawnPercent >= 0) {
        Print("");
        std::fputs(takesEscapes ? "" : "\r", stderr);
        std::fflush(stderr); // on Windows it is buffered, and what is said next goes elsewhere
    }
    drawnPercent = -1;
    drawnColumns = 0;
}

void TProgress::Say(const std::string& line)
{
    Clear();
    std::fputs((line + '\n').c_str(), stderr);
    std::fflush(stderr);
}

std::string DurationText(double seconds)
{
    const auto whole = static_cast<std::uint64_t>(seconds + 0.5);
    if (whole < 60)
        return fmt::format("{} s", whole);
    if (whole < 3600)
        return fmt::format("{} min {} s", whole / 60, whole % 60);
    return fmt::format("{} h {} min", whole / 3600, whole % 3600 / 60);
}

} // namespace workbench
