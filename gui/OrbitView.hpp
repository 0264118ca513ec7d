#pragma once
// The orbit view of the shown folder: the ring of sectors drawn by OrbitPicture, hit-tested
// with OrbitLayout, with the list of items beside it where there is room. A click on a
// sector or a row enters that folder; a click on the centre disc goes up.

#include "app/OrbitPicture.hpp"
#include "gui/MapView.hpp"
#include "layout/OrbitItem.hpp"

namespace veldan::gui {

class OrbitView final : public MapView {
    Q_OBJECT

public:
    explicit OrbitView(QWidget* parent = nullptr);

    const DiskNode* nodeAt(QPointF point) const override;
    std::optional<QPointF> pointOf(const DiskNode* node) const override;

protected:
    void layOut(QSizeF size) override;
    void drawPicture(MapCanvas& canvas, QSizeF size) const override;
    QPainterPath outlineOf(const DiskNode* node) const override;
    std::vector<const DiskNode*> keyboardItems() const override;
    bool isFolderAt(QPointF point) const override;
    // Around the ring: right and down go clockwise, left and up back.
    const DiskNode* neighbourOf(const DiskNode* node, int dx, int dy) const override;

private:
    const OrbitItem* itemOf(const DiskNode* node) const;

    std::vector<OrbitItem> items_;
    OrbitPicture::Frame frame_;
    std::vector<MapRect> rows_;
};

}  // namespace veldan::gui
