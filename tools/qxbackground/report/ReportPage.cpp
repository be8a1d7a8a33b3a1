#include "report/ReportPage.h"

#include "base/TToolError.h"
#include "report/PageResource.h"

#include <algorithm>

namespace workbench {

namespace {

// What stands in the page where its data belong.
constexpr char kPlace[] = "\"QXBACKGROUND-DATA\"";

std::string Page()
{
    std::string page;
    for (const char* const* piece = kPagePieces; *piece != nullptr; ++piece)
        page += *piece;
    return page;
}

} // namespace

bool HasPage()
{
    return kPagePieces[0] != nullptr;
}

std::string PageAround(std::string json)
{
    if (!HasPage())
        throw TToolError(
            "this workbench was built without the report's page, because Chart.js (Debian: libjs-chart.js) "
            "was missing then; --json and --csv give the figures");
    std::string page = Page();
    const std::size_t at = page.find(kPlace);
    // In a page nothing in the data may look like the end of its script: "<" stands in texts only, and may be spelled.
    std::string spelled;
    spelled.reserve(json.size() + json.size() / 64);
    for (const char character : json) {
        if (character == '<')
            spelled += "\\u003c";
        else
            spelled += character;
    }
    json.clear();
    json.shrink_to_fit();
    page.replace(at, sizeof kPlace - 1, spelled);
    return page;
}

} // namespace workbench
