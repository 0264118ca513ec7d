#pragma once
// What a treemap tile shows, decided from its data alone, so that every view (the
// desktop map, the drawn pictures) shows the same texts and icons.

#include <string>

#include "layout/MapTile.hpp"

namespace veldan {

struct TileContent {
    std::string title;         // the node's display name
    std::string sizeLabel;     // compact byte text
    double sizeFontSize = 14;  // bold rounded face, clamp(width / 6, 14, 30)

    std::string iconName;  // a symbol name; empty when no icon shows
    double iconTextSize = 0;
    bool iconSemibold = false;

    std::string shortLabel;  // summary tiles only
    std::string helpText;    // empty for a file tile

    static constexpr std::string_view summaryIconName = "square.stack.3d.up";
    static constexpr double categoryIconMinimumWidth = 120.0;  // shown only on wider tiles

    // `scanFinished` is false while the scan that built the tree still runs.
    static TileContent of(const MapTile& tile, bool scanFinished);
};

}  // namespace veldan
