// The pictures that verbs write for people to look at.
#include "verbs/CorrectionPicture.h"

#include "pictures/Panels.h"

#include <fmt/format.h>

#include <iostream>

namespace workbench {

namespace {

std::vector<std::string> Written(const std::string& path, const TPanelPicture& drawn, const std::vector<TPanel>& panels,
                                 TExisting existing)
{
    WritePng(path, drawn.picture, existing);
    std::vector<std::string> lines{path + " (" + drawn.size + ")"};
    for (std::size_t panel = 0; panel < panels.size(); ++panel)
        lines.push_back(fmt::format("  {:<39} {}", panels[panel].title + ":", drawn.legend[panel]));
    return lines;
}

} // namespace

std::vector<std::string> WriteCorrectionPicture(const std::string& path, const TImage& before, const TImage& background,
                                                const TImage& after, TExisting existing)
{
    const std::vector<TPanel> panels{{"before", &before, std::nullopt},
                                     {"after, range as wide as before", &after, 0},
                                     {"background, as it is subtracted", &background, std::nullopt},
                                     {"what is left: after, range of its own", &after, std::nullopt}};
    return Written(path, DrawPanels(panels, 2), panels, existing);
}

std::vector<std::string> WritePicture(const std::string& path, const std::string& title, const TImage& image,
                                      TExisting existing)
{
    const std::vector<TPanel> panels{{title, &image, std::nullopt}};
    return Written(path, DrawPanels(panels, 1), panels, existing);
}

void PrintPicture(const std::string& what, const std::vector<std::string>& lines)
{
    std::cout << what;
    for (const std::string& line : lines)
        std::cout << line << '\n';
}

} // namespace workbench
