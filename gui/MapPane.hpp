#pragma once
// The map area of the window: the breadcrumb above one of three views of the shown folder
// (orbit, treemap, list), with the navigation they share and the context menu of an item.
//
// The pane does not start work itself: exploring a grouped item and rescanning a folder
// are requests that the window passes to the model.
//
// Contract: a widget of the main thread.

#include <QWidget>

#include "gui/MapNavigation.hpp"

class QMenu;
class QStackedWidget;

namespace veldan::gui {

class Breadcrumb;
class MapListView;
class OrbitView;
class TreemapView;

enum class MapViewMode { orbit, treemap, list };

class MapPane final : public QWidget {
    Q_OBJECT

public:
    explicit MapPane(QWidget* parent = nullptr);

    MapNavigation& navigation() { return navigation_; }
    MapViewMode viewMode() const { return mode_; }
    void setViewMode(MapViewMode mode);

    TreemapView* treemap() const { return treemap_; }
    OrbitView* orbit() const { return orbit_; }
    MapListView* list() const { return list_; }
    QWidget* currentView() const;
    Breadcrumb* breadcrumb() const { return breadcrumb_; }

    // The context menu of `node` as the views show it (tests read its actions).
    void fillContextMenu(QMenu& menu, const DiskNode& node);
    // Whether `node` is measured as a whole or groups smaller items, so "Explore" applies.
    static bool canExplore(const DiskNode& node);

    // Enters `node` when it is a folder; explores it when it is grouped or measured whole.
    void activate(const DiskNode* node);
    // Shows the parent of the shown folder, with the folder left as the current item.
    void goUp();

Q_SIGNALS:
    void viewModeChanged(MapViewMode mode);
    void exploreRequested(const std::string& path, const std::string& name);
    void rescanFolderRequested(const std::string& path);
    // A sentence for the window's banner, such as a failure to open an item.
    void problem(const QString& sentence);

private:
    struct Target {
        std::string path;
        std::string name;
    };
    Target exploreTarget(const DiskNode& node) const;
    void showContent();
    void showContextMenu(const DiskNode* node, QPoint globalPosition);

    MapNavigation navigation_;
    MapViewMode mode_ = MapViewMode::orbit;
    Breadcrumb* breadcrumb_;
    QStackedWidget* stack_;
    OrbitView* orbit_;
    TreemapView* treemap_;
    MapListView* list_;
};

}  // namespace veldan::gui
