#pragma once
// The squarified treemap of a folder's children, with up to two further levels nested
// inside tiles that are large enough.
//
// Pure functions: no state, no sorting (the tree's child order alone decides where each
// tile lands, the first child at the top-left), recomputed on every redraw. A parent
// tile always precedes its nested tiles, so drawing in list order puts children on top.

#include <span>
#include <vector>

#include "layout/MapRect.hpp"
#include "layout/MapTile.hpp"
#include "scan/DiskNode.hpp"

namespace veldan {

// One laid-out item: its index into the node list and its area in square points.
struct TreemapRowItem {
    size_t index = 0;
    double area = 0;
};

class TreemapLayout {
public:
    static constexpr double minimumSide = 6.0;        // a slot this thin or thinner draws nothing
    static constexpr double nestingThreshold = 90.0;  // nested only when wider and taller than this
    static constexpr double nestingInset = 7.0;
    static constexpr double titleBand = 26.0;  // kept free for the parent tile's title
    static constexpr int deepestLevel = 2;

    // The tiles of `folder`'s children in a view of `width` x `height` points. Tiles point
    // into `folder`, which must outlive them (a temporary is refused at compile time).
    static std::vector<MapTile> tiles(const DiskNode& folder, double width, double height);
    static std::vector<MapTile> tiles(DiskNode&& folder, double width, double height) = delete;
    // The same for a list of nodes laid out as if they were one folder's children (a view
    // may add an item of its own, such as the volume's free space, after the children).
    static std::vector<MapTile> tiles(std::span<const DiskNode* const> nodes, double width,
                                      double height);

    // Appends the tiles of `children` (and their nested tiles) laid out in `rect`.
    static void addChildren(const std::vector<DiskNode>& children, MapRect rect, int level,
                            std::vector<MapTile>& tiles);

    // One frame per node, in node order; empty when there are no nodes or no room.
    static std::vector<MapRect> partition(std::span<const DiskNode* const> nodes, MapRect rect);

    // The worst aspect ratio of a candidate row laid along `side`; +infinity when it
    // cannot be computed (empty row, a non-positive area or side).
    static double worstAspect(std::span<const TreemapRowItem> row, double side);

    // Writes the frames of one finished row into `frames` and shrinks `rect` to what
    // remains: a column at the left of a wide (or square) rectangle, a strip along the
    // top of a tall one. The row's last item takes exactly what is left.
    static void place(std::span<const TreemapRowItem> row, MapRect& rect,
                      std::vector<MapRect>& frames);

    // Appends the tiles of `nodes` (those with more than zero bytes) and their nested tiles.
    static void addNodes(std::span<const DiskNode* const> nodes, MapRect rect, int level,
                         std::vector<MapTile>& tiles);

    // Whether a tile of `node` at `frame` and `level` receives nested tiles.
    static bool nestsInto(const DiskNode& node, const MapRect& frame, int level);
    // Where a tile's nested tiles are laid out: inset on every side, below the title band.
    static MapRect nestedRect(const MapRect& frame);
};

}  // namespace veldan
