#pragma once
// How a map picture is drawn: the palette variant and whether the scan it shows has
// finished (summary tiles explain themselves differently while it runs).

#include <string>
#include <string_view>

#include "app/MapPalette.hpp"

namespace veldan {

struct MapPictureStyle {
    bool dark = false;
    bool scanFinished = true;

    // Faces viewers usually have first; DejaVu Sans, whose widths the labels are measured
    // with, last before the generic family.
    static constexpr std::string_view fontFamily =
        "-apple-system, 'Segoe UI', 'Helvetica Neue', Arial, 'DejaVu Sans', sans-serif";

    static constexpr std::string_view emptyFolderText = "Nothing to map in this folder";

    MapPalette palette() const { return MapPalette{dark}; }

    // The stroke of the hatching that marks grouped smaller items.
    std::string hatchAttributes() const {
        return "stroke=\"" + palette().text().hex() +
               "\" stroke-opacity=\"0.14\" stroke-width=\"1.6\" fill=\"none\"";
    }
};

}  // namespace veldan
