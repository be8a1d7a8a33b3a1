#ifndef QXBACKGROUND_STACKS_THEADERDEMANDS_H
#define QXBACKGROUND_STACKS_THEADERDEMANDS_H

#include <string>

namespace workbench {

// What is asked of the headers of frames that become one.
struct THeaderDemands {
    std::string exposureOption; // says the exposure where headers do not; empty: nobody asks for it
    double exposureSeconds = 0; // that this option gave; 0: it was not there, and the first header has to say it
    bool mayDiffer = false; // frames of several exposures, gains, binnings or depths are taken together all the same
};

} // namespace workbench

#endif
