#pragma once
// The map canvas on a QPainter: the desktop window paints the very pictures that the
// command line writes as SVG, from the same painters.
//
// Contract: borrows the painter, which must outlive the canvas; leaves its state as it
// found it after every call. Main thread only (icons are kept in a per-thread cache).

#include <QPainter>

#include "app/MapCanvas.hpp"

namespace veldan::gui {

class PainterCanvas final : public MapCanvas {
public:
    explicit PainterCanvas(QPainter& painter);

    static QColor color(MapColor color, double opacity = 1);
    static QRectF rectF(const MapRect& rect) { return {rect.x, rect.y, rect.width, rect.height}; }

    void rect(const MapRect& rect, double radius, MapColor fill, double opacity = 1) override;
    void circle(MapPoint centre, double radius, MapColor fill) override;
    void polygon(const std::vector<MapPoint>& points, MapColor fill, double opacity,
                 const MapStroke* outline = nullptr) override;
    void lines(const std::vector<MapSegment>& segments, const MapStroke& stroke) override;
    void icon(std::string_view symbolName, double x, double y, double size, MapColor fill,
              double opacity = 1) override;
    void text(const MapLabel& label, std::string_view cleanText) override;

    // The face labels are drawn in: the application's own face at `size` pixels of a
    // device of `dpi` dots per inch.
    static QFont font(double size, bool bold, int dpi);

private:
    QPainter& painter_;
};

}  // namespace veldan::gui
