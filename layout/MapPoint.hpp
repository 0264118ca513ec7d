#pragma once
// A point in view points (origin top-left, y growing down).

namespace veldan {

struct MapPoint {
    double x = 0;
    double y = 0;

    friend bool operator==(const MapPoint&, const MapPoint&) = default;
};

}  // namespace veldan
