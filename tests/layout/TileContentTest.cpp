// What a tile shows follows from its node and frame alone.

#include <gtest/gtest.h>

#include "layout/TileContent.hpp"
#include "tests/layout/LayoutNodes.hpp"

namespace veldan {
namespace {

MapTile tileOf(const DiskNode& node, double width, int level = 0) {
    return MapTile{&node, MapRect{0, 0, width, 100}, level};
}

TEST(TileContent, TheCategoryIconShowsOnlyOnTopLevelTilesWiderThan120) {
    auto node = test::fileNode("/m/node_modules", 10);
    node.category = DiskCategory::build;
    EXPECT_EQ(TileContent::of(tileOf(node, 121), true).iconName, "hammer.fill");
    EXPECT_EQ(TileContent::of(tileOf(node, 120), true).iconName, "");
    EXPECT_EQ(TileContent::of(tileOf(node, 500, 1), true).iconName, "");
}

TEST(TileContent, HelpTextsFollowTheKindOfTileAndTheScanState) {
    const DiskNode summary = DiskNode::summary("/m", 5000, {"/m/big"});
    EXPECT_EQ(TileContent::of(tileOf(summary, 50, 1), true).title, "Other");
    EXPECT_EQ(TileContent::of(tileOf(summary, 50, 1), true).helpText,
              "Smaller items in this folder, grouped to keep the map readable. Explore them here "
              "or open the parent folder in Finder.");
    EXPECT_EQ(TileContent::of(tileOf(summary, 50), false).helpText,
              "Smaller items in this folder, grouped to keep the map readable. Finish the scan "
              "to explore them here.");
    const auto folder = test::folderNode("/m/a", {test::fileNode("/m/a/x", 3)});
    const auto file = test::fileNode("/m/b", 3);
    EXPECT_EQ(TileContent::of(tileOf(folder, 50), true).helpText,
              "Opens this folder in the map. Use the context menu to inspect details.");
    EXPECT_EQ(TileContent::of(tileOf(file, 50), true).helpText, "");
    EXPECT_EQ(TileContent::of(tileOf(file, 50), true).shortLabel, "");
    EXPECT_EQ(TileContent::of(tileOf(folder, 50), true).shortLabel, "");

    // A folder measured as one block says so; one with its children mapped never does.
    const auto block = test::folderNode("/m/node_modules", {});
    const auto dependencies = OpaqueFolderPolicy::Kind::dependencies;
    EXPECT_EQ(TileContent::of(tileOf(block, 50), true, dependencies).shortLabel,
              "Dependencies, measured together");
    EXPECT_EQ(TileContent::of(tileOf(folder, 50), true, dependencies).shortLabel, "");
}

}  // namespace
}  // namespace veldan
