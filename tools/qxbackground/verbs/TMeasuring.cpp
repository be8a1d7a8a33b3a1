#include "verbs/TMeasuring.h"

#include "base/Interrupts.h"
#include "base/Processors.h"

#include <utility>

namespace workbench {

namespace {

constexpr std::size_t kPartsWaiting = 2; // each has the memory of a page

} // namespace

TMeasuring::TMeasuring(TCorrectionReport& result) : report(result), parts(kPartsWaiting)
{
    if (ProcessorsToUse() > 1)
        thread = ThreadWithoutInterrupts([this] { MeasureAll(); });
}

TMeasuring::~TMeasuring()
{
    if (!thread.joinable())
        return;
    parts.Stop();
    parts.End(nullptr);
    thread.join();
}

void TMeasuring::Hand(TPart next, const TImage& image)
{
    if (!thread.joinable()) {
        Measure(image, next);
        return;
    }
    std::swap(next.image, part.image);
    std::swap(next, part);
    part.image = image;
    parts.Put(part); // where nobody takes it any more, Finish says why
}

void TMeasuring::Measure(const TImage& image, const TPart& which)
{
    switch (which.what) {
    case TWhat::Background:
        report.background.Add(image);
        break;
    case TWhat::Before:
        before = report.before.Add(image);
        break;
    case TWhat::After:
        report.measured.push_back({which.input, which.page, before, report.after.Add(image)});
        break;
    }
}

void TMeasuring::MeasureAll()
{
    try {
        StandBack();
        TPart taken;
        while (parts.Take(taken))
            Measure(taken.image, taken);
    } catch (...) {
        failure = std::current_exception();
        parts.Stop();
    }
}

void TMeasuring::Finish()
{
    if (!thread.joinable())
        return;
    parts.End(nullptr);
    thread.join();
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace workbench
