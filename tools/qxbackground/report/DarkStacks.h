#ifndef QXBACKGROUND_REPORT_DARKSTACKS_H
#define QXBACKGROUND_REPORT_DARKSTACKS_H

#include "images/TInputOptions.h"

#include <nlohmann/json_fwd.hpp>

#include <string>
#include <vector>

namespace workbench {

// What dark frames tell about the camera: noise from pairs of frames, in which everything that is fixed cancels; read
// noise, dark current and the gain from how noise and level grow with exposure; drift along the stack, and frames that
// are off. `exposures`, in seconds, are for frames that do not say
// theirs: none, one for all files, or one for each; throws TToolError otherwise. Pages are streamed.
nlohmann::json DarkFigures(const std::vector<std::string>& paths, const TInputOptions& input,
                           const std::vector<double>& exposures);

} // namespace workbench

#endif
