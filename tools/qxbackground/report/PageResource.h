#ifndef QXBACKGROUND_REPORT_PAGERESOURCE_H
#define QXBACKGROUND_REPORT_PAGERESOURCE_H

namespace workbench {

// The page as one text in pieces, null after the last; none when the program was built without. The build writes it
// (bundle.py).
extern const char* const kPagePieces[];

} // namespace workbench

#endif
