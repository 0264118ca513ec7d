#include "gui/MapView.hpp"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>
#include <cmath>

#include "gui/MapItemText.hpp"
#include "gui/PainterCanvas.hpp"

namespace veldan::gui {

namespace {

// An item by what identifies it across trees, so hover and focus survive a live update.
struct ItemKey {
    std::string path;
    bool isSummary = false;
};

std::optional<ItemKey> keyOf(const DiskNode* node) {
    if (node == nullptr) return std::nullopt;
    return ItemKey{node->path, node->isSummary};
}

const DiskNode* findItem(const std::optional<ItemKey>& key,
                         const std::vector<const DiskNode*>& items) {
    if (!key) return nullptr;
    for (const auto* item : items) {
        if (item->path == key->path && item->isSummary == key->isSummary) return item;
    }
    return nullptr;
}

}  // namespace

MapView::MapView(const QString& kind, QWidget* parent) : QWidget(parent), kind_(kind) {
    setMouseTracking(true);
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(200, 160);
    updateAccessibleText();
}

bool MapView::isDark() const {
    return palette().color(QPalette::Window).lightnessF() < 0.5;
}

void MapView::setContent(MapContent content) {
    // Pointers into the old content are turned into keys before it is released.
    const auto hovered = keyOf(hovered_);
    const auto current = keyOf(current_);
    content_ = std::move(content);
    hovered_ = findItem(hovered, content_.items());
    current_ = findItem(current, content_.items());
    invalidate();
}

void MapView::invalidate() {
    // A hidden view (the other views of the pane) lays out when it is shown: a live scan
    // replaces the tree every few tenths of a second.
    layoutStale_ = !isVisible();
    if (!layoutStale_) layOut(size());
    pictureValid_ = false;
    updateAccessibleText();
    update();
}

void MapView::renderPicture() {
    const qreal ratio = devicePixelRatioF();
    picture_ = QPixmap((QSizeF(size()) * ratio).toSize());
    picture_.setDevicePixelRatio(ratio);
    QPainter painter(&picture_);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    PainterCanvas canvas(painter);
    drawPicture(canvas, size());
    pictureValid_ = true;
}

void MapView::paintEvent(QPaintEvent*) {
    if (layoutStale_) {
        layOut(size());
        layoutStale_ = false;
    }
    if (!pictureValid_ || picture_.deviceIndependentSize() != QSizeF(size())) renderPicture();
    QPainter painter(this);
    painter.drawPixmap(0, 0, picture_);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor accent = palette().color(QPalette::Highlight);
    if (hovered_ != nullptr) {
        QPen pen(isDark() ? QColor(255, 255, 255, 220) : QColor(0, 0, 0, 190), 2);
        painter.setPen(pen);
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(outlineOf(hovered_));
    }
    if (current_ != nullptr && hasFocus() && keyboardInUse_) {
        QPen pen(accent, 3);
        painter.setPen(pen);
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(outlineOf(current_));
    }
}

void MapView::resizeEvent(QResizeEvent*) {
    layoutStale_ = !isVisible();
    if (!layoutStale_) layOut(size());
    pictureValid_ = false;
}

void MapView::showEvent(QShowEvent* event) {
    if (layoutStale_) {
        layOut(size());
        layoutStale_ = false;
    }
    QWidget::showEvent(event);
}

void MapView::setHovered(const DiskNode* node) {
    if (node == hovered_) return;
    hovered_ = node;
    update();
}

void MapView::mouseMoveEvent(QMouseEvent* event) {
    const DiskNode* node = nodeAt(event->position());
    setHovered(node);
    setCursor(node != nullptr || isFolderAt(event->position()) ? Qt::PointingHandCursor
                                                               : Qt::ArrowCursor);
}

void MapView::leaveEvent(QEvent*) {
    setHovered(nullptr);
}

void MapView::mouseReleaseEvent(QMouseEvent* event) {
    keyboardInUse_ = false;
    if (event->button() != Qt::LeftButton) return;
    if (isFolderAt(event->position())) {
        Q_EMIT upRequested();
        return;
    }
    if (const DiskNode* node = nodeAt(event->position())) {
        setCurrentNode(node);
        Q_EMIT activated(node);
    }
}

void MapView::contextMenuEvent(QContextMenuEvent* event) {
    const DiskNode* node = nullptr;
    QPoint global = event->globalPos();
    if (event->reason() == QContextMenuEvent::Mouse) {
        node = nodeAt(event->pos());
    } else if (current_ != nullptr) {
        node = current_;
        if (auto point = pointOf(current_)) global = mapToGlobal(point->toPoint());
    }
    if (node != nullptr) Q_EMIT contextMenuRequested(node, global);
}

bool MapView::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip) {
        const auto* help = static_cast<QHelpEvent*>(event);
        if (const DiskNode* node = nodeAt(help->pos())) {
            QToolTip::showText(help->globalPos(), MapItemText::toolTip(*node, content_), this,
                               outlineOf(node).boundingRect().toRect());
        } else {
            QToolTip::hideText();
        }
        return true;
    }
    return QWidget::event(event);
}

void MapView::setCurrentNode(const DiskNode* node) {
    if (node == current_) return;
    current_ = node;
    updateAccessibleText();
    if (current_ != nullptr && hasFocus()) {
        QAccessibleEvent focus(this, QAccessible::NameChanged);
        QAccessible::updateAccessibility(&focus);
    }
    update();
}

void MapView::moveCurrent(int dx, int dy) {
    const auto items = keyboardItems();
    if (items.empty()) return;
    const DiskNode* next = current_ ? neighbourOf(current_, dx, dy) : nullptr;
    if (current_ == nullptr || (next == nullptr && !pointOf(current_))) next = items.front();
    if (next != nullptr) setCurrentNode(next);
}

const DiskNode* MapView::neighbourOf(const DiskNode* node, int dx, int dy) const {
    const auto from = pointOf(node);
    if (!from) return nullptr;
    // The nearest item whose centre lies in the pressed direction, preferring items
    // straight ahead over those off to the side.
    const DiskNode* best = nullptr;
    double bestScore = 0;
    for (const auto* item : keyboardItems()) {
        if (item == node) continue;
        const auto to = pointOf(item);
        if (!to) continue;
        const double ahead = (to->x() - from->x()) * dx + (to->y() - from->y()) * dy;
        if (ahead <= 1) continue;
        const double aside =
            std::abs((to->x() - from->x()) * dy) + std::abs((to->y() - from->y()) * dx);
        const double score = ahead + 2 * aside;
        if (best == nullptr || score < bestScore) {
            best = item;
            bestScore = score;
        }
    }
    return best;
}

void MapView::keyPressEvent(QKeyEvent* event) {
    keyboardInUse_ = true;
    update();
    const auto items = keyboardItems();
    switch (event->key()) {
        case Qt::Key_Left:
            moveCurrent(-1, 0);
            return;
        case Qt::Key_Right:
            moveCurrent(1, 0);
            return;
        case Qt::Key_Up:
            if (event->modifiers() & Qt::AltModifier) {
                Q_EMIT upRequested();
            } else {
                moveCurrent(0, -1);
            }
            return;
        case Qt::Key_Down:
            moveCurrent(0, 1);
            return;
        case Qt::Key_Home:
            if (!items.empty()) setCurrentNode(items.front());
            return;
        case Qt::Key_End:
            if (!items.empty()) setCurrentNode(items.back());
            return;
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Space:
            if (current_ != nullptr) Q_EMIT activated(current_);
            return;
        case Qt::Key_Backspace:
            Q_EMIT upRequested();
            return;
        default:
            QWidget::keyPressEvent(event);
    }
}

void MapView::focusInEvent(QFocusEvent* event) {
    // The focus ring is for people moving with the keyboard; a click or the window's first
    // focus does not draw it.
    keyboardInUse_ = event->reason() == Qt::TabFocusReason ||
                     event->reason() == Qt::BacktabFocusReason ||
                     event->reason() == Qt::ShortcutFocusReason;
    if (current_ == nullptr) {
        const auto items = keyboardItems();
        if (!items.empty()) setCurrentNode(items.front());
    }
    QWidget::focusInEvent(event);
    update();
}

void MapView::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    update();
}

void MapView::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
        pictureValid_ = false;
        update();
    }
    QWidget::changeEvent(event);
}

void MapView::updateAccessibleText() {
    const DiskNode* folder = content_.folder();
    QString name = folder ? kind_ + QStringLiteral(" of ") + MapItemText::name(*folder) : kind_;
    if (current_ != nullptr)
        name = MapItemText::spoken(*current_, content_) + QStringLiteral(" — ") + name;
    setAccessibleName(name);
    setAccessibleDescription(MapItemText::largestItems(content_));
}

}  // namespace veldan::gui
