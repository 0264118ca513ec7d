#pragma once
// The treemap of the shown folder: three levels of tiles as TreemapLayout lays them out,
// drawn by TreemapPicture. A click on a tile enters that folder (nested ones included).

#include "gui/MapView.hpp"
#include "layout/MapTile.hpp"

namespace veldan::gui {

class TreemapView final : public MapView {
    Q_OBJECT

public:
    explicit TreemapView(QWidget* parent = nullptr);

    const DiskNode* nodeAt(QPointF point) const override;
    std::optional<QPointF> pointOf(const DiskNode* node) const override;
    const std::vector<MapTile>& tiles() const { return tiles_; }

protected:
    void layOut(QSizeF size) override;
    void drawPicture(MapCanvas& canvas, QSizeF size) const override;
    QPainterPath outlineOf(const DiskNode* node) const override;
    std::vector<const DiskNode*> keyboardItems() const override;

private:
    const MapTile* tileOf(const DiskNode* node) const;

    std::vector<MapTile> tiles_;
};

}  // namespace veldan::gui
