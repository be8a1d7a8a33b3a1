// Figures of pages, a line each.
#include "verbs/TPageTable.h"

#include "base/Wording.h"

#include <fmt/format.h>

#include <algorithm>

namespace workbench {

namespace {

constexpr std::size_t kLongestName = 40;
const std::string kCut = "...";

bool BeginsCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

// Of a text in UTF-8.
std::size_t CharactersOf(const std::string& text)
{
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), BeginsCharacter));
}

// What files are told apart by stands at their names' end.
std::string Shortened(std::string name)
{
    name = Printable(std::move(name));
    if (CharactersOf(name) <= kLongestName)
        return name;
    std::size_t start = name.size();
    for (std::size_t characters = 0; characters < kLongestName - kCut.size(); --start)
        characters += BeginsCharacter(name[start - 1]) ? 1U : 0U;
    return kCut + name.substr(start);
}

std::string AtZero(const TPageFigures& figures)
{
    return fmt::format("{:.2f} %", figures.PercentAtZero());
}

} // namespace

TPageTable::TPageTable(const std::vector<std::string>& names) : width(CharactersOf("image"))
{
    for (const std::string& name : names)
        width = std::max(width, CharactersOf(Shortened(name)));
}

std::string TPageTable::Start(const std::string& name, const std::string& page) const
{
    const std::string text = Shortened(name);
    return "  " + text + std::string(width - std::min(width, CharactersOf(text)), ' ') + fmt::format("{:>6}", page);
}

std::string TPageTable::Head() const
{
    return Start("image", "page") + fmt::format("{:>11}{:>11}{:>10}{:>13}{:>16}{:>9}{:>9}{:>10}\n", "median", "mean",
                                                "spread", "row pattern", "column pattern", "minimum", "maximum",
                                                "at zero");
}

std::string TPageTable::Row(const std::string& name, const std::string& page, const TPageFigures& figures) const
{
    return Start(name, page) + fmt::format("{:>11.2f}{:>11.2f}{:>10.2f}{:>13.2f}{:>16.2f}{:>9}{:>9}{:>10}\n",
                                           figures.median, figures.mean, figures.spread, figures.rowPattern,
                                           figures.columnPattern, figures.minimum, figures.maximum, AtZero(figures));
}

std::string TPageTable::HeadOfTwo() const
{
    return Start("", "") + fmt::format("{:>15}{:>22}\n", "before", "after") + Start("image", "page") +
           fmt::format("{:>11}{:>10}{:>13}{:>10}{:>13}{:>16}{:>10}\n", "median", "spread", "median", "spread",
                       "row pattern", "column pattern", "at zero");
}

std::string TPageTable::RowOfTwo(const std::string& name, const std::string& page, const TPageFigures& before,
                                 const TPageFigures& after) const
{
    return Start(name, page) + fmt::format("{:>11.2f}{:>10.2f}{:>13.2f}{:>10.2f}{:>13.2f}{:>16.2f}{:>10}\n",
                                           before.median, before.spread, after.median, after.spread, after.rowPattern,
                                           after.columnPattern, AtZero(after));
}

} // namespace workbench
