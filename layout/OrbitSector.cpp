#include "layout/OrbitSector.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace veldan {

namespace {

constexpr double turn = 2 * std::numbers::pi;

}  // namespace

double OrbitSector::angle(double fraction) {
    return turn * fraction - std::numbers::pi / 2;
}

double OrbitSector::fraction(MapPoint point, MapPoint centre) {
    // atan2 measures counter-clockwise from the x axis in y-up terms; with y growing down
    // it runs clockwise, and the quarter turn moves zero to the top.
    double value = std::atan2(point.y - centre.y, point.x - centre.x) + std::numbers::pi / 2;
    if (value < 0) value += turn;
    return value / turn;
}

MapPoint OrbitSector::centre(const MapRect& rect) {
    return {rect.x + rect.width / 2, rect.y + rect.height / 2};
}

double OrbitSector::radius(const MapRect& rect) {
    return std::min(rect.width, rect.height) / 2;
}

MapPoint OrbitSector::point(double fraction, double radiusRatio, const MapRect& rect) {
    const MapPoint c = centre(rect);
    const double r = radius(rect) * radiusRatio;
    const double a = angle(fraction);
    return {c.x + r * std::cos(a), c.y + r * std::sin(a)};
}

std::vector<MapPoint> OrbitSector::outline(const MapRect& rect, int segmentsPerTurn) const {
    const double span = std::max(end - start, 0.0);
    const int segments =
        std::max(1, static_cast<int>(std::ceil(span * std::max(segmentsPerTurn, 1))));
    std::vector<MapPoint> points;
    points.reserve(2 * static_cast<size_t>(segments) + 2);
    for (int i = 0; i <= segments; ++i) {
        points.push_back(point(start + span * i / segments, outerRatio, rect));
    }
    for (int i = segments; i >= 0; --i) {
        points.push_back(point(start + span * i / segments, innerRatio, rect));
    }
    return points;
}

bool OrbitSector::contains(MapPoint p, const MapRect& rect) const {
    const MapPoint c = centre(rect);
    const double r = std::hypot(p.x - c.x, p.y - c.y);
    const double outer = radius(rect);
    if (r < innerRatio * outer || r > outerRatio * outer) return false;
    const double f = fraction(p, c);
    return start <= f && f < end;
}

}  // namespace veldan
