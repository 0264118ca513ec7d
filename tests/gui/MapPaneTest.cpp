// The map pane as a person uses it: clicks and keys zoom in and out in every view, the
// breadcrumb leads back, a live tree keeps the zoomed folder, grouped and whole folders
// offer "Explore" once the scan is done, and screen readers hear the largest items.

#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QHeaderView>
#include <QMenu>
#include <QSignalSpy>
#include <QSortFilterProxyModel>
#include <QTest>

#include "gui/Breadcrumb.hpp"
#include "gui/MapItemText.hpp"
#include "gui/MapListView.hpp"
#include "gui/MapPane.hpp"
#include "gui/OrbitView.hpp"
#include "gui/PainterCanvas.hpp"
#include "gui/TreemapView.hpp"
#include "layout/OrbitSector.hpp"
#include "tests/gui/GuiTestSupport.hpp"

namespace veldan::gui {
namespace {

const DiskNode* child(const DiskNode* folder, std::string_view name) {
    for (const auto& node : folder->children) {
        if (node.name == name) return &node;
    }
    return nullptr;
}

std::vector<std::string> crumbNames(const MapNavigation& navigation) {
    std::vector<std::string> names;
    for (const auto& crumb : navigation.crumbs())
        names.push_back(crumb.name);
    return names;
}

class MapPaneTest : public ::testing::Test {
protected:
    void SetUp() override {
        pane.resize(900, 640);
        pane.show();
        pane.navigation().setTree(tree, true);
    }
    const DiskNode* shown() { return pane.navigation().content().folder(); }

    std::shared_ptr<const DiskNode> tree = test::sampleTree();
    MapPane pane;
};

TEST_F(MapPaneTest, ClicksZoomIntoFoldersInEachViewAndTheBreadcrumbLeadsBack) {
    pane.setViewMode(MapViewMode::treemap);
    const DiskNode* projects = child(shown(), "Projects");
    test::click(pane.treemap(), *pane.treemap()->pointOf(projects));
    EXPECT_EQ(crumbNames(pane.navigation()), (std::vector<std::string>{"ana", "Projects"}));

    auto buttons = pane.breadcrumb()->findChildren<QAbstractButton*>();
    ASSERT_EQ(buttons.size(), 2);
    buttons.front()->click();
    EXPECT_EQ(shown(), tree.get());

    // A nested tile is entered in one click and left one level at a time.
    const DiskNode* app = child(child(shown(), "Projects"), "app");
    test::click(pane.treemap(), *pane.treemap()->pointOf(app));
    EXPECT_EQ(crumbNames(pane.navigation()), (std::vector<std::string>{"ana", "Projects", "app"}));
    QTest::keyClick(pane.treemap(), Qt::Key_Backspace);
    EXPECT_EQ(shown()->name, "Projects");
    pane.navigation().zoomOutTo(0);

    pane.setViewMode(MapViewMode::orbit);
    const DiskNode* movies = child(shown(), "Movies");
    test::click(pane.orbit(), *pane.orbit()->pointOf(movies));
    EXPECT_EQ(shown()->name, "Movies");
    const auto frame = OrbitPicture::frame(pane.orbit()->width(), pane.orbit()->height());
    const MapPoint centre = OrbitSector::centre(frame.ring);
    test::click(pane.orbit(), QPointF(centre.x, centre.y));
    EXPECT_EQ(shown(), tree.get());

    pane.setViewMode(MapViewMode::list);
    MapListView* list = pane.list();
    for (int row = 0; row < list->model()->rowCount(); ++row) {
        if (list->nodeAtRow(row)->name == "Projects")
            list->setCurrentIndex(list->model()->index(row, 0));
    }
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(shown()->name, "Projects");
}

TEST_F(MapPaneTest, TheKeyboardMovesBetweenTilesEntersAndLeaves) {
    for (const auto mode : {MapViewMode::treemap, MapViewMode::orbit}) {
        pane.setViewMode(mode);
        auto* view = static_cast<MapView*>(pane.currentView());
        view->setFocus();
        QTest::keyClick(view, Qt::Key_Home);
        EXPECT_EQ(view->currentNode()->name, "Projects");
        QTest::keyClick(view, mode == MapViewMode::treemap ? Qt::Key_Right : Qt::Key_Down);
        EXPECT_EQ(view->currentNode()->name, "Movies");
        QTest::keyClick(view, Qt::Key_Return);
        EXPECT_EQ(shown()->name, "Movies");
        QTest::keyClick(view, Qt::Key_Backspace);
        EXPECT_EQ(shown(), tree.get());
        // Screen readers hear the current item and, as the description, the largest ones.
        EXPECT_TRUE(view->accessibleName().startsWith("Movies, 4.6 GB, 35 percent"))
            << view->accessibleName().toStdString();
        EXPECT_TRUE(view->accessibleDescription().startsWith(
            "Largest items: Projects, 6.4 GB, 49 percent; Movies"))
            << view->accessibleDescription().toStdString();
    }
}

TEST_F(MapPaneTest, ALiveTreeKeepsTheZoomedFolderAndAnotherRootStartsAtTheTop) {
    pane.navigation().setTree(tree, false);
    ASSERT_TRUE(pane.navigation().zoomInto(tree->path + "/Projects/app"));
    // The next partial tree lacks the folder for a moment: the deepest present one shows.
    auto partial = std::make_shared<DiskNode>(*tree);
    partial->children[0].children.erase(partial->children[0].children.begin());
    pane.navigation().setTree(partial, false);
    EXPECT_EQ(shown()->name, "Projects");
    pane.navigation().setTree(tree, true);
    EXPECT_EQ(shown()->name, "app");
    pane.navigation().setTree(test::sampleTree("/srv/data"), true);
    EXPECT_EQ(shown()->path, "/srv/data");
}

std::vector<std::string> menuTexts(MapPane& pane, const DiskNode& node) {
    QMenu menu;
    pane.fillContextMenu(menu, node);
    std::vector<std::string> texts;
    for (const QAction* action : menu.actions()) {
        if (!action->isSeparator()) {
            texts.push_back(action->text().toStdString() + (action->isEnabled() ? "" : " (off)"));
        }
    }
    return texts;
}

TEST_F(MapPaneTest, GroupedAndWholeFoldersOfferExploreOnceTheScanIsDone) {
    using Texts = std::vector<std::string>;
    const DiskNode* movies = child(shown(), "Movies");
    EXPECT_EQ(menuTexts(pane, *movies),
              (Texts{"Open", "Show in File Manager", "Copy Path", "Rescan This Folder"}));
    EXPECT_EQ(menuTexts(pane, *child(shown(), "disk.img")),
              (Texts{"Open", "Show in File Manager", "Copy Path"}));

    QSignalSpy explore(&pane, &MapPane::exploreRequested);
    pane.navigation().zoomInto(movies->path);
    const DiskNode* other = &shown()->children.back();
    ASSERT_TRUE(other->isSummary);
    EXPECT_EQ(menuTexts(pane, *other),
              (Texts{"Open", "Show in File Manager", "Copy Path", "Explore"}));
    // Clicking "Other" explores its folder, which then lists what it grouped.
    pane.setViewMode(MapViewMode::treemap);
    test::click(pane.treemap(), *pane.treemap()->pointOf(other));
    ASSERT_EQ(explore.size(), 1);
    EXPECT_EQ(explore[0][0].value<std::string>(), movies->path);
    auto explored = std::make_shared<DiskNode>(*movies);
    explored->children.back() = test::sampleTree(movies->path + "/clips")->children[1];
    pane.navigation().setExplored(movies->path, explored);
    EXPECT_EQ(shown(), explored.get());
    EXPECT_EQ(crumbNames(pane.navigation()), (std::vector<std::string>{"ana", "Movies"}));

    pane.navigation().zoomOutTo(0);
    pane.navigation().setTree(tree, false);
    const DiskNode* modules = child(child(shown(), "Projects"), "node_modules");
    EXPECT_EQ(menuTexts(pane, *modules), (Texts{"Open", "Show in File Manager", "Copy Path",
                                                "Explore (off)", "Rescan This Folder"}));
}

TEST_F(MapPaneTest, TheListSortsByEveryColumn) {
    pane.setViewMode(MapViewMode::list);
    MapListView* list = pane.list();
    const auto firstRow = [&] { return list->nodeAtRow(0)->name; };
    EXPECT_EQ(firstRow(), "Projects");  // largest first
    list->sortByColumn(MapListModel::name, Qt::AscendingOrder);
    EXPECT_EQ(firstRow(), "disk.img");
    list->sortByColumn(MapListModel::share, Qt::AscendingOrder);
    EXPECT_EQ(firstRow(), "notes.md");
    list->sortByColumn(MapListModel::items, Qt::DescendingOrder);
    EXPECT_EQ(firstRow(), "Projects");
    EXPECT_EQ(list->model()->index(0, MapListModel::items).data().toString(), "3");
}

TEST_F(MapPaneTest, TheStartupDiskShowsItsFreeSpaceBesideTheRootOnly) {
    pane.navigation().setTree(test::sampleTree("/"), true);
    pane.navigation().setFreeSpace(13'000'000'000);
    const MapContent& content = pane.navigation().content();
    ASSERT_NE(content.freeSpaceNode(), nullptr);
    EXPECT_EQ(content.items().back(), content.freeSpaceNode());
    EXPECT_EQ(MapItemText::sizeAndShare(*content.freeSpaceNode(), content), "13.0 GB · 50%");
    pane.setViewMode(MapViewMode::treemap);
    EXPECT_TRUE(pane.treemap()->pointOf(content.freeSpaceNode()).has_value());
    QMenu menu;
    pane.fillContextMenu(menu, *content.freeSpaceNode());
    EXPECT_TRUE(menu.isEmpty());

    pane.navigation().zoomInto("/Projects");
    EXPECT_EQ(pane.navigation().content().freeSpaceNode(), nullptr);
    pane.navigation().setTree(tree, true);  // not the startup disk
    EXPECT_EQ(pane.navigation().content().freeSpaceNode(), nullptr);
}

TEST_F(MapPaneTest, TheMapFollowsTheLightOrDarkPalette) {
    pane.setViewMode(MapViewMode::treemap);
    for (const bool dark : {false, true}) {
        QPalette palette = pane.palette();
        palette.setColor(QPalette::Window, dark ? QColor(30, 30, 30) : QColor(240, 240, 240));
        pane.setPalette(palette);
        const QImage picture = pane.treemap()->grab().toImage();
        EXPECT_EQ(picture.pixelColor(0, 0), PainterCanvas::color(MapPalette{dark}.background()));
    }
}

}  // namespace
}  // namespace veldan::gui
