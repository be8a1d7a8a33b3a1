#ifndef QXBACKGROUND_PICTURES_PANELS_H
#define QXBACKGROUND_PICTURES_PANELS_H

#include "images/TImage.h"
#include "pictures/TPicture.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace workbench {

// One image of a picture: its title, and how its values become shades.
struct TPanel {
    std::string title;
    const TImage* image = nullptr;
    // The panel (by its number) that has as many ADU from black to white, so that structure of equal strength looks
    // equally strong in both. Without one the scale is the panel's own.
    std::optional<std::size_t> rangeOf;
};

struct TPanelPicture {
    TPicture picture;
    std::vector<std::string> legend; // for each panel: which values are black and white
    std::string size;                // how many pixels a dot stands for
};

// Panels of images of one size, so many beside each other, each with title, figures and a scale of gray with its
// values.
TPanelPicture DrawPanels(const std::vector<TPanel>& panels, std::size_t columns);

} // namespace workbench

#endif
