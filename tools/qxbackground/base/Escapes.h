#ifndef QXBACKGROUND_BASE_ESCAPES_H
#define QXBACKGROUND_BASE_ESCAPES_H

namespace workbench {

enum class TStream { Output, Error };

// Whether it is a terminal that understands escape sequences. Where a console has to be told that some will come, this
// tells it.
bool TakesEscapes(TStream stream);

} // namespace workbench

#endif
