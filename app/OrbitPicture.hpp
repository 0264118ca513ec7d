#pragma once
// The orbit view drawn as an SVG picture: the ring of sectors around a centre disc that
// shows the folder's name and size, labels inside the sectors that have room for them,
// and, where the picture is wider (or taller) than the ring, a list of the items.
//
// Contract: pure text generation; labels are measured conservatively (LabelFit) and are
// elided or left out rather than drawn outside their sector, disc or row.

#include <string>
#include <vector>

#include "app/MapPictureStyle.hpp"
#include "layout/OrbitItem.hpp"
#include "scan/DiskNode.hpp"

namespace veldan {

class OrbitPicture {
public:
    // The ring is a square of the smaller side of `width` x `height`, the geometry
    // OrbitLayout hit-tests in.
    static std::string svg(const DiskNode& folder, const std::vector<OrbitItem>& items,
                           double width, double height, const MapPictureStyle& style);
};

}  // namespace veldan
