// The orbit ring: sector fractions from the children's bytes, and the hit test that maps
// a pointer position to a sector.

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "layout/OrbitLayout.hpp"
#include "tests/layout/LayoutNodes.hpp"

namespace veldan {
namespace {

using test::folderOfFiles;

TEST(OrbitItems, ShareTheTurnByBytesInChildOrderFromTheTop) {
    const auto folder = folderOfFiles("/m", {1, 0, 3, -2, 4});
    const auto items = OrbitLayout::items(folder.children);
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[0].node, &folder.children[0]);
    EXPECT_EQ(items[1].node, &folder.children[2]);
    EXPECT_EQ(items[2].node, &folder.children[4]);
    EXPECT_EQ(items[0].start, 0.0);
    EXPECT_EQ(items[0].end, 0.125);
    EXPECT_EQ(items[1].start, 0.125);
    EXPECT_EQ(items[1].end, 0.5);
    EXPECT_EQ(items[2].start, 0.5);
    EXPECT_EQ(items[2].end, 1.0);
}

TEST(OrbitItems, OneChildTakesTheWholeTurnAndNoBytesGiveAnEmptyRing) {
    const auto one = folderOfFiles("/m", {42});
    const auto items = OrbitLayout::items(one.children);
    ASSERT_EQ(items.size(), 1u);
    EXPECT_EQ(items[0].start, 0.0);
    EXPECT_EQ(items[0].end, 1.0);
    const DiskNode empty = folderOfFiles("/m", {0, 0});
    EXPECT_TRUE(OrbitLayout::items(empty.children).empty());
}

TEST(OrbitItems, EndsNeverPassAFullTurnWhileStartsKeepTheirTrueShares) {
    std::mt19937_64 random(99);
    for (int round = 0; round < 500; ++round) {
        std::vector<int64_t> sizes(std::uniform_int_distribution<size_t>(1, 30)(random));
        for (auto& size : sizes)
            size = std::uniform_int_distribution<int64_t>(1, 1 << 30)(random);
        const auto folder = folderOfFiles("/m", sizes);
        const auto items = OrbitLayout::items(folder.children);
        double total = 0;
        for (auto size : sizes)
            total += static_cast<double>(size);
        double start = 0;
        for (size_t i = 0; i < items.size(); ++i) {
            ASSERT_EQ(items[i].start, start);
            start += static_cast<double>(sizes[i]) / total;
            ASSERT_EQ(items[i].end, std::min(start, 1.0));
            ASSERT_LE(items[i].end, 1.0);
        }
    }
}

// A view of side 216: centre 108, outer radius 100, inner radius 52.
class OrbitHitTest : public ::testing::Test {
protected:
    static constexpr double diameter = 216;
    static constexpr double c = 108;
    DiskNode folder = folderOfFiles("/m", {1, 3});  // [0, 0.25) and [0.25, 1]
    std::vector<OrbitItem> items = OrbitLayout::items(folder.children);

    const DiskNode* hit(double x, double y, double sweep = 1.0) const {
        const auto found = OrbitLayout::item(items, {x, y}, diameter, sweep);
        return found ? found->node : nullptr;
    }
};

TEST_F(OrbitHitTest, BothRadiiBelongToTheRing) {
    EXPECT_EQ(hit(c, c - 52), &folder.children[0]);
    EXPECT_EQ(hit(c, c - 100), &folder.children[0]);
    EXPECT_EQ(hit(c - 52, c), &folder.children[1]);
    EXPECT_EQ(hit(c - 100, c), &folder.children[1]);
}

TEST_F(OrbitHitTest, TheCentreDiscAndTheMarginHitNothing) {
    EXPECT_EQ(hit(c, c - 51.99), nullptr);
    EXPECT_EQ(hit(c - 51.99, c), nullptr);
    EXPECT_EQ(hit(c, c - 100.01), nullptr);
    EXPECT_EQ(hit(c, c), nullptr);
    EXPECT_EQ(hit(1, 1), nullptr);
}

TEST_F(OrbitHitTest, FractionsStartAtTheTopAndRunClockwise) {
    EXPECT_EQ(OrbitSector::fraction({c, c - 80}, {c, c}), 0.0);
    EXPECT_EQ(OrbitSector::fraction({c + 80, c}, {c, c}), 0.25);
    EXPECT_EQ(OrbitSector::fraction({c, c + 80}, {c, c}), 0.5);
    EXPECT_EQ(OrbitSector::fraction({c - 80, c}, {c, c}), 0.75);
    EXPECT_EQ(hit(c + 1, c - 80), &folder.children[0]);  // just right of the top
    EXPECT_EQ(hit(c - 1, c - 80), &folder.children[1]);  // just left of it, near a full turn
}

TEST_F(OrbitHitTest, APointOnABoundaryBelongsToTheLaterSector) {
    EXPECT_EQ(hit(c + 80, c), &folder.children[1]);
}

TEST_F(OrbitHitTest, PointsBeyondTheOpeningSweepHitNothing) {
    EXPECT_EQ(hit(c + 80, c, 0.2), nullptr);
    EXPECT_EQ(hit(c + 80, c, 0.25), &folder.children[1]);
    EXPECT_EQ(hit(c, c + 80, 0.49), nullptr);
    EXPECT_EQ(hit(c, c - 80, 0.0), &folder.children[0]);
}

TEST_F(OrbitHitTest, AnEmptyRingHitsNothingAnywhere) {
    const auto empty = folderOfFiles("/m", {0, 0, 0});
    const auto none = OrbitLayout::items(empty.children);
    for (double x = 0; x <= diameter; x += 4) {
        for (double y = 0; y <= diameter; y += 4) {
            ASSERT_FALSE(OrbitLayout::item(none, {x, y}, diameter).has_value());
        }
    }
}

TEST(OrbitSectorGeometry, AgreesWithTheHitTestEverywhereInTheView) {
    const auto folder = folderOfFiles("/m", {50, 30, 12, 5, 2, 1});
    const auto items = OrbitLayout::items(folder.children);
    const double diameter = 400;
    const MapRect ring = OrbitLayout::ringRect(diameter);
    EXPECT_EQ(OrbitSector::radius(ring), OrbitLayout::outerRadius(diameter));
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> coordinate(0, diameter);
    int hits = 0;
    for (int i = 0; i < 20000; ++i) {
        const MapPoint point{coordinate(random), coordinate(random)};
        const auto found = OrbitLayout::item(items, point, diameter);
        const OrbitItem* containing = nullptr;
        for (const auto& item : items) {
            if (OrbitLayout::sector(item).contains(point, ring)) containing = &item;
        }
        ASSERT_EQ(found ? found->node : nullptr, containing ? containing->node : nullptr);
        hits += found ? 1 : 0;
    }
    EXPECT_GT(hits, 5000);
}

TEST(OrbitSectorGeometry, OutlineRunsAlongTheOuterArcThenBackAlongTheInnerArc) {
    const MapRect rect{10, 10, 200, 200};  // centre (110, 110), radius 100
    const OrbitSector quarter{0, 0.25, 0.5, 1.0};
    const auto points = quarter.outline(rect, 8);  // two segments for a quarter turn
    ASSERT_EQ(points.size(), 6u);
    EXPECT_NEAR(points[0].x, 110, 1e-9);
    EXPECT_NEAR(points[0].y, 10, 1e-9);
    EXPECT_NEAR(points[1].x, 110 + 100 * std::sqrt(0.5), 1e-9);
    EXPECT_NEAR(points[1].y, 110 - 100 * std::sqrt(0.5), 1e-9);
    EXPECT_NEAR(points[2].x, 210, 1e-9);
    EXPECT_NEAR(points[2].y, 110, 1e-9);
    EXPECT_NEAR(points[3].x, 160, 1e-9);  // inwards at the end
    EXPECT_NEAR(points[3].y, 110, 1e-9);
    EXPECT_NEAR(points[5].x, 110, 1e-9);  // back at the start on the inner arc
    EXPECT_NEAR(points[5].y, 60, 1e-9);
}

}  // namespace
}  // namespace veldan
