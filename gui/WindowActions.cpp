#include "gui/WindowActions.hpp"

#include <QApplication>
#include <QFile>
#include <QIcon>

#include "app/DiskMapModel.hpp"
#include "app/ToolNavigation.hpp"
#include "gui/MapItemText.hpp"
#include "gui/ToolScreens.hpp"
#include "gui/TrayIcon.hpp"
#include "platform/Preferences.hpp"
#include "platform/UserFolders.hpp"

namespace veldan::gui {

namespace {

constexpr const char* listModeKey = "veldanExplorerListMode";
constexpr const char* orbitModeKey = "veldanExplorerOrbitMode";
constexpr const char* recommendationsKey = "veldanRecommendationsVisible";
constexpr const char* freeSpaceKey = "veldanShowFreeSpace";

QAction* action(QObject* parent, const QString& text, const QString& icon,
                const QKeySequence& shortcut = {}) {
    auto* created = new QAction(QIcon::fromTheme(icon), text, parent);
    if (!shortcut.isEmpty()) created->setShortcut(shortcut);
    return created;
}

QAction* toggle(QObject* parent, const QString& text, const char* key, bool fallback,
                const QKeySequence& shortcut = {}) {
    auto* created = action(parent, text, {}, shortcut);
    created->setCheckable(true);
    created->setChecked(platform::Preferences::boolean(key).value_or(fallback));
    QObject::connect(created, &QAction::toggled, parent,
                     [key](bool on) { platform::Preferences::setBoolean(key, on); });
    return created;
}

}  // namespace

WindowActions::WindowActions(DiskMapModel& model, ToolNavigation& navigation, MapPane& pane,
                             QWidget* window)
    : QObject(window), model_(model), pane_(pane), views_(new QActionGroup(this)) {
    scanStartupDisk =
        action(this, QStringLiteral("Scan Startup Disk"), QStringLiteral("drive-harddisk"),
               QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_D));
    scanHome = action(this, QStringLiteral("Scan Home Folder"), QStringLiteral("user-home"),
                      QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_H));
    chooseFolder = action(this, QStringLiteral("Choose Folder…"), QStringLiteral("folder-open"),
                          QKeySequence::Open);
    recentMenu = new QMenu(QStringLiteral("Open Recent"), window);
    saveSummary = action(this, QStringLiteral("Save Scan Summary…"),
                         QStringLiteral("document-save"), QKeySequence::Save);
    stop = action(this, QStringLiteral("Stop Scan"), QStringLiteral("process-stop"),
                  QKeySequence(Qt::Key_Escape));
    rescan = action(this, QStringLiteral("Rescan"), QStringLiteral("view-refresh"),
                    QKeySequence::Refresh);
    rescanFolder =
        action(this, QStringLiteral("Rescan This Folder"), QStringLiteral("view-refresh"),
               QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_R));
    orbitView = action(this, QStringLiteral("Orbit"), {}, QKeySequence(Qt::CTRL | Qt::Key_1));
    treemapView = action(this, QStringLiteral("Treemap"), {}, QKeySequence(Qt::CTRL | Qt::Key_2));
    listView = action(this, QStringLiteral("List"), {}, QKeySequence(Qt::CTRL | Qt::Key_3));
    for (QAction* view : {orbitView, treemapView, listView}) {
        view->setCheckable(true);
        views_->addAction(view);
    }
    showRecommendations = toggle(this, QStringLiteral("Show Recommendations"), recommendationsKey,
                                 true, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_R));
    showFreeSpace =
        toggle(this, QStringLiteral("Show Free Space on Startup Disk"), freeSpaceKey, true);
    trayIcon = action(this, QStringLiteral("Hide Tray Icon"), {});
    openWindow = action(this, QStringLiteral("Open Veldan"), {});
    showMap = action(this, QStringLiteral("Map"), QStringLiteral("view-grid"),
                     QKeySequence(Qt::CTRL | Qt::Key_0));
    welcome = action(this, QStringLiteral("Welcome to Veldan…"), QStringLiteral("help-about"));
    about = action(this, QStringLiteral("About Veldan"), QStringLiteral("help-about"));
    quit = action(this, QStringLiteral("Quit"), QStringLiteral("application-exit"),
                  QKeySequence::Quit);
    quit->setMenuRole(QAction::QuitRole);
    for (const auto& screen : ToolScreens::all()) {
        QAction* tool = action(this, screen.title, screen.iconName, screen.shortcut);
        tool->setStatusTip(screen.description);
        connect(tool, &QAction::triggered, &navigation,
                [&navigation, which = screen.tool] { navigation.open(which); });
        tools << tool;
    }
    // Shortcuts keep working while the window is hidden behind the tray only if they are
    // the window's; Esc must not leave the window when a dialog has it.
    for (QAction* each : findChildren<QAction*>())
        each->setShortcutContext(Qt::WindowShortcut);

    const std::string home = platform::homeFolder();
    connect(scanStartupDisk, &QAction::triggered, &model,
            [&model] { model.scan(DiskMapModel::startupDiskURL); });
    connect(scanHome, &QAction::triggered, &model, [&model, home] { model.scan(home); });
    connect(chooseFolder, &QAction::triggered, &model, [&model] { model.chooseFolder(); });
    connect(saveSummary, &QAction::triggered, &model, [&model] { model.saveSummary(); });
    connect(stop, &QAction::triggered, &model, [&model] { model.cancelScan(); });
    connect(rescan, &QAction::triggered, &model, [&model] { model.scan(model.selectedURL()); });
    connect(rescanFolder, &QAction::triggered, this, [this] {
        if (const DiskNode* folder = pane_.navigation().content().folder()) {
            model_.rescanFolder(folder->path);
        }
    });
    connect(orbitView, &QAction::triggered, this, [this] { setViewMode(MapViewMode::orbit); });
    connect(treemapView, &QAction::triggered, this, [this] { setViewMode(MapViewMode::treemap); });
    connect(listView, &QAction::triggered, this, [this] { setViewMode(MapViewMode::list); });
    connect(trayIcon, &QAction::triggered, this, [this] {
        const bool shown = !wantsTrayIcon();
        platform::Preferences::setBoolean(trayPreference, shown);
        refresh();
        Q_EMIT trayIconWanted(shown);
    });
    connect(quit, &QAction::triggered, qApp, &QApplication::quit);

    // The view kept in the preferences; the orbit when none is.
    const bool list = platform::Preferences::boolean(listModeKey).value_or(false);
    const bool orbit = platform::Preferences::boolean(orbitModeKey).value_or(true);
    const MapViewMode mode = list    ? MapViewMode::list
                             : orbit ? MapViewMode::orbit
                                     : MapViewMode::treemap;
    pane_.setViewMode(mode);
    (mode == MapViewMode::list    ? listView
     : mode == MapViewMode::orbit ? orbitView
                                  : treemapView)
        ->setChecked(true);

    for (auto signal : {&DiskMapModel::isScanningChanged, &DiskMapModel::snapshotChanged,
                        &DiskMapModel::scanPreviewChanged, &DiskMapModel::wasScanStoppedChanged,
                        &DiskMapModel::isDoingBackgroundWorkChanged, &DiskMapModel::cleanupChanged,
                        &DiskMapModel::duplicateTrashChanged}) {
        connect(&model_, signal, this, &WindowActions::refresh);
    }
    connect(&model_, &DiskMapModel::recentFoldersChanged, this, &WindowActions::refreshRecent);
    connect(&pane_.navigation(), &MapNavigation::changed, this, &WindowActions::refresh);
    refreshRecent();
    refresh();
}

QString WindowActions::summaryLabel(const DiskMapModel& model) {
    switch (model.summaryKind()) {
        case DiskMapModel::SummaryKind::progress:
            return QStringLiteral("Save Scan Progress…");
        case DiskMapModel::SummaryKind::partial:
            return QStringLiteral("Save Partial Scan…");
        case DiskMapModel::SummaryKind::summary:
            break;
    }
    return QStringLiteral("Save Scan Summary…");
}

bool WindowActions::wantsTrayIcon() {
    return platform::Preferences::boolean(trayPreference).value_or(true);
}

void WindowActions::setViewMode(MapViewMode mode) {
    pane_.setViewMode(mode);
    platform::Preferences::setBoolean(listModeKey, mode == MapViewMode::list);
    if (mode != MapViewMode::list) {
        platform::Preferences::setBoolean(orbitModeKey, mode == MapViewMode::orbit);
    }
}

void WindowActions::refresh() {
    const bool moving = model_.isCleaning() || model_.isMovingDuplicates();
    saveSummary->setText(summaryLabel(model_));
    saveSummary->setEnabled(model_.canExportSummary());
    stop->setEnabled(model_.isScanning());
    rescan->setEnabled(!moving && !model_.isScanning());
    for (QAction* start : {scanStartupDisk, scanHome, chooseFolder})
        start->setEnabled(!moving);
    const MapNavigation& navigation = pane_.navigation();
    rescanFolder->setEnabled(!moving && !model_.isScanning() && navigation.canZoomOut() &&
                             navigation.content().scanFinished());
    if (!TrayIcon::isAvailable()) {
        trayIcon->setEnabled(false);
        trayIcon->setText(QStringLiteral("Show Tray Icon (this desktop has no tray)"));
        trayIcon->setToolTip(QStringLiteral("This desktop shows no tray icons."));
    } else {
        trayIcon->setEnabled(true);
        trayIcon->setText(wantsTrayIcon() ? QStringLiteral("Hide Tray Icon")
                                          : QStringLiteral("Show Tray Icon"));
    }
}

void WindowActions::refreshRecent() {
    recentMenu->clear();
    for (const auto& path : model_.recentFolders()) {
        QAction* item = recentMenu->addAction(MapItemText::display(path));
        connect(item, &QAction::triggered, &model_, [this, path] { model_.scanRecent(path); });
    }
    recentMenu->setEnabled(!model_.recentFolders().empty());
}

}  // namespace veldan::gui
