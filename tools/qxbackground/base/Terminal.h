#ifndef QXBACKGROUND_BASE_TERMINAL_H
#define QXBACKGROUND_BASE_TERMINAL_H

namespace workbench {

bool StandardErrorIsTerminal();

} // namespace workbench

#endif
