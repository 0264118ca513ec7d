#pragma once
// A rectangle in view points: 64-bit floating point, origin top-left, y growing down.

namespace veldan {

struct MapRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double minX() const { return x; }
    double minY() const { return y; }
    double maxX() const { return x + width; }
    double maxY() const { return y + height; }

    friend bool operator==(const MapRect&, const MapRect&) = default;
};

}  // namespace veldan
