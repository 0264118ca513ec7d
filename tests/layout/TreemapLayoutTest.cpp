// The treemap's exact frames for the cases whose arithmetic is known by hand.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "layout/TreemapLayout.hpp"
#include "tests/layout/LayoutNodes.hpp"

namespace veldan {
namespace {

using test::fileNode;
using test::folderNode;
using test::folderOfFiles;

constexpr double infinity = std::numeric_limits<double>::infinity();

void expectFrame(const MapRect& frame, double x, double y, double width, double height) {
    EXPECT_EQ(frame, (MapRect{x, y, width, height}))
        << "got (" << frame.x << ", " << frame.y << ", " << frame.width << ", " << frame.height
        << ")";
}

std::vector<MapTile> layOut(const DiskNode& folder, MapRect rect) {
    std::vector<MapTile> tiles;
    TreemapLayout::addChildren(folder.children, rect, 0, tiles);
    return tiles;
}

TEST(TreemapFrames, TwoEqualChildrenInAWideRectangleSplitIntoTwoSquares) {
    const auto folder = folderOfFiles("/m", {500, 500});
    const auto tiles = TreemapLayout::tiles(folder, 200, 100);
    ASSERT_EQ(tiles.size(), 2u);
    expectFrame(tiles[0].frame, 0, 0, 100, 100);
    expectFrame(tiles[1].frame, 100, 0, 100, 100);
    EXPECT_EQ(tiles[0].node, &folder.children[0]);
    EXPECT_EQ(tiles[1].node, &folder.children[1]);
}

TEST(TreemapFrames, ASingleChildFillsTheWholeRectangle) {
    const auto folder = folderOfFiles("/m", {12345});
    const auto tiles = layOut(folder, {3.5, 4.25, 321.75, 123.125});
    ASSERT_EQ(tiles.size(), 1u);
    expectFrame(tiles[0].frame, 3.5, 4.25, 321.75, 123.125);
}

TEST(TreemapFrames, ASquareIsLaidOutAsAWideRectangleWithAColumnAtTheLeft) {
    // Areas 7500 and 2500 along side 100: the first alone has aspect 4/3, both 4, so the
    // first is placed alone as a 75-point column, not as a 75-point strip at the top.
    const auto folder = folderOfFiles("/m", {3, 1});
    const auto tiles = TreemapLayout::tiles(folder, 100, 100);
    ASSERT_EQ(tiles.size(), 2u);
    expectFrame(tiles[0].frame, 0, 0, 75, 100);
    expectFrame(tiles[1].frame, 75, 0, 25, 100);
}

TEST(TreemapFrames, ATallRectangleGetsAStripAlongTheTop) {
    const auto folder = folderOfFiles("/m", {3, 1});
    const auto tiles = TreemapLayout::tiles(folder, 100, 200);
    ASSERT_EQ(tiles.size(), 2u);
    expectFrame(tiles[0].frame, 0, 0, 100, 150);
    expectFrame(tiles[1].frame, 0, 150, 100, 50);
}

TEST(TreemapFrames, ChildrenAreLaidOutInTheirGivenOrderNeverSorted) {
    // The smaller child comes first and stays first. Its row alone has aspect 4 and with
    // the second child 4 too: a tie keeps growing the row, so both share one column.
    const auto folder = folderOfFiles("/m", {1, 3});
    const auto tiles = TreemapLayout::tiles(folder, 100, 100);
    ASSERT_EQ(tiles.size(), 2u);
    EXPECT_EQ(tiles[0].node->path, "/m/f0");
    expectFrame(tiles[0].frame, 0, 0, 100, 25);
    expectFrame(tiles[1].frame, 0, 25, 100, 75);
}

TEST(TreemapFrames, ChildrenWithoutBytesAreLeftOut) {
    const auto empty = folderOfFiles("/m", {0, 0, -5});
    EXPECT_TRUE(TreemapLayout::tiles(empty, 400, 300).empty());

    const auto mixed = folderOfFiles("/m", {0, 500, -1, 500});
    const auto tiles = TreemapLayout::tiles(mixed, 200, 100);
    ASSERT_EQ(tiles.size(), 2u);
    EXPECT_EQ(tiles[0].node->path, "/m/f1");
    EXPECT_EQ(tiles[1].node->path, "/m/f3");
    expectFrame(tiles[1].frame, 100, 0, 100, 100);
}

TEST(TreemapFrames, SlotsOfSixPointsOrLessDrawNothing) {
    const auto folder = folderOfFiles("/m", {10, 20, 30});
    EXPECT_TRUE(layOut(folder, {0, 0, 6, 500}).empty());
    EXPECT_TRUE(layOut(folder, {0, 0, 500, 6}).empty());
    EXPECT_EQ(layOut(folder, {0, 0, 7, 7}).size(), 3u);
}

class TreemapNesting : public ::testing::Test {
protected:
    // One folder holding one subfolder holding one file: every level fills its slot.
    DiskNode chain = folderNode("/m", {folderNode("/m/a", {fileNode("/m/a/b", 100)})});
};

TEST_F(TreemapNesting, A91PointSquareNestsInsideItsInsetBelowTheTitleBand) {
    const auto tiles = layOut(chain, {10, 20, 91, 91});
    ASSERT_EQ(tiles.size(), 2u);
    expectFrame(tiles[0].frame, 10, 20, 91, 91);
    EXPECT_EQ(tiles[0].level, 0);
    expectFrame(tiles[1].frame, 17, 53, 77, 51);
    EXPECT_EQ(tiles[1].level, 1);
    EXPECT_EQ(tiles[1].node->path, "/m/a/b");
}

TEST_F(TreemapNesting, TilesOfNinetyPointsInEitherDirectionAreNotNestedInto) {
    EXPECT_EQ(layOut(chain, {0, 0, 90, 200}).size(), 1u);
    EXPECT_EQ(layOut(chain, {0, 0, 200, 90}).size(), 1u);
    EXPECT_EQ(layOut(chain, {0, 0, 7, 7}).size(), 1u);
}

TEST_F(TreemapNesting, AFileIsNeverNestedInto) {
    const auto file = folderOfFiles("/m", {100});
    EXPECT_EQ(layOut(file, {0, 0, 500, 500}).size(), 1u);
}

TEST_F(TreemapNesting, NestingStopsAfterLevelTwoHoweverLargeTheTile) {
    const auto deep = folderNode(
        "/m",
        {folderNode("/m/a", {folderNode("/m/a/b",
                                        {folderNode("/m/a/b/c", {fileNode("/m/a/b/c/d", 9)})})})});
    const auto tiles = TreemapLayout::tiles(deep, 1000, 1000);
    ASSERT_EQ(tiles.size(), 3u);
    expectFrame(tiles[0].frame, 0, 0, 1000, 1000);
    expectFrame(tiles[1].frame, 7, 33, 986, 960);
    expectFrame(tiles[2].frame, 14, 66, 972, 920);
    EXPECT_EQ(tiles[2].level, 2);
    EXPECT_FALSE(TreemapLayout::nestsInto(*tiles[2].node, tiles[2].frame, 2));
}

TEST_F(TreemapNesting, ATitleBandTallerThanTheInsetLeavesNoRoomForNestedTiles) {
    // 100 - 14 = 86 points inside, less the 26-point band: 60 points remain.
    expectFrame(TreemapLayout::nestedRect({0, 0, 100, 100}), 7, 33, 86, 60);
    expectFrame(TreemapLayout::nestedRect({0, 0, 100, 30}), 7, 33, 86, 0);
}

TEST_F(TreemapNesting, EachParentTileComesBeforeItsOwnNestedTiles) {
    const auto folder =
        folderNode("/m", {folderNode("/m/a", {fileNode("/m/a/1", 60), fileNode("/m/a/2", 40)}),
                          folderNode("/m/b", {fileNode("/m/b/1", 50), fileNode("/m/b/2", 50)})});
    const auto tiles = TreemapLayout::tiles(folder, 400, 200);
    std::vector<std::string> order;
    for (const auto& tile : tiles)
        order.push_back(tile.node->path);
    EXPECT_EQ(order,
              (std::vector<std::string>{"/m/a", "/m/a/1", "/m/a/2", "/m/b", "/m/b/1", "/m/b/2"}));
}

TEST(TreemapTileIdentity, ASummaryTileNeverSharesAnIdWithARealItem) {
    const DiskNode summary = DiskNode::summary("/m", 10, {});
    DiskNode real = fileNode(summary.path, 10);
    EXPECT_EQ((MapTile{&summary, {}, 0}).id(), "/m/__other#summary");
    EXPECT_EQ((MapTile{&real, {}, 0}).id(), "/m/__other");
}

TEST(TreemapWorstAspect, IsTheLargerOfBothRatiosOfTheRow) {
    const std::vector<TreemapRowItem> one{{0, 10000}};
    const std::vector<TreemapRowItem> two{{0, 10000}, {1, 10000}};
    EXPECT_EQ(TreemapLayout::worstAspect(one, 100), 1.0);
    EXPECT_EQ(TreemapLayout::worstAspect(two, 100), 4.0);
}

TEST(TreemapWorstAspect, IsInfiniteWhenItCannotBeComputed) {
    const std::vector<TreemapRowItem> withZero{{0, 10}, {1, 0}};
    const std::vector<TreemapRowItem> row{{0, 10}};
    EXPECT_EQ(TreemapLayout::worstAspect({}, 100), infinity);
    EXPECT_EQ(TreemapLayout::worstAspect(withZero, 100), infinity);
    EXPECT_EQ(TreemapLayout::worstAspect(row, 0), infinity);
}

TEST(TreemapPlace, TheLastItemOfAColumnTakesExactlyWhatIsLeft) {
    // The areas claim more than the rectangle holds: the column is clamped to the width
    // and the last item gets the remaining height, not its own area's share.
    std::vector<MapRect> frames(2);
    MapRect rect{0, 0, 10, 4};
    const std::vector<TreemapRowItem> row{{0, 30}, {1, 30}};
    TreemapLayout::place(row, rect, frames);
    expectFrame(frames[0], 0, 0, 10, 3);
    expectFrame(frames[1], 0, 3, 10, 1);
    expectFrame(rect, 10, 0, 0, 4);
}

TEST(TreemapPlace, TheLastItemOfAStripTakesExactlyWhatIsLeft) {
    std::vector<MapRect> frames(3);
    MapRect rect{1, 2, 4, 10};
    const std::vector<TreemapRowItem> row{{2, 4}, {0, 2}};
    TreemapLayout::place(row, rect, frames);
    expectFrame(frames[2], 1, 2, 8.0 / 3, 1.5);
    expectFrame(frames[0], 1 + 8.0 / 3, 2, 5 - (1 + 8.0 / 3), 1.5);
    expectFrame(frames[1], 0, 0, 0, 0);
    expectFrame(rect, 1, 3.5, 4, 8.5);
}

TEST(TreemapPlace, ARowWithoutAreaGetsEmptyFramesInsteadOfNotANumber) {
    std::vector<MapRect> frames(2);
    MapRect rect{0, 0, 10, 5};
    const std::vector<TreemapRowItem> row{{0, 0}, {1, 0}};
    TreemapLayout::place(row, rect, frames);
    expectFrame(frames[0], 0, 0, 0, 0);
    expectFrame(frames[1], 0, 0, 0, 5);
    expectFrame(rect, 0, 0, 10, 5);
}

TEST(TreemapPlace, AnEmptyRowOrRectangleChangesNothing) {
    std::vector<MapRect> frames(1);
    MapRect rect{0, 0, 10, 0};
    const std::vector<TreemapRowItem> row{{0, 5}};
    TreemapLayout::place(row, rect, frames);
    TreemapLayout::place({}, rect, frames);
    expectFrame(frames[0], 0, 0, 0, 0);
    expectFrame(rect, 0, 0, 10, 0);
}

TEST(TreemapPartition, RowsEndExactlyAtTheFarEdgeWhenTheAreasDoNotAddUp) {
    // Three thirds of 0.4 x 0.3: the first two share a column, and their areas divided
    // by its width add up to 0.29999999999999993, short of the edge. The second still
    // ends exactly at 0.3, and the third fills the rest of the width.
    const auto folder = folderOfFiles("/m", {1, 1, 1});
    const std::vector<const DiskNode*> nodes{&folder.children[0], &folder.children[1],
                                             &folder.children[2]};
    const MapRect rect{0, 0, 0.4, 0.3};
    const auto frames = TreemapLayout::partition(nodes, rect);
    ASSERT_EQ(frames.size(), 3u);
    const double columnWidth = frames[0].width;
    const double area = rect.width * rect.height * (1.0 / 3);
    ASSERT_NE(area / columnWidth + area / columnWidth, rect.maxY());
    EXPECT_EQ(frames[1].x, 0.0);
    EXPECT_EQ(frames[1].y + frames[1].height, rect.maxY());
    EXPECT_EQ(frames[2].x + frames[2].width, rect.maxX());
}

TEST(TreemapPartition, NodesWithoutBytesGetZeroFrames) {
    const auto folder = folderOfFiles("/m", {0, 0});
    const std::vector<const DiskNode*> nodes{&folder.children[0], &folder.children[1]};
    const auto frames = TreemapLayout::partition(nodes, {0, 0, 50, 50});
    EXPECT_EQ(frames, (std::vector<MapRect>(2)));
    EXPECT_TRUE(TreemapLayout::partition(nodes, {0, 0, 0, 50}).empty());
    EXPECT_TRUE(TreemapLayout::partition({}, {0, 0, 50, 50}).empty());
}

}  // namespace
}  // namespace veldan
