#pragma once
// The treemap picture: tiles filled by category, nested tiles over their
// parents, a title band on tiles that hold nested tiles, name and size labels where they
// fit, and summary tiles hatched as grouped smaller items.
//
// Contract: draws onto any MapCanvas (the SVG files of the command line, the desktop
// window) and keeps no state; every label is measured conservatively (LabelFit) and
// elided or left out rather than drawn past its tile.

#include <string>
#include <vector>

#include "app/MapCanvas.hpp"
#include "app/MapPictureStyle.hpp"
#include "layout/MapTile.hpp"

namespace veldan {

class TreemapPicture {
public:
    // `tiles` as TreemapLayout laid them out in a view of `width` x `height`.
    static void draw(MapCanvas& canvas, const std::vector<MapTile>& tiles, double width,
                     double height, const MapPictureStyle& style);
    // The same picture as an SVG document.
    static std::string svg(const std::vector<MapTile>& tiles, double width, double height,
                           const MapPictureStyle& style);

    // Where a tile of `frame` is painted (neighbours keep a gap) and how round its corners
    // are, so that highlights drawn over the picture follow its tiles.
    static MapRect drawnFrame(const MapRect& frame);
    static double cornerRadius(const MapRect& drawn, int level);
};

}  // namespace veldan
