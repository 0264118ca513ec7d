#pragma once
// The shape of one orbit sector: a piece of a ring between two fractions of a turn and
// two radii given as fractions of the ring's outer radius.
//
// Fractions run clockwise from the top: in view coordinates (y down) a fraction f lies at
// the angle 2π·f − π/2 from the positive x axis. In a rectangle the ring is centred and
// its outer radius is half the rectangle's smaller side.

#include <vector>

#include "layout/MapPoint.hpp"
#include "layout/MapRect.hpp"

namespace veldan {

struct OrbitSector {
    double start = 0;
    double end = 0;
    double innerRatio = 0;
    double outerRatio = 1;

    // The angle from the positive x axis of a fraction of a turn.
    static double angle(double fraction);
    // The fraction of a turn at which `point` lies seen from `centre`, in [0, 1).
    static double fraction(MapPoint point, MapPoint centre);
    static MapPoint centre(const MapRect& rect);
    static double radius(const MapRect& rect);  // the outer radius of a ratio of 1

    // The point at `fraction` of the turn and `radiusRatio` of the radius in `rect`.
    static MapPoint point(double fraction, double radiusRatio, const MapRect& rect);

    // The closed outline in `rect`: the outer arc from start to end, a straight line
    // inwards, the inner arc back from end to start. Arcs are approximated by at least
    // `segmentsPerTurn` segments per full turn; the first point is not repeated at the end.
    std::vector<MapPoint> outline(const MapRect& rect, int segmentsPerTurn = 720) const;

    // Whether `point` lies inside the sector in `rect` (radii inclusive, start inclusive,
    // end exclusive, as the hit test counts them).
    bool contains(MapPoint point, const MapRect& rect) const;
};

}  // namespace veldan
