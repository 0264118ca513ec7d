// The treemap's exact frames for the cases whose arithmetic is known by hand.

#include <gtest/gtest.h>

#include <cmath>

#include "layout/TreemapLayout.hpp"
#include "tests/layout/LayoutNodes.hpp"

namespace veldan {
namespace {

using test::fileNode;
using test::folderNode;
using test::folderOfFiles;

using Row = std::vector<TreemapRowItem>;

void expectFrame(const MapRect& frame, const MapRect& expected) {
    EXPECT_EQ(frame, expected) << "got (" << frame.x << ", " << frame.y << ", " << frame.width
                               << ", " << frame.height << ")";
}
void expectFrame(const MapRect& frame, double x, double y, double width, double height) {
    expectFrame(frame, MapRect{x, y, width, height});
}

std::vector<MapTile> layOut(const DiskNode& folder, MapRect rect) {
    std::vector<MapTile> tiles;
    TreemapLayout::addChildren(folder.children, rect, 0, tiles);
    return tiles;
}

TEST(TreemapFrames, ExactFramesForHandComputedCases) {
    struct Case {
        std::vector<int64_t> sizes;
        MapRect rect;
        std::vector<std::pair<int, MapRect>> tiles;  // the child's index and its frame
    };
    const Case cases[] = {
        // Two equal children in a wide rectangle split into two squares.
        {{500, 500}, {0, 0, 200, 100}, {{0, {0, 0, 100, 100}}, {1, {100, 0, 100, 100}}}},
        // A single child fills the whole rectangle.
        {{12345}, {3.5, 4.25, 321.75, 123.125}, {{0, {3.5, 4.25, 321.75, 123.125}}}},
        // A square is laid out as a wide rectangle. Areas 7500 and 2500 along side 100:
        // the first alone has aspect 4/3, both 4, so the first is placed alone as a
        // 75-point column, not as a strip at the top.
        {{3, 1}, {0, 0, 100, 100}, {{0, {0, 0, 75, 100}}, {1, {75, 0, 25, 100}}}},
        // A tall rectangle gets a strip along the top.
        {{3, 1}, {0, 0, 100, 200}, {{0, {0, 0, 100, 150}}, {1, {0, 150, 100, 50}}}},
        // Children keep their given order: the smaller stays first. Its row alone has
        // aspect 4 and with the second child 4 too: a tie keeps growing the row, so both
        // share one column.
        {{1, 3}, {0, 0, 100, 100}, {{0, {0, 0, 100, 25}}, {1, {0, 25, 100, 75}}}},
        // Children without bytes are left out.
        {{0, 500, -1, 500}, {0, 0, 200, 100}, {{1, {0, 0, 100, 100}}, {3, {100, 0, 100, 100}}}},
        {{0, 0, -5}, {0, 0, 400, 300}, {}},
        // Slots of six points or less draw nothing.
        {{10, 20, 30}, {0, 0, 6, 500}, {}},
        {{10, 20, 30}, {0, 0, 500, 6}, {}},
    };
    for (size_t n = 0; n < std::size(cases); ++n) {
        SCOPED_TRACE("case " + std::to_string(n));
        const auto folder = folderOfFiles("/m", cases[n].sizes);
        const auto tiles = layOut(folder, cases[n].rect);
        ASSERT_EQ(tiles.size(), cases[n].tiles.size());
        for (size_t i = 0; i < tiles.size(); ++i) {
            const auto& [child, frame] = cases[n].tiles[i];
            EXPECT_EQ(tiles[i].node, &folder.children[child]);
            expectFrame(tiles[i].frame, frame);
        }
    }
    EXPECT_EQ(layOut(folderOfFiles("/m", {10, 20, 30}), {0, 0, 7, 7}).size(), 3u);
}

TEST(TreemapNesting, OnlyFoldersOverNinetyPointsEitherWayNestBelowTheTitleBand) {
    // One folder holding one subfolder holding one file: every level fills its slot.
    const auto chain = folderNode("/m", {folderNode("/m/a", {fileNode("/m/a/b", 100)})});
    const auto tiles = layOut(chain, {10, 20, 91, 91});
    ASSERT_EQ(tiles.size(), 2u);
    expectFrame(tiles[0].frame, 10, 20, 91, 91);
    EXPECT_EQ(tiles[0].level, 0);
    expectFrame(tiles[1].frame, 17, 53, 77, 51);
    EXPECT_EQ(tiles[1].level, 1);
    EXPECT_EQ(tiles[1].node->path, "/m/a/b");

    EXPECT_EQ(layOut(chain, {0, 0, 90, 200}).size(), 1u);
    EXPECT_EQ(layOut(chain, {0, 0, 200, 90}).size(), 1u);
    EXPECT_EQ(layOut(chain, {0, 0, 7, 7}).size(), 1u);
    EXPECT_EQ(layOut(folderOfFiles("/m", {100}), {0, 0, 500, 500}).size(), 1u);  // a file
}

TEST(TreemapNesting, NestingStopsAfterLevelTwoHoweverLargeTheTile) {
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

TEST(TreemapPlace, TheLastItemTakesExactlyWhatIsLeftAndNothingBecomesNotANumber) {
    struct Case {
        Row row;
        MapRect rect;
        std::vector<MapRect> frames;
        MapRect rest;
    };
    const double third = 8.0 / 3;
    const Case cases[] = {
        // A column. The areas claim more than the rectangle holds: the column is clamped
        // to the width and the last item gets the remaining height, not its own share.
        {{{0, 30}, {1, 30}}, {0, 0, 10, 4}, {{0, 0, 10, 3}, {0, 3, 10, 1}}, {10, 0, 0, 4}},
        // A strip.
        {{{2, 4}, {0, 2}},
         {1, 2, 4, 10},
         {{1 + third, 2, 5 - (1 + third), 1.5}, {0, 0, 0, 0}, {1, 2, third, 1.5}},
         {1, 3.5, 4, 8.5}},
        // A row without area, an empty rectangle, an empty row.
        {{{0, 0}, {1, 0}}, {0, 0, 10, 5}, {{0, 0, 0, 0}, {0, 0, 0, 5}}, {0, 0, 10, 5}},
        {{{0, 5}}, {0, 0, 10, 0}, {{0, 0, 0, 0}}, {0, 0, 10, 0}},
        {{}, {0, 0, 10, 0}, {{0, 0, 0, 0}}, {0, 0, 10, 0}},
    };
    for (size_t n = 0; n < std::size(cases); ++n) {
        SCOPED_TRACE("case " + std::to_string(n));
        std::vector<MapRect> frames(cases[n].frames.size());
        MapRect rect = cases[n].rect;
        TreemapLayout::place(cases[n].row, rect, frames);
        for (size_t i = 0; i < frames.size(); ++i)
            expectFrame(frames[i], cases[n].frames[i]);
        expectFrame(rect, cases[n].rest);
    }
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

}  // namespace
}  // namespace veldan
