#include "gui/PainterCanvas.hpp"

#include <QFontMetricsF>
#include <QHash>
#include <QPainterPath>
#include <QSvgRenderer>
#include <cmath>
#include <memory>

#include "app/LabelFit.hpp"
#include "app/MapIcons.hpp"

namespace veldan::gui {

namespace {

// Saves and restores the painter's state around one drawing call.
class Saved {
public:
    explicit Saved(QPainter& painter) : painter_(painter) { painter_.save(); }
    ~Saved() { painter_.restore(); }
    Saved(const Saved&) = delete;
    Saved& operator=(const Saved&) = delete;

private:
    QPainter& painter_;
};

QPolygonF polygonOf(const std::vector<MapPoint>& points) {
    QPolygonF polygon;
    polygon.reserve(static_cast<qsizetype>(points.size()));
    for (const auto& point : points)
        polygon << QPointF(point.x, point.y);
    return polygon;
}

// Icons are the same path data the SVG files carry; Qt's SVG renderer reads it, so the
// arcs and curves are drawn exactly as there. One renderer per symbol and colour.
QSvgRenderer* iconRenderer(std::string_view symbolName, MapColor fill) {
    thread_local QHash<QString, std::shared_ptr<QSvgRenderer>> renderers;
    const std::string_view data = MapIcons::pathData(symbolName);
    if (data.empty()) return nullptr;
    const QString key =
        QString::fromUtf8(symbolName.data(), static_cast<qsizetype>(symbolName.size())) +
        QString::fromStdString(fill.hex());
    auto& renderer = renderers[key];
    if (!renderer) {
        const std::string grid = std::to_string(static_cast<int>(MapIcons::gridSize));
        const std::string document = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " +
                                     grid + " " + grid + "\"><path fill=\"" + fill.hex() +
                                     "\" fill-rule=\"evenodd\" d=\"" + std::string(data) +
                                     "\"/></svg>";
        renderer = std::make_shared<QSvgRenderer>(QByteArray::fromStdString(document));
    }
    return renderer->isValid() ? renderer.get() : nullptr;
}

}  // namespace

PainterCanvas::PainterCanvas(QPainter& painter) : painter_(painter) {}

QColor PainterCanvas::color(MapColor color, double opacity) {
    QColor result(color.red, color.green, color.blue);
    result.setAlphaF(static_cast<float>(std::clamp(opacity, 0.0, 1.0)));
    return result;
}

QFont PainterCanvas::font(double size, bool bold, int dpi) {
    QFont font;
    // Points rather than whole pixels, so that fractional sizes stay as fitted.
    font.setPointSizeF(std::max(1.0, size) * 72.0 / (dpi > 0 ? dpi : 96));
    font.setWeight(bold ? QFont::Bold : QFont::Normal);
    // Unhinted advances follow the face's own widths, which the labels were fitted with.
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}

void PainterCanvas::rect(const MapRect& rect, double radius, MapColor fill, double opacity) {
    Saved saved(painter_);
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(color(fill, opacity));
    if (radius > 0) {
        painter_.drawRoundedRect(rectF(rect), radius, radius);
    } else {
        painter_.drawRect(rectF(rect));
    }
}

void PainterCanvas::circle(MapPoint centre, double radius, MapColor fill) {
    Saved saved(painter_);
    painter_.setPen(Qt::NoPen);
    painter_.setBrush(color(fill));
    painter_.drawEllipse(QPointF(centre.x, centre.y), radius, radius);
}

void PainterCanvas::polygon(const std::vector<MapPoint>& points, MapColor fill, double opacity,
                            const MapStroke* outline) {
    Saved saved(painter_);
    if (outline != nullptr) {
        QPen pen(color(outline->color, outline->opacity), outline->width);
        pen.setJoinStyle(outline->roundJoins ? Qt::RoundJoin : Qt::MiterJoin);
        painter_.setPen(pen);
    } else {
        painter_.setPen(Qt::NoPen);
    }
    painter_.setBrush(color(fill, opacity));
    painter_.drawPolygon(polygonOf(points));
}

void PainterCanvas::lines(const std::vector<MapSegment>& segments, const MapStroke& stroke) {
    if (segments.empty()) return;
    Saved saved(painter_);
    QPen pen(color(stroke.color, stroke.opacity), stroke.width);
    pen.setCapStyle(Qt::FlatCap);
    painter_.setPen(pen);
    QVector<QLineF> lines;
    lines.reserve(static_cast<qsizetype>(segments.size()));
    for (const auto& [from, to] : segments)
        lines << QLineF(from.x, from.y, to.x, to.y);
    painter_.drawLines(lines);
}

void PainterCanvas::icon(std::string_view symbolName, double x, double y, double size,
                         MapColor fill, double opacity) {
    QSvgRenderer* renderer = iconRenderer(symbolName, fill);
    if (renderer == nullptr) return;
    Saved saved(painter_);
    painter_.setOpacity(painter_.opacity() * opacity);
    renderer->render(&painter_, QRectF(x, y, size, size));
}

void PainterCanvas::text(const MapLabel& label, std::string_view cleanText) {
    if (cleanText.empty()) return;
    Saved saved(painter_);
    const QFont face =
        font(label.size, label.bold, painter_.device() ? painter_.device()->logicalDpiY() : 96);
    painter_.setFont(face);
    painter_.setPen(color(label.color, label.opacity));
    QString text = QString::fromUtf8(cleanText.data(), static_cast<qsizetype>(cleanText.size()));
    // The painters fitted the label with the widths of a wide face; a face that runs wider
    // still must not spill out of its tile: it is narrowed a little, or elided when it
    // would have to be narrowed a lot.
    const double planned = LabelFit::width(cleanText, label.size, label.bold);
    const QFontMetricsF metrics(face, painter_.device());
    double width = metrics.horizontalAdvance(text);
    double squeeze = 1;
    if (width > planned + 0.5) {
        squeeze = planned / width;
        if (squeeze < 0.85) {
            text = metrics.elidedText(text, Qt::ElideRight, planned);
            width = metrics.horizontalAdvance(text);
            squeeze = 1;
        }
    }
    double x = label.x;
    if (label.anchor == MapTextAnchor::middle) x -= width * squeeze / 2;
    if (label.anchor == MapTextAnchor::end) x -= width * squeeze;
    if (label.rotation != 0) {
        painter_.translate(label.pivot.x, label.pivot.y);
        painter_.rotate(label.rotation);
        painter_.translate(-label.pivot.x, -label.pivot.y);
    }
    if (squeeze < 1) {
        painter_.translate(x, label.y);
        painter_.scale(squeeze, 1);
        painter_.drawText(QPointF(0, 0), text);
        return;
    }
    painter_.drawText(QPointF(x, label.y), text);
}

}  // namespace veldan::gui
