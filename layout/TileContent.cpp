#include "layout/TileContent.hpp"

#include <algorithm>

#include "scan/SizeText.hpp"

namespace veldan {

TileContent TileContent::of(const MapTile& tile, bool scanFinished,
                            std::optional<OpaqueFolderPolicy::Kind> opaque) {
    const DiskNode& node = *tile.node;
    TileContent content;
    content.title = node.name;
    content.sizeLabel = SizeText::string(node.bytes, true);
    content.sizeFontSize = std::clamp(tile.frame.width / 6, 14.0, 30.0);
    if (node.isSummary) {
        content.iconName = summaryIconName;
        content.iconTextSize = 10;
        content.shortLabel = "Smaller items · Explore to see them";
        content.helpText = scanFinished
                               ? "Smaller items in this folder, grouped to keep the map readable. "
                                 "Explore them here or open the parent folder in Finder."
                               : "Smaller items in this folder, grouped to keep the map readable. "
                                 "Finish the scan to explore them here.";
        return content;
    }
    if (tile.level == 0 && tile.frame.width > categoryIconMinimumWidth) {
        content.iconName = veldan::iconName(node.category);
        content.iconTextSize = 11;
        content.iconSemibold = true;
    }
    if (node.isDirectory) {
        content.helpText = "Opens this folder in the map. Use the context menu to inspect details.";
        if (opaque && node.children.empty()) {
            content.shortLabel = std::string(OpaqueFolderPolicy::label(*opaque));
        }
    }
    return content;
}

}  // namespace veldan
