#include "gui/MainWindow.hpp"

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHBoxLayout>
#include <QListWidget>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolBar>
#include <QVBoxLayout>

#include "app/DiskMapModel.hpp"
#include "app/ToolNavigation.hpp"
#include "gui/MapPane.hpp"
#include "gui/MapStatusLine.hpp"
#include "gui/MessageBanner.hpp"
#include "gui/OnboardingDialog.hpp"
#include "gui/QtFilePanels.hpp"
#include "gui/RecommendationsPane.hpp"
#include "gui/ToolScreens.hpp"
#include "gui/TrayIcon.hpp"
#include "gui/TrayStatus.hpp"
#include "gui/WindowActions.hpp"
#include "platform/UserFolders.hpp"

namespace veldan::gui {

namespace {

// The one local folder among dropped items, as raw bytes; nothing for anything else.
std::optional<std::string> droppedFolder(const QMimeData* data) {
    if (data == nullptr || !data->hasUrls() || data->urls().size() != 1) return std::nullopt;
    const QUrl url = data->urls().front();
    if (!url.isLocalFile()) return std::nullopt;
    // The encoded path keeps bytes that are not UTF-8.
    const QByteArray path =
        QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1());
    if (path.isEmpty()) return std::nullopt;
    return path.toStdString();
}

}  // namespace

MainWindow::MainWindow(DiskMapModel& model, ToolNavigation& tools, QWidget* parent)
    : QMainWindow(parent),
      model_(model),
      tools_(tools),
      pane_(new MapPane(this)),
      actions_(new WindowActions(model, tools, *pane_, this)),
      banner_(new MessageBanner(this)),
      status_(new MapStatusLine(model, this)),
      recommendations_(new RecommendationsPane(model, this)),
      sidebar_(new QListWidget(this)),
      pages_(new QStackedWidget(this)),
      mapSplitter_(new QSplitter(Qt::Horizontal, this)) {
    setWindowTitle(QStringLiteral("Veldan"));
    setObjectName(QStringLiteral("VeldanMainWindow"));
    setAcceptDrops(true);
    resize(1280, 820);
    model_.setFilePanels(std::make_shared<QtFilePanels>(this));

    mapSplitter_->addWidget(pane_);
    mapSplitter_->addWidget(recommendations_);
    mapSplitter_->setStretchFactor(0, 1);
    mapSplitter_->setCollapsible(0, false);
    mapSplitter_->setSizes({960, 300});
    pages_->addWidget(mapSplitter_);

    sidebar_->setAccessibleName(QStringLiteral("Screens"));
    sidebar_->setFixedWidth(170);
    sidebar_->setFrameShape(QFrame::NoFrame);
    sidebar_->setSpacing(2);
    sidebar_->setIconSize(QSize(20, 20));
    auto* mapItem = new QListWidgetItem(actions_->showMap->icon(), QStringLiteral("Map"), sidebar_);
    mapItem->setToolTip(QStringLiteral("The map of the scanned folder"));
    const ToolScreenContext context{model_, tools_};
    for (const auto& screen : ToolScreens::all()) {
        auto* item = new QListWidgetItem(QIcon::fromTheme(screen.iconName), screen.title, sidebar_);
        item->setToolTip(screen.description);
        pages_->addWidget(screen.build(context, pages_));
    }
    sidebar_->setCurrentRow(0);
    connect(sidebar_, &QListWidget::currentRowChanged, this, &MainWindow::showPage);

    auto* body = new QWidget(this);
    auto* bodyLayout = new QHBoxLayout(body);
    bodyLayout->setContentsMargins(0, 0, 0, 0);
    bodyLayout->setSpacing(0);
    bodyLayout->addWidget(sidebar_);
    bodyLayout->addWidget(pages_, 1);
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(banner_);
    layout->addWidget(status_);
    layout->addWidget(body, 1);
    setCentralWidget(central);
    buildMenus();
    buildToolbar();

    recommendations_->setVisible(actions_->showRecommendations->isChecked());
    connect(actions_->showRecommendations, &QAction::toggled, recommendations_,
            &QWidget::setVisible);
    connect(actions_->showFreeSpace, &QAction::toggled, this, &MainWindow::updateFreeSpace);
    connect(actions_->showMap, &QAction::triggered, this, [this] { showPage(0); });
    // Whatever starts a map shows it.
    for (QAction* start : {actions_->scanStartupDisk, actions_->scanHome, actions_->rescan,
                           actions_->rescanFolder}) {
        connect(start, &QAction::triggered, this, [this] { showPage(0); });
    }
    connect(actions_->openWindow, &QAction::triggered, this, &MainWindow::bringForward);
    connect(actions_->welcome, &QAction::triggered, this, [this] { showOnboarding(0); });
    connect(actions_->about, &QAction::triggered, this, [this] {
        QMessageBox::about(this, QStringLiteral("About Veldan"),
                           QStringLiteral("<h3>Veldan %1</h3><p>Maps where space goes on your disk "
                                          "and helps reclaim it safely. Nothing is ever deleted "
                                          "outright, and everything stays on this computer.</p>")
                               .arg(QApplication::applicationVersion()));
    });
    connect(banner_, &MessageBanner::dismissed, &model_, &DiskMapModel::dismissMessages);
    connect(status_, &MapStatusLine::stopRequested, actions_->stop, &QAction::trigger);
    connect(status_, &MapStatusLine::rescanRequested, actions_->rescan, &QAction::trigger);
    connect(
        pane_, &MapPane::exploreRequested, &model_,
        [this](const std::string& path, const std::string& name) { model_.explore(path, name); });
    connect(pane_, &MapPane::rescanFolderRequested, &model_,
            [this](const std::string& path) { model_.rescanFolder(path); });
    connect(pane_, &MapPane::problem, this,
            [this](const QString& sentence) { statusBar()->showMessage(sentence, 8000); });
    connect(&pane_->navigation(), &MapNavigation::changed, this, [this] {
        // Leaving an explored folder by the breadcrumb ends the exploration.
        if (!explorationShown_.empty() && !model_.exploringPath().empty()) {
            bool shown = false;
            for (const auto& crumb : pane_->navigation().crumbs())
                shown = shown || crumb.path == model_.exploringPath();
            if (!shown) model_.cancelExploration();
        }
    });

    const auto messages = [this] { banner_->show(model_.scanError(), model_.locationNotice()); };
    connect(&model_, &DiskMapModel::scanErrorChanged, this, messages);
    connect(&model_, &DiskMapModel::locationNoticeChanged, this, messages);
    for (auto signal : {&DiskMapModel::snapshotChanged, &DiskMapModel::scanPreviewChanged,
                        &DiskMapModel::isScanningChanged, &DiskMapModel::wasScanStoppedChanged}) {
        connect(&model_, signal, this, &MainWindow::updateMap);
    }
    connect(&model_, &DiskMapModel::explorationChanged, this, &MainWindow::updateExploration);
    connect(&model_, &DiskMapModel::volumeRefreshIDChanged, this, &MainWindow::updateFreeSpace);
    connect(&model_, &DiskMapModel::started, this, &MainWindow::startOnboardingIfNeeded);
    connect(&tools_, &ToolNavigation::pendingToolChanged, this, &MainWindow::openPendingTool);
    connect(actions_, &WindowActions::trayIconWanted, this, &MainWindow::updateTray);

    if (TrayIcon::isAvailable()) {
        tray_ = new TrayIcon(*actions_, this);
        connect(tray_, &TrayIcon::openRequested, this, &MainWindow::bringForward);
        new TrayStatus(model_, *tray_, this);
    }
    messages();
    updateMap();
    updateTray();
    openPendingTool();
}

MainWindow::~MainWindow() {
    // The model may outlive the window: it must not call back into dialogs of a window
    // that is gone.
    model_.setFilePanels(nullptr);
}

void MainWindow::buildMenus() {
    QMenu* file = menuBar()->addMenu(QStringLiteral("&File"));
    file->addAction(actions_->scanStartupDisk);
    file->addAction(actions_->scanHome);
    file->addAction(actions_->chooseFolder);
    file->addMenu(actions_->recentMenu);
    file->addSeparator();
    file->addAction(actions_->saveSummary);
    file->addSeparator();
    file->addAction(actions_->trayIcon);
    file->addSeparator();
    file->addAction(actions_->quit);

    QMenu* scan = menuBar()->addMenu(QStringLiteral("&Scan"));
    scan->addAction(actions_->rescan);
    scan->addAction(actions_->rescanFolder);
    scan->addAction(actions_->stop);

    QMenu* view = menuBar()->addMenu(QStringLiteral("&View"));
    view->addAction(actions_->orbitView);
    view->addAction(actions_->treemapView);
    view->addAction(actions_->listView);
    view->addSeparator();
    view->addAction(actions_->showRecommendations);
    view->addAction(actions_->showFreeSpace);

    QMenu* tools = menuBar()->addMenu(QStringLiteral("&Tools"));
    tools->addAction(actions_->showMap);
    tools->addSeparator();
    for (QAction* tool : actions_->tools)
        tools->addAction(tool);

    QMenu* help = menuBar()->addMenu(QStringLiteral("&Help"));
    help->addAction(actions_->welcome);
    help->addAction(actions_->about);
}

void MainWindow::buildToolbar() {
    QToolBar* bar = addToolBar(QStringLiteral("Main"));
    bar->setObjectName(QStringLiteral("MainToolbar"));
    bar->setMovable(false);
    bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    bar->addAction(actions_->scanStartupDisk);
    bar->addAction(actions_->chooseFolder);
    bar->addAction(actions_->rescan);
    bar->addAction(actions_->stop);
    bar->addSeparator();
    bar->addAction(actions_->orbitView);
    bar->addAction(actions_->treemapView);
    bar->addAction(actions_->listView);
    bar->addSeparator();
    bar->addAction(actions_->saveSummary);
}

int MainWindow::currentPage() const {
    return pages_->currentIndex();
}

void MainWindow::showPage(int page) {
    pages_->setCurrentIndex(page);
    if (sidebar_->currentRow() != page) sidebar_->setCurrentRow(page);
}

void MainWindow::openPendingTool() {
    const auto tool = tools_.pendingTool();
    if (!tool) return;
    const auto& screens = ToolScreens::all();
    for (size_t i = 0; i < screens.size(); ++i) {
        if (screens[i].tool == *tool) showPage(static_cast<int>(i) + 1);
    }
    bringForward();
    tools_.clearPendingTool();
}

void MainWindow::bringForward() {
    if (isMinimized()) showNormal();
    show();
    raise();
    activateWindow();
}

void MainWindow::scanFolder(const std::string& path) {
    showPage(0);
    model_.scan(path);
}

void MainWindow::startOnboardingIfNeeded() {
    if (model_.needsOnboarding()) showOnboarding(std::nullopt);
}

void MainWindow::showOnboarding(std::optional<int> step) {
    auto* onboarding = new OnboardingDialog(this);
    onboarding->setAttribute(Qt::WA_DeleteOnClose);
    if (step) onboarding->showStep(*step);
    connect(onboarding, &OnboardingDialog::finishedWith, this, [this](auto scan) {
        scanFolder(scan == OnboardingDialog::FirstScan::homeFolder ? platform::homeFolder()
                                                                   : DiskMapModel::startupDiskURL);
    });
    onboarding->open();
}

void MainWindow::updateMap() {
    // The finished map when there is one, else the live (or stopped) partial tree.
    if (const auto& snapshot = model_.snapshot()) {
        pane_->navigation().setTree(std::shared_ptr<const DiskNode>(snapshot, &snapshot->root),
                                    true);
    } else if (model_.scanPreview() || !model_.isScanning() || !showsSelectedFolder()) {
        pane_->navigation().setTree(model_.scanPreview(), false);
    } else {
        // A rescan keeps the map it replaces on screen until its first partial tree.
        pane_->navigation().setTree(pane_->navigation().tree(), false);
    }
    updateFreeSpace();
}

bool MainWindow::showsSelectedFolder() const {
    const auto& tree = pane_->navigation().tree();
    return tree && tree->path == model_.selectedURL();
}

void MainWindow::updateExploration() {
    MapNavigation& navigation = pane_->navigation();
    const auto& folder = model_.exploringFolder();
    if (model_.exploringPath().empty()) {
        explorationShown_.clear();
        navigation.clearExplored();
        return;
    }
    if (!folder || explorationShown_ == model_.exploringPath()) return;
    explorationShown_ = model_.exploringPath();
    navigation.setExplored(explorationShown_,
                           std::shared_ptr<const DiskNode>(folder, &folder->node));
    // A folder measured whole is entered; a grouped "Other" is already its folder's.
    navigation.zoomInto(explorationShown_);
}

void MainWindow::updateFreeSpace() {
    const auto& volume = model_.volume();
    pane_->navigation().setFreeSpace(actions_->showFreeSpace->isChecked() && volume
                                         ? std::optional<int64_t>(volume->free)
                                         : std::nullopt);
}

void MainWindow::updateTray() {
    const bool shown = tray_ != nullptr && WindowActions::wantsTrayIcon();
    if (tray_ != nullptr) tray_->setVisible(shown);
    // With the tray icon shown, closing the window keeps Veldan there.
    QApplication::setQuitOnLastWindowClosed(!shown);
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (tray_ != nullptr && tray_->isVisible()) {
        hide();
        event->ignore();
        return;
    }
    event->accept();
    QApplication::quit();
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (droppedFolder(event->mimeData())) event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    const auto folder = droppedFolder(event->mimeData());
    if (!folder) return;
    event->acceptProposedAction();
    // The model checks that it is a folder, off this thread, and says so when it is not.
    scanFolder(*folder);
}

}  // namespace veldan::gui
