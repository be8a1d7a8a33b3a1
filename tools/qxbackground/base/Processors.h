#ifndef QXBACKGROUND_BASE_PROCESSORS_H
#define QXBACKGROUND_BASE_PROCESSORS_H

namespace workbench {

// How many of the machine's processors this process may run on, at least 1.
unsigned ProcessorsToUse();

// Lets the calling thread stand back behind the others, of which one is waited for, where the system can do that.
void StandBack();

} // namespace workbench

#endif
