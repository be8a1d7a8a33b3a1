#ifndef QXBACKGROUND_STACKS_TSTACKOPTIONS_H
#define QXBACKGROUND_STACKS_TSTACKOPTIONS_H

#include "stacks/THeaderDemands.h"

#include <cstddef>
#include <string>

namespace workbench {

enum class TCombination { Average, Median };
enum class TRejection { None, Sigma, Winsor, MinMax };

// How the frames of a stack become one, pixel by pixel.
struct TStackOptions {
    TCombination combination = TCombination::Average;
    TRejection rejection = TRejection::None;
    double low = 3, high = 3;                    // in units of the spread: how far a value may lie from the median
    unsigned extremes = 0;                       // with MinMax: how many are left out at either end
    bool alignLevels = false;                    // every frame is first brought to the level of the middle one
    bool keepExact = false;                      // the average is wanted before it is rounded, too
    std::size_t memory = std::size_t{128} << 20; // bytes of frames that are held at a time
    THeaderDemands headers;

    // Whether this is what the library does by itself.
    bool IsPlain() const
    {
        return combination == TCombination::Average && rejection == TRejection::None && !alignLevels;
    }
    std::string Text() const;            // "average", "median, rejecting by sigma:3,3"
    std::string CombinationText() const; // "average", "average of one level"
    std::string RejectionText() const;   // as --reject takes it; "none"
};

// Takes "sigma", "sigma:LOW,HIGH", "winsor", "winsor:LOW,HIGH" or "minmax:N" into `options`. Throws TToolError.
void SetRejection(TStackOptions& options, const std::string& text);

} // namespace workbench

#endif
