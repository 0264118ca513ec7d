#pragma once
// Every command of the window, as actions shared by its menus, its toolbar and the tray
// menu, with their standard shortcuts. Labels and availability follow the model: the
// report item names the report it would write, Stop is there only while a scan runs, and
// the tray item says why it is off on a desktop without a tray.
//
// Contract: a QObject of the main thread, owned by the window.

#include <QAction>
#include <QActionGroup>
#include <QList>
#include <QMenu>
#include <QObject>

#include "app/VeldanTool.hpp"
#include "gui/MapPane.hpp"

namespace veldan {
class DiskMapModel;
class ToolNavigation;
}  // namespace veldan

namespace veldan::gui {

class WindowActions final : public QObject {
    Q_OBJECT

public:
    WindowActions(DiskMapModel& model, ToolNavigation& navigation, MapPane& pane, QWidget* window);

    static constexpr const char* trayPreference = "veldanShowMenuBarExtra";

    QAction* scanStartupDisk;
    QAction* scanHome;
    QAction* chooseFolder;
    QMenu* recentMenu;
    QAction* saveSummary;
    QAction* stop;
    QAction* rescan;
    QAction* rescanFolder;
    QAction* orbitView;
    QAction* treemapView;
    QAction* listView;
    QAction* showRecommendations;
    QAction* showFreeSpace;
    QAction* trayIcon;
    QAction* openWindow;
    QAction* showMap;
    QAction* welcome;
    QAction* about;
    QAction* quit;
    QList<QAction*> tools;

    // The label of the report item for the model's state.
    static QString summaryLabel(const DiskMapModel& model);
    // Whether the tray icon is wanted (the preference, true when absent).
    static bool wantsTrayIcon();

public Q_SLOTS:
    void refresh();

Q_SIGNALS:
    void trayIconWanted(bool shown);

private:
    void refreshRecent();
    void setViewMode(MapViewMode mode);

    DiskMapModel& model_;
    MapPane& pane_;
    QActionGroup* views_;
};

}  // namespace veldan::gui
