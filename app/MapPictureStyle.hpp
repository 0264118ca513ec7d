#pragma once
// How a map picture is drawn: the palette variant, whether the scan it shows has finished
// (summary tiles explain themselves differently while it runs), and which item is the
// volume's free space.

#include <optional>
#include <string>
#include <string_view>

#include "app/MapCanvas.hpp"
#include "app/MapPalette.hpp"
#include "scan/DiskNode.hpp"
#include "scan/OpaqueFolderPolicy.hpp"

namespace veldan {

struct MapPictureStyle {
    bool dark = false;
    bool scanFinished = true;
    std::string emptyText = std::string(emptyFolderText);  // shown when there are no tiles
    // The item that stands for the volume's free space on a map of the startup disk, laid
    // out after the folder's children; drawn plainly, without a category.
    const DiskNode* freeSpace = nullptr;

    // Faces viewers usually have first; DejaVu Sans, whose widths the labels are measured
    // with, last before the generic family.
    static constexpr std::string_view fontFamily =
        "-apple-system, 'Segoe UI', 'Helvetica Neue', Arial, 'DejaVu Sans', sans-serif";

    static constexpr std::string_view emptyFolderText = "Nothing to map in this folder";
    static constexpr std::string_view wholeFolderText =
        "Measured as a whole; map this folder by itself to see inside it.";

    // What an empty map says: nothing is there, or the folder was measured as one block
    // (the explanation of its kind when it is a generated or internal folder).
    static std::string emptyTextFor(const DiskNode& folder);
    // The kind of a folder tile measured as one block; empty for every other tile.
    static std::optional<OpaqueFolderPolicy::Kind> opaqueKind(const DiskNode& node);

    MapPalette palette() const { return MapPalette{dark}; }
    MapColor fill(const DiskNode& node) const {
        return &node == freeSpace ? palette().freeSpace() : palette().fill(node.category);
    }

    // The stroke of the hatching that marks grouped smaller items.
    MapStroke hatchStroke() const { return {palette().text(), 0.14, 1.6}; }
};

}  // namespace veldan
