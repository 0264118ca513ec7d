#pragma once
// The orbit picture: the ring of sectors around a centre disc that shows the folder's name
// and size, labels inside the sectors that have room for them, and, where the picture is
// wider (or taller) than the ring, a list of the items.
//
// Contract: draws onto any MapCanvas and keeps no state; labels are measured
// conservatively (LabelFit) and are elided or left out rather than drawn outside their
// sector, disc or row.

#include <string>
#include <vector>

#include "app/MapCanvas.hpp"
#include "app/MapPictureStyle.hpp"
#include "layout/OrbitItem.hpp"
#include "scan/DiskNode.hpp"

namespace veldan {

class OrbitPicture {
public:
    // Where the parts of a `width` x `height` picture go. The ring sits in a square of the
    // smaller side at `origin` (the geometry OrbitLayout hit-tests in, shifted by it); the
    // list has no width when there is no room for it.
    struct Frame {
        MapPoint origin;
        double diameter = 0;
        MapRect ring;
        MapRect list;
    };
    static Frame frame(double width, double height);
    // The rows of the list that show an item, the first item's first; a last line says how
    // many more there are when not all fit.
    static std::vector<MapRect> listRows(const MapRect& list, size_t itemCount);

    static void draw(MapCanvas& canvas, const DiskNode& folder, const std::vector<OrbitItem>& items,
                     double width, double height, const MapPictureStyle& style);
    // The same picture as an SVG document.
    static std::string svg(const DiskNode& folder, const std::vector<OrbitItem>& items,
                           double width, double height, const MapPictureStyle& style);
};

}  // namespace veldan
