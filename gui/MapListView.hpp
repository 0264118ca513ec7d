#pragma once
// The shown folder as a sortable list: name (with its category colour), size, a share bar,
// category and the number of items inside. Double-click or Return enters a folder,
// Backspace goes up, the context menu is the map's.
//
// Contract: a widget of the main thread; node pointers in signals point into content()
// and are valid until the content changes.

#include <QAbstractTableModel>
#include <QTreeView>

#include "gui/MapContent.hpp"

class QSortFilterProxyModel;

namespace veldan::gui {

class MapListModel final : public QAbstractTableModel {
    Q_OBJECT

public:
    enum Column { name, size, share, category, items, count };
    static constexpr int sortRole = Qt::UserRole;
    static constexpr int shareRole = Qt::UserRole + 1;  // 0..1

    explicit MapListModel(QObject* parent = nullptr);

    void setContent(MapContent content);
    const MapContent& content() const { return content_; }
    const DiskNode* node(const QModelIndex& index) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    MapContent content_;
    bool dark_ = false;
};

class MapListView final : public QTreeView {
    Q_OBJECT

public:
    explicit MapListView(QWidget* parent = nullptr);

    void setContent(MapContent content);
    const MapContent& content() const { return model_->content(); }
    MapListModel* listModel() const { return model_; }
    QSortFilterProxyModel* sortModel() const { return sorted_; }
    // The node shown in `row` of the sorted list.
    const DiskNode* nodeAtRow(int row) const;
    void setCurrentNode(const DiskNode* node);

Q_SIGNALS:
    void activated(const DiskNode* node);
    void upRequested();
    void contextMenuRequested(const DiskNode* node, QPoint globalPosition);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    const DiskNode* nodeAt(const QModelIndex& index) const;

    MapListModel* model_;
    QSortFilterProxyModel* sorted_;
};

}  // namespace veldan::gui
