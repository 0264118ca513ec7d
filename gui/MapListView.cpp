#include "gui/MapListView.hpp"

#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QSortFilterProxyModel>
#include <QStyledItemDelegate>

#include "app/MapPictureStyle.hpp"
#include "gui/MapItemText.hpp"
#include "gui/PainterCanvas.hpp"
#include "scan/SizeText.hpp"

namespace veldan::gui {

namespace {

// The share column as a bar with the percentage beside it.
class ShareBarDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        QStyleOptionViewItem base = option;
        initStyleOption(&base, index);
        const QString text = base.text;
        base.text.clear();
        QApplication::style()->drawControl(QStyle::CE_ItemViewItem, &base, painter, base.widget);

        const double share = index.data(MapListModel::shareRole).toDouble();
        const QRectF area = QRectF(option.rect).adjusted(6, 0, -6, 0);
        const double textWidth = option.fontMetrics.horizontalAdvance(QStringLiteral("100%")) + 8;
        QRectF track(area.left(), area.center().y() - 4, std::max(0.0, area.width() - textWidth),
                     8);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        QColor trackColor = option.palette.color(QPalette::Text);
        trackColor.setAlphaF(0.12f);
        painter->setBrush(trackColor);
        painter->drawRoundedRect(track, 4, 4);
        painter->setBrush(option.palette.color(QPalette::Highlight));
        painter->drawRoundedRect(QRectF(track.topLeft(), QSizeF(track.width() * share, 8)), 4, 4);
        painter->setPen(option.palette.color(
            option.state & QStyle::State_Selected ? QPalette::HighlightedText : QPalette::Text));
        painter->drawText(QRectF(track.right() + 4, area.top(), textWidth - 4, area.height()),
                          Qt::AlignRight | Qt::AlignVCenter, text);
        painter->restore();
    }
};

QString itemCount(const DiskNode& node) {
    if (!node.isDirectory || node.isSummary) return {};
    qsizetype count = 0;
    bool grouped = false;
    for (const auto& child : node.children) {
        if (child.isSummary) {
            grouped = true;
        } else {
            ++count;
        }
    }
    // A grouped "Other" holds more items than the map kept by name.
    return QString::number(count) + (grouped ? QStringLiteral("+") : QString());
}

}  // namespace

MapListModel::MapListModel(QObject* parent) : QAbstractTableModel(parent) {}

void MapListModel::setContent(MapContent content) {
    beginResetModel();
    content_ = std::move(content);
    dark_ = QApplication::palette().color(QPalette::Window).lightnessF() < 0.5;
    endResetModel();
}

const DiskNode* MapListModel::node(const QModelIndex& index) const {
    if (!index.isValid() || index.row() >= rowCount()) return nullptr;
    return content_.items()[static_cast<size_t>(index.row())];
}

int MapListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(content_.items().size());
}

int MapListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : Column::count;
}

QVariant MapListModel::data(const QModelIndex& index, int role) const {
    const DiskNode* item = node(index);
    if (item == nullptr) return {};
    const bool free = content_.isFreeSpace(item);
    const double fraction = content_.total() > 0 ? static_cast<double>(item->bytes) /
                                                       static_cast<double>(content_.total())
                                                 : 0.0;
    switch (index.column()) {
        case Column::name:
            if (role == Qt::DisplayRole || role == sortRole) return MapItemText::name(*item);
            if (role == Qt::DecorationRole) {
                return PainterCanvas::color(content_.style(dark_).fill(*item));
            }
            if (role == Qt::ToolTipRole) return MapItemText::toolTip(*item, content_);
            if (role == Qt::AccessibleTextRole) return MapItemText::spoken(*item, content_);
            break;
        case Column::size:
            if (role == Qt::DisplayRole)
                return QString::fromStdString(SizeText::string(item->bytes));
            if (role == sortRole) return static_cast<qlonglong>(item->bytes);
            if (role == Qt::TextAlignmentRole) return int(Qt::AlignRight | Qt::AlignVCenter);
            break;
        case Column::share:
            if (role == Qt::DisplayRole) {
                return QString::fromStdString(SizeText::share(item->bytes, content_.total()));
            }
            if (role == sortRole || role == shareRole) return fraction;
            break;
        case Column::category:
            if (role == Qt::DisplayRole || role == sortRole) {
                if (free) return QString();
                if (item->isSummary) return QStringLiteral("Grouped smaller items");
                return QString::fromUtf8(title(item->category).data(),
                                         static_cast<qsizetype>(title(item->category).size()));
            }
            break;
        case Column::items:
            if (role == Qt::DisplayRole) return itemCount(*item);
            if (role == sortRole) return static_cast<qlonglong>(item->children.size());
            if (role == Qt::TextAlignmentRole) return int(Qt::AlignRight | Qt::AlignVCenter);
            break;
        default:
            break;
    }
    return {};
}

QVariant MapListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    switch (section) {
        case Column::name:
            return QStringLiteral("Name");
        case Column::size:
            return QStringLiteral("Size");
        case Column::share:
            return QStringLiteral("Share");
        case Column::category:
            return QStringLiteral("Category");
        case Column::items:
            return QStringLiteral("Items");
        default:
            return {};
    }
}

MapListView::MapListView(QWidget* parent)
    : QTreeView(parent), model_(new MapListModel(this)), sorted_(new QSortFilterProxyModel(this)) {
    sorted_->setSourceModel(model_);
    sorted_->setSortRole(MapListModel::sortRole);
    sorted_->setSortCaseSensitivity(Qt::CaseInsensitive);
    setModel(sorted_);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAlternatingRowColors(true);
    setSortingEnabled(true);
    sortByColumn(MapListModel::size, Qt::DescendingOrder);
    setItemDelegateForColumn(MapListModel::share, new ShareBarDelegate(this));
    setSelectionMode(QAbstractItemView::SingleSelection);
    setAccessibleName(QStringLiteral("Items of the shown folder"));
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(MapListModel::name, QHeaderView::Stretch);
    header()->resizeSection(MapListModel::size, 100);
    header()->resizeSection(MapListModel::share, 180);
    header()->resizeSection(MapListModel::category, 150);
    header()->resizeSection(MapListModel::items, 70);
    connect(this, &QTreeView::activated, this, [this](const QModelIndex& index) {
        if (const DiskNode* node = nodeAt(index)) Q_EMIT activated(node);
    });
}

void MapListView::setContent(MapContent content) {
    model_->setContent(std::move(content));
}

const DiskNode* MapListView::nodeAt(const QModelIndex& index) const {
    return model_->node(sorted_->mapToSource(index));
}

const DiskNode* MapListView::nodeAtRow(int row) const {
    return nodeAt(sorted_->index(row, 0));
}

void MapListView::setCurrentNode(const DiskNode* node) {
    for (int row = 0; row < sorted_->rowCount(); ++row) {
        if (nodeAtRow(row) == node) setCurrentIndex(sorted_->index(row, 0));
    }
}

void MapListView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Backspace ||
        (event->key() == Qt::Key_Up && (event->modifiers() & Qt::AltModifier))) {
        Q_EMIT upRequested();
        return;
    }
    QTreeView::keyPressEvent(event);
}

void MapListView::contextMenuEvent(QContextMenuEvent* event) {
    const QModelIndex index = event->reason() == QContextMenuEvent::Mouse
                                  ? indexAt(viewport()->mapFrom(this, event->pos()))
                                  : currentIndex();
    if (const DiskNode* node = nodeAt(index)) {
        const QPoint global = event->reason() == QContextMenuEvent::Mouse
                                  ? event->globalPos()
                                  : viewport()->mapToGlobal(visualRect(index).center());
        Q_EMIT contextMenuRequested(node, global);
    }
}

}  // namespace veldan::gui
