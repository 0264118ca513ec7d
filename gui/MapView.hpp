#pragma once
// The common part of the two drawn map views (treemap and orbit): the picture is painted
// once per change of content, size or palette into a cached pixmap through the shared
// painters, and hover and keyboard highlights are drawn over it, so moving the pointer
// never lays the map out again.
//
// Items are reached by pointer, by keyboard (arrow keys move to the nearest item in that
// direction, Return enters, Backspace goes up, the menu key opens the context menu) and by
// screen readers (the accessible name follows the current item, the description lists the
// largest items).
//
// Contract: a widget of the main thread. Node pointers in signals point into content()
// and are valid until the content changes.

#include <QPainterPath>
#include <QPixmap>
#include <QWidget>
#include <optional>
#include <vector>

#include "app/MapCanvas.hpp"
#include "gui/MapContent.hpp"

namespace veldan::gui {

class MapView : public QWidget {
    Q_OBJECT

public:
    explicit MapView(const QString& kind, QWidget* parent = nullptr);

    void setContent(MapContent content);
    const MapContent& content() const { return content_; }

    const DiskNode* hoveredNode() const { return hovered_; }
    const DiskNode* currentNode() const { return current_; }
    void setCurrentNode(const DiskNode* node);

    // The item under `point` (widget coordinates); null for none.
    virtual const DiskNode* nodeAt(QPointF point) const = 0;
    // A point that hits `node` (its centre, or its title band when it holds nested items);
    // nothing when it is not shown.
    virtual std::optional<QPointF> pointOf(const DiskNode* node) const = 0;

    // Whether the picture uses the dark palette: the window's background is dark.
    bool isDark() const;

Q_SIGNALS:
    // Clicked or Return pressed on an item.
    void activated(const DiskNode* node);
    // Backspace, or a click on what stands for the folder itself.
    void upRequested();
    void contextMenuRequested(const DiskNode* node, QPoint globalPosition);

protected:
    // Lays the content out in a view of `size`.
    virtual void layOut(QSizeF size) = 0;
    virtual void drawPicture(MapCanvas& canvas, QSizeF size) const = 0;
    // The shape to highlight for `node`.
    virtual QPainterPath outlineOf(const DiskNode* node) const = 0;
    // The items the keyboard moves between, in reading order.
    virtual std::vector<const DiskNode*> keyboardItems() const = 0;
    // The item the arrow key (dx, dy) moves to from `node`; null to stay. By default the
    // nearest item in that direction.
    virtual const DiskNode* neighbourOf(const DiskNode* node, int dx, int dy) const;
    // Whether the point stands for the shown folder itself (the orbit's centre disc).
    virtual bool isFolderAt(QPointF) const { return false; }

    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;

    // Re-lays out and repaints after a change the subclass made.
    void invalidate();

private:
    void renderPicture();
    void setHovered(const DiskNode* node);
    void moveCurrent(int dx, int dy);
    void updateAccessibleText();

    QString kind_;
    MapContent content_;
    QPixmap picture_;
    bool pictureValid_ = false;
    const DiskNode* hovered_ = nullptr;
    const DiskNode* current_ = nullptr;
    bool keyboardInUse_ = false;
    bool layoutStale_ = false;
};

}  // namespace veldan::gui
