#include "layout/OrbitLayout.hpp"

#include <algorithm>
#include <cmath>

namespace veldan {

std::vector<OrbitItem> OrbitLayout::items(const std::vector<DiskNode>& children) {
    std::vector<const DiskNode*> nodes;
    nodes.reserve(children.size());
    for (const auto& child : children)
        nodes.push_back(&child);
    return items(nodes);
}

std::vector<OrbitItem> OrbitLayout::items(std::span<const DiskNode* const> nodes) {
    double total = 0;
    for (const auto* node : nodes) {
        if (node->bytes > 0) total += static_cast<double>(node->bytes);
    }
    if (!(total > 0)) total = 1.0;
    std::vector<OrbitItem> result;
    result.reserve(nodes.size());
    double start = 0;
    for (const auto* node : nodes) {
        if (node->bytes <= 0) continue;
        const double share = static_cast<double>(node->bytes) / total;
        // The clamp keeps rounding from pushing the last end past a full turn; the
        // running start stays unclamped so that later sectors keep their true shares.
        result.push_back({node, start, std::min(start + share, 1.0)});
        start += share;
    }
    return result;
}

MapRect OrbitLayout::ringRect(double diameter) {
    return {margin, margin, diameter - 2 * margin, diameter - 2 * margin};
}

double OrbitLayout::outerRadius(double diameter) {
    return diameter / 2 - margin;
}

OrbitSector OrbitLayout::sector(const OrbitItem& item) {
    return OrbitSector{item.start, item.end, innerRatio, 1.0};
}

std::optional<OrbitItem> OrbitLayout::item(const std::vector<OrbitItem>& items, MapPoint point,
                                           double diameter, double sweep) {
    const double c = diameter / 2;
    const double outer = outerRadius(diameter);
    const double r = std::hypot(point.x - c, point.y - c);
    if (!(innerRatio * outer <= r && r <= outer)) return std::nullopt;
    const double f = OrbitSector::fraction(point, MapPoint{c, c});
    if (f > sweep) return std::nullopt;
    for (const auto& candidate : items) {
        if (candidate.start <= f && f < candidate.end) return candidate;
    }
    return std::nullopt;
}

}  // namespace veldan
