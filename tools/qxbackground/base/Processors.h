#ifndef QXBACKGROUND_BASE_PROCESSORS_H
#define QXBACKGROUND_BASE_PROCESSORS_H

namespace workbench {

// How many of the machine's processors this process may run on, at least 1.
unsigned ProcessorsToUse();

} // namespace workbench

#endif
