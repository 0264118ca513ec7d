#include "gui/TreemapView.hpp"

#include "app/TreemapPicture.hpp"
#include "gui/PainterCanvas.hpp"
#include "layout/TreemapLayout.hpp"

namespace veldan::gui {

TreemapView::TreemapView(QWidget* parent) : MapView(QStringLiteral("Treemap"), parent) {}

void TreemapView::layOut(QSizeF size) {
    tiles_ = content().isEmpty()
                 ? std::vector<MapTile>{}
                 : TreemapLayout::tiles(content().items(), size.width(), size.height());
}

void TreemapView::drawPicture(MapCanvas& canvas, QSizeF size) const {
    TreemapPicture::draw(canvas, tiles_, size.width(), size.height(), content().style(isDark()));
}

const MapTile* TreemapView::tileOf(const DiskNode* node) const {
    for (const auto& tile : tiles_) {
        if (tile.node == node) return &tile;
    }
    return nullptr;
}

const DiskNode* TreemapView::nodeAt(QPointF point) const {
    // Nested tiles come after their parents: the last tile under the point is on top.
    for (auto it = tiles_.rbegin(); it != tiles_.rend(); ++it) {
        if (PainterCanvas::rectF(it->frame).contains(point)) return it->node;
    }
    return nullptr;
}

std::optional<QPointF> TreemapView::pointOf(const DiskNode* node) const {
    const MapTile* tile = tileOf(node);
    if (tile == nullptr) return std::nullopt;
    const QRectF frame = PainterCanvas::rectF(tile->frame);
    if (TreemapLayout::nestsInto(*node, tile->frame, tile->level)) {
        // The title band above the nested tiles belongs to the tile itself.
        return QPointF(frame.center().x(),
                       frame.top() + TreemapLayout::nestingInset + TreemapLayout::titleBand / 2);
    }
    return frame.center();
}

QPainterPath TreemapView::outlineOf(const DiskNode* node) const {
    QPainterPath path;
    const MapTile* tile = tileOf(node);
    if (tile == nullptr) return path;
    const MapRect drawn = TreemapPicture::drawnFrame(tile->frame);
    const double radius = TreemapPicture::cornerRadius(drawn, tile->level);
    path.addRoundedRect(PainterCanvas::rectF(drawn).adjusted(1, 1, -1, -1), radius, radius);
    return path;
}

std::vector<const DiskNode*> TreemapView::keyboardItems() const {
    std::vector<const DiskNode*> items;
    for (const auto& tile : tiles_) {
        if (tile.level == 0) items.push_back(tile.node);
    }
    return items;
}

}  // namespace veldan::gui
