#pragma once
// The orbit view of a folder: one ring around a centre disc, one sector per child, each
// sector's share of the turn proportional to the child's bytes, from the top clockwise.
//
// Pure functions; the items are in child order (never sorted).

#include <optional>
#include <span>
#include <vector>

#include "layout/MapPoint.hpp"
#include "layout/MapRect.hpp"
#include "layout/OrbitItem.hpp"
#include "layout/OrbitSector.hpp"
#include "scan/DiskNode.hpp"

namespace veldan {

class OrbitLayout {
public:
    static constexpr double margin = 8.0;  // between the view's edge and the ring
    static constexpr double innerRatio = 0.52;

    // The sectors of `children` with more than zero bytes, in their order. Items point into
    // `children`, which must outlive them (a temporary list is refused at compile time).
    static std::vector<OrbitItem> items(const std::vector<DiskNode>& children);
    static std::vector<OrbitItem> items(std::vector<DiskNode>&& children) = delete;
    // The same for a list of nodes shown as one folder's children.
    static std::vector<OrbitItem> items(std::span<const DiskNode* const> nodes);

    // The square the ring fills in a square view of side `diameter` (the view less the
    // margin), so that OrbitSector geometry in it matches the hit test.
    static MapRect ringRect(double diameter);
    static double outerRadius(double diameter);
    // The shape of an item drawn at rest in the ring.
    static OrbitSector sector(const OrbitItem& item);

    // The item under `point` in a square view of side `diameter` while the opening sweep
    // has revealed the ring up to `sweep` (a fraction of the turn); nothing in the centre
    // disc, in the margin, or beyond the sweep. A point on a boundary belongs to the
    // later sector.
    static std::optional<OrbitItem> item(const std::vector<OrbitItem>& items, MapPoint point,
                                         double diameter, double sweep = 1.0);
};

}  // namespace veldan
