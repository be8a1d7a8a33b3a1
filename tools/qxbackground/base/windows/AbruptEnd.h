#ifndef QXBACKGROUND_BASE_WINDOWS_ABRUPTEND_H
#define QXBACKGROUND_BASE_WINDOWS_ABRUPTEND_H

namespace workbench {

// For an end without destructors. What another part of the program has open stays, for here it cannot be removed.
void RemoveUnfinishedFiles();

// Gives up every TFileLock of the process. The system does so as well, but a process may be seen to have ended while
// its lock files are still there.
void GiveUpLocks();

} // namespace workbench

#endif
