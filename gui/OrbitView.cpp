#include "gui/OrbitView.hpp"

#include <cmath>

#include "gui/PainterCanvas.hpp"
#include "layout/OrbitLayout.hpp"
#include "layout/OrbitSector.hpp"

namespace veldan::gui {

OrbitView::OrbitView(QWidget* parent) : MapView(QStringLiteral("Orbit view"), parent) {}

void OrbitView::layOut(QSizeF size) {
    items_ = content().isEmpty() ? std::vector<OrbitItem>{} : OrbitLayout::items(content().items());
    frame_ = OrbitPicture::frame(size.width(), size.height());
    rows_ = OrbitPicture::listRows(frame_.list, items_.size());
}

void OrbitView::drawPicture(MapCanvas& canvas, QSizeF size) const {
    const DiskNode* folder = content().folder();
    if (folder == nullptr) {
        canvas.rect({0, 0, size.width(), size.height()}, 0,
                    content().style(isDark()).palette().background());
        return;
    }
    OrbitPicture::draw(canvas, *folder, items_, size.width(), size.height(),
                       content().style(isDark()));
}

const OrbitItem* OrbitView::itemOf(const DiskNode* node) const {
    for (const auto& item : items_) {
        if (item.node == node) return &item;
    }
    return nullptr;
}

const DiskNode* OrbitView::nodeAt(QPointF point) const {
    const MapPoint inSquare{point.x() - frame_.origin.x, point.y() - frame_.origin.y};
    if (auto item = OrbitLayout::item(items_, inSquare, frame_.diameter)) return item->node;
    for (size_t i = 0; i < rows_.size(); ++i) {
        if (PainterCanvas::rectF(rows_[i]).contains(point)) return items_[i].node;
    }
    return nullptr;
}

bool OrbitView::isFolderAt(QPointF point) const {
    const MapPoint centre = OrbitSector::centre(frame_.ring);
    const double disc = OrbitLayout::innerRatio * OrbitSector::radius(frame_.ring);
    return std::hypot(point.x() - centre.x, point.y() - centre.y) < disc;
}

std::optional<QPointF> OrbitView::pointOf(const DiskNode* node) const {
    const OrbitItem* item = itemOf(node);
    if (item == nullptr) return std::nullopt;
    const MapPoint point = OrbitSector::point((item->start + item->end) / 2,
                                              (OrbitLayout::innerRatio + 1) / 2, frame_.ring);
    return QPointF(point.x, point.y);
}

QPainterPath OrbitView::outlineOf(const DiskNode* node) const {
    QPainterPath path;
    const OrbitItem* item = itemOf(node);
    if (item == nullptr) return path;
    QPolygonF polygon;
    for (const auto& point : OrbitLayout::sector(*item).outline(frame_.ring, 360))
        polygon << QPointF(point.x, point.y);
    path.addPolygon(polygon);
    path.closeSubpath();
    const auto index = static_cast<size_t>(item - items_.data());
    if (index < rows_.size()) path.addRoundedRect(PainterCanvas::rectF(rows_[index]), 4, 4);
    return path;
}

const DiskNode* OrbitView::neighbourOf(const DiskNode* node, int dx, int dy) const {
    const OrbitItem* item = itemOf(node);
    if (item == nullptr || items_.empty()) return nullptr;
    const auto index = static_cast<size_t>(item - items_.data());
    const size_t count = items_.size();
    return items_[(dx + dy > 0 ? index + 1 : index + count - 1) % count].node;
}

std::vector<const DiskNode*> OrbitView::keyboardItems() const {
    std::vector<const DiskNode*> nodes;
    for (const auto& item : items_)
        nodes.push_back(item.node);
    return nodes;
}

}  // namespace veldan::gui
