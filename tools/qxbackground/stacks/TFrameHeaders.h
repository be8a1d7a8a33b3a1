#ifndef QXBACKGROUND_STACKS_TFRAMEHEADERS_H
#define QXBACKGROUND_STACKS_TFRAMEHEADERS_H

#include "images/TShot.h"
#include "stacks/THeaderDemands.h"

#include <string>
#include <vector>

namespace workbench {

// Reads the headers of a stack's frames as they pass: frames that were taken differently do not become one unless that
// was asked for, and what all agree on is known of the stack.
class TFrameHeaders {
public:
    explicit TFrameHeaders(THeaderDemands what) : demands(std::move(what)) {}

    // Throws TToolError naming both frames when this one was taken otherwise than those before it, and when the
    // exposure is asked for and the first one does not say it.
    void Add(const std::string& path, unsigned page, const TPageMetadata& metadata);

    // What the frames agree on; the temperature is their mean, the day that of the last.
    TShot Common() const;
    // One line each, of `what`: "dark frames".
    std::vector<std::string> Warnings(const std::string& what) const;

private:
    struct TNamed {
        std::string name;
        TShot shot;
    };
    struct TDisagreement {
        TShotDifference difference;
        std::string one, other; // the names of the first two frames
    };

    THeaderDemands demands;
    unsigned frames = 0;
    std::vector<TNamed> firsts; // that were the first to say something
    std::vector<TDisagreement> disagreements;
    TUnusableSettings unusable;    // of each the first that was seen
    std::string ofUnknownExposure; // the name of the frame that says so
    double celsiusSum = 0;
    unsigned celsiusCount = 0;
    TNamed coldest, warmest;
    std::optional<std::int64_t> lastDay;
};

} // namespace workbench

#endif
