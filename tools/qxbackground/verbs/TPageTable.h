#ifndef QXBACKGROUND_VERBS_TPAGETABLE_H
#define QXBACKGROUND_VERBS_TPAGETABLE_H

#include "images/TPageFigures.h"

#include <cstddef>
#include <string>
#include <vector>

namespace workbench {

// Figures of pages for people, a line each. `names`: of all images that may come, for the width of their column.
class TPageTable {
public:
    explicit TPageTable(const std::vector<std::string>& names);

    std::string Head() const;
    std::string Row(const std::string& name, const std::string& page, const TPageFigures& figures) const;
    // The same of pages before and after a correction.
    std::string HeadOfTwo() const;
    std::string RowOfTwo(const std::string& name, const std::string& page, const TPageFigures& before,
                         const TPageFigures& after) const;

private:
    std::string Start(const std::string& name, const std::string& page) const;

    std::size_t width;
};

} // namespace workbench

#endif
