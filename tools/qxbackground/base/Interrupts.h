#ifndef QXBACKGROUND_BASE_INTERRUPTS_H
#define QXBACKGROUND_BASE_INTERRUPTS_H

#include <functional>
#include <string>
#include <thread>

namespace workbench {

// Lets a first Ctrl-C, Ctrl-\, hang-up or termination request end the work at its next step; a second one ends the
// process at once. A file that grows beyond the allowed size becomes an ordinary failure of writing.
void CatchInterrupts();
bool Interrupted();

// Starts a thread that interrupts leave alone: they come to those that were there before, so that what a thread does to
// files, between two of its steps, is not cut short by an interrupt that another thread got.
std::thread ThreadWithoutInterrupts(std::function<void()> work);

// What a second interrupt removes before it ends the process. Some 30 names at a time; more are forgotten.
void RemoveWhenKilled(const std::string& path);
void KeepWhenKilled(const std::string& path);

} // namespace workbench

#endif
