#include "gui/MapPane.hpp"

#include <QMenu>
#include <QStackedWidget>
#include <QVBoxLayout>

#include "app/MapPictureStyle.hpp"
#include "gui/Breadcrumb.hpp"
#include "gui/DesktopServices.hpp"
#include "gui/MapListView.hpp"
#include "gui/OrbitView.hpp"
#include "gui/TreemapView.hpp"
#include "platform/Paths.hpp"

namespace veldan::gui {

MapPane::MapPane(QWidget* parent)
    : QWidget(parent),
      breadcrumb_(new Breadcrumb(this)),
      stack_(new QStackedWidget(this)),
      orbit_(new OrbitView(this)),
      treemap_(new TreemapView(this)),
      list_(new MapListView(this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(breadcrumb_);
    layout->addWidget(stack_, 1);
    stack_->addWidget(orbit_);
    stack_->addWidget(treemap_);
    stack_->addWidget(list_);

    connect(&navigation_, &MapNavigation::changed, this, &MapPane::showContent);
    connect(breadcrumb_, &Breadcrumb::crumbClicked, this,
            [this](size_t depth) { navigation_.zoomOutTo(depth); });
    for (MapView* view : {static_cast<MapView*>(orbit_), static_cast<MapView*>(treemap_)}) {
        connect(view, &MapView::activated, this, &MapPane::activate);
        connect(view, &MapView::upRequested, this, &MapPane::goUp);
        connect(view, &MapView::contextMenuRequested, this, &MapPane::showContextMenu);
    }
    connect(list_, &MapListView::activated, this, &MapPane::activate);
    connect(list_, &MapListView::upRequested, this, &MapPane::goUp);
    connect(list_, &MapListView::contextMenuRequested, this, &MapPane::showContextMenu);
    showContent();
}

QWidget* MapPane::currentView() const {
    return stack_->currentWidget();
}

void MapPane::setViewMode(MapViewMode mode) {
    const bool changed = mode != mode_;
    mode_ = mode;
    QWidget* view = mode == MapViewMode::orbit     ? static_cast<QWidget*>(orbit_)
                    : mode == MapViewMode::treemap ? static_cast<QWidget*>(treemap_)
                                                   : static_cast<QWidget*>(list_);
    stack_->setCurrentWidget(view);
    if (changed) Q_EMIT viewModeChanged(mode);
}

void MapPane::showContent() {
    const MapContent& content = navigation_.content();
    orbit_->setContent(content);
    treemap_->setContent(content);
    list_->setContent(content);
    breadcrumb_->setCrumbs(navigation_.crumbs());
}

void MapPane::goUp() {
    if (!navigation_.canZoomOut()) return;
    const std::string left = navigation_.content().folder()->path;
    navigation_.zoomOut();
    // The folder just left stays the current item, so the keyboard carries on from it.
    for (const DiskNode* item : navigation_.content().items()) {
        if (item->path != left) continue;
        orbit_->setCurrentNode(item);
        treemap_->setCurrentNode(item);
        list_->setCurrentNode(item);
    }
}

bool MapPane::canExplore(const DiskNode& node) {
    if (node.isSummary) return node.bytes > 0;
    return node.isDirectory && node.children.empty() && node.bytes > 0;
}

MapPane::Target MapPane::exploreTarget(const DiskNode& node) const {
    // Exploring grouped items measures their folder by itself.
    const DiskNode& folder = *navigation_.content().folder();
    return node.isSummary ? Target{folder.path, folder.name} : Target{node.path, node.name};
}

void MapPane::activate(const DiskNode* node) {
    if (node == nullptr || navigation_.content().isFreeSpace(node)) return;
    if (canExplore(*node)) {
        // Grouped items can be listed only from a finished map.
        if (navigation_.content().scanFinished()) {
            const Target target = exploreTarget(*node);
            Q_EMIT exploreRequested(target.path, target.name);
        }
        return;
    }
    navigation_.zoomInto(node->path);
}

void MapPane::fillContextMenu(QMenu& menu, const DiskNode& node) {
    const MapContent& content = navigation_.content();
    if (content.isFreeSpace(&node) || content.folder() == nullptr) return;
    // A grouped item has no path of its own; its folder stands for it.
    const std::string path = node.isSummary ? content.folder()->path : node.path;
    menu.addAction(QStringLiteral("Open"), this, [this, path] {
        if (auto failure = DesktopServices::open(path)) Q_EMIT problem(*failure);
    });
    menu.addAction(QStringLiteral("Show in File Manager"), this,
                   [path] { DesktopServices::showInFileManager(path); });
    menu.addAction(QStringLiteral("Copy Path"), this, [path] { DesktopServices::copyPath(path); });
    if (canExplore(node)) {
        menu.addSeparator();
        const Target target = exploreTarget(node);
        QAction* explore = menu.addAction(QStringLiteral("Explore"), this, [this, target] {
            Q_EMIT exploreRequested(target.path, target.name);
        });
        if (!content.scanFinished()) {
            explore->setEnabled(false);
            explore->setToolTip(QStringLiteral("Finish the scan to explore them here."));
        }
    }
    if (node.isDirectory && !node.isSummary) {
        if (!canExplore(node)) menu.addSeparator();
        menu.addAction(QStringLiteral("Rescan This Folder"), this,
                       [this, path] { Q_EMIT rescanFolderRequested(path); });
    }
}

void MapPane::showContextMenu(const DiskNode* node, QPoint globalPosition) {
    QMenu menu(this);
    fillContextMenu(menu, *node);
    if (!menu.isEmpty()) menu.exec(globalPosition);
}

}  // namespace veldan::gui
