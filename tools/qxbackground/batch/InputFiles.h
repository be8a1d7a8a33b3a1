#ifndef QXBACKGROUND_BATCH_INPUTFILES_H
#define QXBACKGROUND_BATCH_INPUTFILES_H

#include <string>
#include <vector>

namespace workbench {

// The order of names as people count: digits by the number they make, so that frame2 comes before frame10; all else by
// its bytes.
bool NaturallyBefore(const std::string& one, const std::string& other);

// Whether a name fits a pattern: * stands for any characters, ? for one, [a-c] for one of those, [!a-c] for one of the
// others. A name that begins with a dot fits only a pattern that does.
bool Fits(const std::string& name, const std::string& pattern);

// The files that are meant by what stands on the command line: a file for itself, a folder for the images in it (by the
// endings of their names; folders within it are left alone), a pattern for what fits it. Those of a folder and of a
// pattern come in natural order. Throws TToolError for a folder or a pattern that gives nothing; a name of nothing at
// all passes, for whoever opens it to say so.
std::vector<std::string> ExpandInputs(const std::vector<std::string>& given);

} // namespace workbench

#endif
