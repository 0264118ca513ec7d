#pragma once
// The main window: toolbar and menus, the banner for the model's messages, the status line,
// a sidebar with the map and the tool screens, the map pane and the recommendations beside
// it. It shows what the model publishes: the saved map at once, the live map while a scan
// runs (from its partial trees), the stopped scan's partial map, and an explored folder in
// place of its node. A folder dropped on the window is scanned.
//
// Contract: a widget of the main thread; the model and the navigation outlive it.

#include <QMainWindow>
#include <QPointer>
#include <optional>

class QListWidget;
class QSplitter;
class QStackedWidget;

namespace veldan {
class DiskMapModel;
class ToolNavigation;
}  // namespace veldan

namespace veldan::gui {

class MapPane;
class MapStatusLine;
class MessageBanner;
class RecommendationsPane;
class TrayIcon;
class WindowActions;

class MainWindow final : public QMainWindow {
    Q_OBJECT

public:
    MainWindow(DiskMapModel& model, ToolNavigation& tools, QWidget* parent = nullptr);
    ~MainWindow() override;

    MapPane* mapPane() const { return pane_; }
    WindowActions* actions() const { return actions_; }
    MessageBanner* banner() const { return banner_; }
    MapStatusLine* statusLine() const { return status_; }
    RecommendationsPane* recommendations() const { return recommendations_; }
    TrayIcon* trayIcon() const { return tray_; }
    // The page shown: 0 the map, then one per tool screen in ToolScreens order.
    int currentPage() const;

    // Brings the window forward (a second launch, the tray).
    void bringForward();
    // Runs onboarding when the model found it unfinished.
    void startOnboardingIfNeeded();
    // The first-run window at `step`, or where it was left.
    void showOnboarding(std::optional<int> step);
    // A folder named by a second launch or dropped on the window: scanned.
    void scanFolder(const std::string& path);

protected:
    void closeEvent(QCloseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void buildMenus();
    void buildToolbar();
    void showPage(int page);
    void updateMap();
    bool showsSelectedFolder() const;
    void updateExploration();
    void updateFreeSpace();
    void updateTray();
    void openPendingTool();

    DiskMapModel& model_;
    ToolNavigation& tools_;
    MapPane* pane_;
    WindowActions* actions_;
    MessageBanner* banner_;
    MapStatusLine* status_;
    RecommendationsPane* recommendations_;
    QListWidget* sidebar_;
    QStackedWidget* pages_;
    QSplitter* mapSplitter_;
    TrayIcon* tray_ = nullptr;
    std::string explorationShown_;
};

}  // namespace veldan::gui
