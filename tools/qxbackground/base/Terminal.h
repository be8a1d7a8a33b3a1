#ifndef QXBACKGROUND_TERMINAL_H
#define QXBACKGROUND_TERMINAL_H

namespace workbench {

bool StandardErrorIsTerminal();

} // namespace workbench

#endif
