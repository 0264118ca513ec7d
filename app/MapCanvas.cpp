#include "app/MapCanvas.hpp"

#include <algorithm>

namespace veldan {

std::vector<MapSegment> MapCanvas::hatching(const MapRect& rect, double spacing) {
    std::vector<MapSegment> segments;
    if (rect.width <= 0 || rect.height <= 0 || !(spacing > 0)) return segments;
    // Lines x + y = k, rising to the right; each runs between the rectangle's edges.
    for (double k = rect.minX() + rect.minY() + spacing / 2; k < rect.maxX() + rect.maxY();
         k += spacing) {
        const double x0 = std::max(rect.minX(), k - rect.maxY());
        const double x1 = std::min(rect.maxX(), k - rect.minY());
        if (x1 - x0 < 0.5) continue;
        segments.push_back({{x0, k - x0}, {x1, k - x1}});
    }
    return segments;
}

}  // namespace veldan
