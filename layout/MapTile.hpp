#pragma once
// One rectangle of the treemap: a node of the shown folder's subtree and where it is
// drawn, in the coordinates of the whole map.
//
// Contract: `node` points into the tree the tiles were laid out from and is valid only
// while that tree lives unchanged; the tiles are rebuilt whenever the tree changes, so
// they never copy subtrees on a redraw.

#include <string>

#include "layout/MapRect.hpp"
#include "scan/DiskNode.hpp"

namespace veldan {

struct MapTile {
    const DiskNode* node = nullptr;
    MapRect frame;
    int level = 0;  // 0 children of the shown folder, 1 grandchildren, 2 great-grandchildren

    static constexpr std::string_view summarySuffix = "#summary";

    // The node's path; a summary tile appends "#summary" so that it never collides with
    // a real item of the same path.
    std::string id() const;
};

}  // namespace veldan
