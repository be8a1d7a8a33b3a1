#ifndef QXBACKGROUND_REPORT_REPORTPAGE_H
#define QXBACKGROUND_REPORT_REPORTPAGE_H

#include <string>

namespace workbench {

// The report's page around its data: `json` is put into the place that the page keeps for it. The page itself is
// bundled when the program is built. Throws TToolError when it was built without.
std::string PageAround(std::string json);
bool HasPage();

} // namespace workbench

#endif
