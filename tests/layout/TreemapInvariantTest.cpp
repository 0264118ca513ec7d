// Properties every treemap must have, checked over many generated child lists: tiles
// stay inside their parent's rectangle, siblings never overlap, and areas follow bytes.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "layout/TreemapLayout.hpp"
#include "platform/Paths.hpp"
#include "tests/layout/LayoutNodes.hpp"

namespace veldan {
namespace {

double overlapArea(const MapRect& a, const MapRect& b) {
    const double w = std::min(a.maxX(), b.maxX()) - std::max(a.minX(), b.minX());
    const double h = std::min(a.maxY(), b.maxY()) - std::max(a.minY(), b.minY());
    return (w > 0 && h > 0) ? w * h : 0;
}

bool inside(const MapRect& inner, const MapRect& outer, double slack) {
    return inner.minX() >= outer.minX() - slack && inner.minY() >= outer.minY() - slack &&
           inner.maxX() <= outer.maxX() + slack && inner.maxY() <= outer.maxY() + slack;
}

// Byte lists of the shapes real folders have: a few giants and a tail, near-equal
// sizes, sizes spanning many orders of magnitude, and sizes near the 64-bit limit.
std::vector<int64_t> generatedSizes(std::mt19937_64& random, int shape) {
    const size_t count = std::uniform_int_distribution<size_t>(1, 40)(random);
    std::vector<int64_t> sizes;
    for (size_t i = 0; i < count; ++i) {
        switch (shape % 4) {
            case 0:
                sizes.push_back(std::uniform_int_distribution<int64_t>(1, 1000)(random));
                break;
            case 1:
                sizes.push_back(1000 + std::uniform_int_distribution<int64_t>(0, 2)(random));
                break;
            case 2: {
                const double exponent = std::uniform_real_distribution<double>(0, 14)(random);
                sizes.push_back(static_cast<int64_t>(std::pow(10.0, exponent)));
                break;
            }
            default:
                sizes.push_back(std::numeric_limits<int64_t>::max() / 64 -
                                std::uniform_int_distribution<int64_t>(0, 1 << 20)(random));
        }
    }
    if (shape % 8 < 4) std::sort(sizes.rbegin(), sizes.rend());  // the tree's usual order
    return sizes;
}

TEST(TreemapInvariants, FramesTileTheRectangleInProportionToBytes) {
    std::mt19937_64 random(20240611);
    for (int round = 0; round < 2000; ++round) {
        const auto sizes = generatedSizes(random, round);
        const auto folder = test::folderOfFiles("/m", sizes);
        std::vector<const DiskNode*> nodes;
        for (const auto& child : folder.children)
            nodes.push_back(&child);
        const MapRect rect{std::uniform_real_distribution<double>(0, 50)(random),
                           std::uniform_real_distribution<double>(0, 50)(random),
                           std::uniform_real_distribution<double>(1, 2000)(random),
                           std::uniform_real_distribution<double>(1, 2000)(random)};
        const auto frames = TreemapLayout::partition(nodes, rect);
        ASSERT_EQ(frames.size(), nodes.size());

        const double rectArea = rect.width * rect.height;
        const double slack = 1e-9 * std::max(rect.maxX(), rect.maxY());
        long double total = 0;
        for (auto size : sizes)
            total += size;
        double covered = 0;
        for (size_t i = 0; i < frames.size(); ++i) {
            SCOPED_TRACE("round " + std::to_string(round) + ", frame " + std::to_string(i));
            const auto& frame = frames[i];
            ASSERT_TRUE(std::isfinite(frame.x) && std::isfinite(frame.y) &&
                        std::isfinite(frame.width) && std::isfinite(frame.height));
            ASSERT_GE(frame.width, 0);
            ASSERT_GE(frame.height, 0);
            ASSERT_TRUE(inside(frame, rect, slack));
            const double area = frame.width * frame.height;
            const double expected = rectArea * static_cast<double>(sizes[i] / total);
            ASSERT_NEAR(area, expected, 1e-7 * rectArea);
            covered += area;
            for (size_t j = 0; j < i; ++j)
                ASSERT_LE(overlapArea(frame, frames[j]), 1e-9 * rectArea);
        }
        ASSERT_NEAR(covered, rectArea, 1e-9 * rectArea);
    }
}

// A generated tree three and four levels deep, with folders, files and summaries.
DiskNode generatedTree(std::mt19937_64& random, const std::string& path, int depth) {
    const size_t count = std::uniform_int_distribution<size_t>(0, depth > 0 ? 18 : 0)(random);
    std::vector<DiskNode> children;
    for (size_t i = 0; i < count; ++i) {
        const std::string childPath = path + "/" + std::to_string(i);
        if (std::bernoulli_distribution(0.5)(random)) {
            children.push_back(generatedTree(random, childPath, depth - 1));
        } else {
            const int64_t bytes = static_cast<int64_t>(
                std::pow(10.0, std::uniform_real_distribution<double>(0, 10)(random)));
            children.push_back(test::fileNode(childPath, bytes));
        }
    }
    std::stable_sort(children.begin(), children.end(),
                     [](const DiskNode& a, const DiskNode& b) { return a.bytes > b.bytes; });
    return test::folderNode(path, std::move(children));
}

TEST(TreemapInvariants, NestedTilesStayInsideTheirParentBelowItsTitleBand) {
    std::mt19937_64 random(7);
    for (int round = 0; round < 120; ++round) {
        const auto tree = generatedTree(random, "/r", 4);
        const double width = std::uniform_real_distribution<double>(50, 1600)(random);
        const double height = std::uniform_real_distribution<double>(50, 1200)(random);
        const auto tiles = TreemapLayout::tiles(tree, width, height);

        // Walk the tiles with the chain of open parents, as a view drawing them would.
        std::vector<const MapTile*> parents;
        for (const auto& tile : tiles) {
            SCOPED_TRACE("round " + std::to_string(round) + ", tile " + tile.id());
            ASSERT_GT(tile.node->bytes, 0);
            ASSERT_GE(tile.level, 0);
            ASSERT_LE(tile.level, TreemapLayout::deepestLevel);
            ASSERT_LE(static_cast<size_t>(tile.level), parents.size());
            parents.resize(static_cast<size_t>(tile.level));
            const MapRect bounds = parents.empty()
                                       ? MapRect{0, 0, width, height}
                                       : TreemapLayout::nestedRect(parents.back()->frame);
            if (!parents.empty()) {
                const auto& parent = *parents.back();
                ASSERT_TRUE(TreemapLayout::nestsInto(*parent.node, parent.frame, parent.level));
                ASSERT_EQ(platform::parentPath(tile.node->path), parent.node->path);
            }
            ASSERT_TRUE(inside(tile.frame, bounds, 1e-9 * std::max(width, height)));
            if (TreemapLayout::nestsInto(*tile.node, tile.frame, tile.level))
                parents.push_back(&tile);
        }
    }
}

}  // namespace
}  // namespace veldan
