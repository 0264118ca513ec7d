#pragma once
// The treemap drawn as an SVG picture: tiles filled by category, nested tiles over their
// parents, a title band on tiles that hold nested tiles, name and size labels where they
// fit, and summary tiles hatched as grouped smaller items.
//
// Contract: pure text generation; every label is measured conservatively (LabelFit) and
// elided or left out rather than drawn past its tile.

#include <string>
#include <vector>

#include "app/MapPictureStyle.hpp"
#include "layout/MapTile.hpp"

namespace veldan {

class TreemapPicture {
public:
    // `tiles` as TreemapLayout laid them out in a view of `width` x `height`.
    static std::string svg(const std::vector<MapTile>& tiles, double width, double height,
                           const MapPictureStyle& style);
};

}  // namespace veldan
