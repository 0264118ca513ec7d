#include "layout/TreemapLayout.hpp"

#include <algorithm>
#include <limits>

namespace veldan {

namespace {

// The divisor of a degenerate row: dividing by it sends every length to the clamp
// instead of producing NaN.
constexpr double smallestPositive = std::numeric_limits<double>::denorm_min();

}  // namespace

std::vector<MapTile> TreemapLayout::tiles(const DiskNode& folder, double width, double height) {
    std::vector<MapTile> result;
    addChildren(folder.children, MapRect{0, 0, width, height}, 0, result);
    return result;
}

std::vector<MapTile> TreemapLayout::tiles(std::span<const DiskNode* const> nodes, double width,
                                          double height) {
    std::vector<MapTile> result;
    addNodes(nodes, MapRect{0, 0, width, height}, 0, result);
    return result;
}

void TreemapLayout::addChildren(const std::vector<DiskNode>& children, MapRect rect, int level,
                                std::vector<MapTile>& tiles) {
    if (!(rect.width > minimumSide) || !(rect.height > minimumSide)) return;
    std::vector<const DiskNode*> nodes;
    nodes.reserve(children.size());
    for (const auto& child : children)
        nodes.push_back(&child);
    addNodes(nodes, rect, level, tiles);
}

void TreemapLayout::addNodes(std::span<const DiskNode* const> nodes, MapRect rect, int level,
                             std::vector<MapTile>& tiles) {
    if (!(rect.width > minimumSide) || !(rect.height > minimumSide)) return;
    std::vector<const DiskNode*> kept;
    kept.reserve(nodes.size());
    for (const auto* node : nodes) {
        if (node->bytes > 0) kept.push_back(node);
    }
    const auto frames = partition(kept, rect);
    for (size_t i = 0; i < kept.size(); ++i) {
        if (i == frames.size()) return;
        const DiskNode& child = *kept[i];
        tiles.push_back(MapTile{&child, frames[i], level});
        if (nestsInto(child, frames[i], level)) {
            addChildren(child.children, nestedRect(frames[i]), level + 1, tiles);
        }
    }
}

std::vector<MapRect> TreemapLayout::partition(std::span<const DiskNode* const> nodes,
                                              MapRect rect) {
    if (nodes.empty() || !(rect.width > 0) || !(rect.height > 0)) return {};
    if (nodes.size() == 1) return {rect};
    double total = 0;
    for (const auto* node : nodes)
        total += static_cast<double>(node->bytes);
    if (!(total > 0)) return std::vector<MapRect>(nodes.size());

    std::vector<TreemapRowItem> items;
    items.reserve(nodes.size());
    for (size_t i = 0; i < nodes.size(); ++i) {
        const double share = static_cast<double>(nodes[i]->bytes) / total;
        items.push_back({i, rect.width * rect.height * share});
    }

    std::vector<MapRect> frames(nodes.size());
    MapRect remaining = rect;
    std::vector<TreemapRowItem> row;
    row.reserve(nodes.size());
    for (const auto& item : items) {
        if (row.empty()) {
            row.push_back(item);
            continue;
        }
        const double side = std::min(remaining.width, remaining.height);
        const double without = worstAspect(row, side);
        row.push_back(item);
        const double with = worstAspect(row, side);
        if (with <= without) continue;  // a tie keeps growing the row
        row.pop_back();
        place(row, remaining, frames);
        row.assign(1, item);
    }
    place(row, remaining, frames);
    return frames;
}

double TreemapLayout::worstAspect(std::span<const TreemapRowItem> row, double side) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    if (row.empty()) return infinity;
    double smallest = row.front().area;
    double largest = row.front().area;
    double sum = 0;
    for (const auto& item : row) {
        smallest = std::min(smallest, item.area);
        largest = std::max(largest, item.area);
        sum += item.area;
    }
    if (!(smallest > 0) || !(side > 0)) return infinity;
    const double sideSquared = side * side;
    const double sumSquared = sum * sum;
    return std::max((sideSquared * largest) / sumSquared, sumSquared / (sideSquared * smallest));
}

void TreemapLayout::place(std::span<const TreemapRowItem> row, MapRect& rect,
                          std::vector<MapRect>& frames) {
    if (row.empty() || !(rect.width > 0) || !(rect.height > 0)) return;
    double sum = 0;
    for (const auto& item : row)
        sum += item.area;

    if (rect.height <= rect.width) {
        const double columnWidth = std::min(sum / rect.height, rect.width);
        const double divisor = columnWidth > smallestPositive ? columnWidth : smallestPositive;
        double y = rect.minY();
        for (size_t i = 0; i < row.size(); ++i) {
            double length = rect.maxY() - y;
            if (i + 1 < row.size()) length = std::min(row[i].area / divisor, length);
            frames[row[i].index] = MapRect{rect.minX(), y, columnWidth, std::max(length, 0.0)};
            y += length;
        }
        rect.x += columnWidth;
        rect.width = std::max(rect.width - columnWidth, 0.0);
    } else {
        const double rowHeight = std::min(sum / rect.width, rect.height);
        const double divisor = rowHeight > smallestPositive ? rowHeight : smallestPositive;
        double x = rect.minX();
        for (size_t i = 0; i < row.size(); ++i) {
            double length = rect.maxX() - x;
            if (i + 1 < row.size()) length = std::min(row[i].area / divisor, length);
            frames[row[i].index] = MapRect{x, rect.minY(), std::max(length, 0.0), rowHeight};
            x += length;
        }
        rect.y += rowHeight;
        rect.height = std::max(rect.height - rowHeight, 0.0);
    }
}

bool TreemapLayout::nestsInto(const DiskNode& node, const MapRect& frame, int level) {
    return level < deepestLevel && !node.children.empty() && frame.width > nestingThreshold &&
           frame.height > nestingThreshold;
}

MapRect TreemapLayout::nestedRect(const MapRect& frame) {
    const MapRect inset{frame.x + nestingInset, frame.y + nestingInset,
                        frame.width - 2 * nestingInset, frame.height - 2 * nestingInset};
    return MapRect{inset.minX(), inset.minY() + titleBand, inset.width,
                   std::max(inset.height - titleBand, 0.0)};
}

}  // namespace veldan
