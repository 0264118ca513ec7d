#pragma once
// What a treemap tile shows, decided from its data alone, so that every view (the
// desktop map, the drawn pictures) shows the same texts and icons.

#include <optional>
#include <string>

#include "layout/MapTile.hpp"
#include "scan/OpaqueFolderPolicy.hpp"

namespace veldan {

struct TileContent {
    std::string title;         // the node's display name
    std::string sizeLabel;     // compact byte text
    double sizeFontSize = 14;  // bold rounded face, clamp(width / 6, 14, 30)

    std::string iconName;  // a symbol name; empty when no icon shows
    double iconTextSize = 0;
    bool iconSemibold = false;

    std::string shortLabel;  // summary tiles, and folders measured as one block
    std::string helpText;    // empty for a file tile

    static constexpr std::string_view summaryIconName = "square.stack.3d.up";
    static constexpr double categoryIconMinimumWidth = 120.0;  // shown only on wider tiles

    // `scanFinished` is false while the scan that built the tree still runs; `opaque` is
    // the kind of a folder the scan measured as one block (OpaqueFolderPolicy::kind).
    static TileContent of(const MapTile& tile, bool scanFinished,
                          std::optional<OpaqueFolderPolicy::Kind> opaque = std::nullopt);
};

}  // namespace veldan
