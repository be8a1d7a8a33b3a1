#ifndef QXBACKGROUND_BASE_CLOCK_H
#define QXBACKGROUND_BASE_CLOCK_H

#include <string>

namespace workbench {

// The time in UTC, 2026-11-22T06:35:00Z; or what SOURCE_DATE_EPOCH says instead, so that the same command gives the
// same bytes.
std::string TimeText();

} // namespace workbench

#endif
