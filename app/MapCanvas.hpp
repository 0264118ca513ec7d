#pragma once
// The one drawing surface of the map pictures. The treemap and orbit painters draw through
// it, so the command line's picture files and the desktop window show the same tiles,
// colours, icons and fitted labels; only the backend differs (SvgCanvas writes SVG text,
// the desktop app paints with QPainter).
//
// Contract: calls paint in order, later over earlier; coordinates are view points with
// the origin at the top-left. Text handed to text() is already clean (SvgText::clean) and
// fitted (LabelFit), so a backend draws it as given.

#include <string_view>
#include <vector>

#include "app/MapPalette.hpp"
#include "layout/MapPoint.hpp"
#include "layout/MapRect.hpp"

namespace veldan {

struct MapStroke {
    MapColor color;
    double opacity = 1;
    double width = 1;
    bool roundJoins = false;
};

struct MapSegment {
    MapPoint from;
    MapPoint to;
};

enum class MapTextAnchor { start, middle, end };

struct MapLabel {
    double x = 0;
    double y = 0;  // the baseline
    double size = 12;
    bool bold = false;
    MapColor color;
    double opacity = 1;
    MapTextAnchor anchor = MapTextAnchor::start;
    double rotation = 0;  // degrees clockwise around `pivot`
    MapPoint pivot = {};
};

class MapCanvas {
public:
    virtual ~MapCanvas() = default;

    virtual void rect(const MapRect& rect, double radius, MapColor fill, double opacity = 1) = 0;
    virtual void circle(MapPoint centre, double radius, MapColor fill) = 0;
    // A closed outline, filled, and stroked along its edges when `outline` is given.
    virtual void polygon(const std::vector<MapPoint>& points, MapColor fill, double opacity,
                         const MapStroke* outline = nullptr) = 0;
    virtual void lines(const std::vector<MapSegment>& segments, const MapStroke& stroke) = 0;
    // The MapIcons drawing of `symbolName` scaled into the `size` square at (x, y); nothing
    // for a symbol without a drawing.
    virtual void icon(std::string_view symbolName, double x, double y, double size, MapColor fill,
                      double opacity = 1) = 0;
    virtual void text(const MapLabel& label, std::string_view cleanText) = 0;

    // Diagonal lines `spacing` apart across `rect`, each cut to it: the mark of grouped
    // smaller items.
    static std::vector<MapSegment> hatching(const MapRect& rect, double spacing);
};

}  // namespace veldan
