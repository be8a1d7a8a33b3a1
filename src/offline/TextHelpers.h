// Text and path helpers with positions counted from 1, 0 meaning "not there". The backslash is the only separator they
// know: a forward slash is an ordinary character.
#ifndef OFFLINE_TEXTHELPERS_H
#define OFFLINE_TEXTHELPERS_H

#include "offline/TDualString.h"

namespace TextHelpers {

// Position of the first occurrence of `sought`, which is 1 for an empty one.
int FindText(const TDualString& text, const TDualString& sought);

// Position of the last character of `text` that is one of `set`.
int FindLastOf(const TDualString& text, const TDualString& set);

// Up to `length` characters from position `start`; empty for a start below 1. Throws std::out_of_range for a start
// past the end.
TDualString MidText(const TDualString& text, int start, int length);

// Gives the folder part, through the last backslash, or the file part behind it. Returns the backslash's position.
int SplitPath(const TDualString& path, bool wantFolder, TDualString& part);

} // namespace TextHelpers

#endif
