#ifndef QXBACKGROUND_CALIBRATION_REMEDY_H
#define QXBACKGROUND_CALIBRATION_REMEDY_H

#include <string>

namespace workbench {

// What a user can do about a refusal of the library, to be put behind the library's own text: "; ..."; empty where that
// text says it all. The library cannot know what commands there are.
std::string Remedy(const std::string& refusal);

} // namespace workbench

#endif
