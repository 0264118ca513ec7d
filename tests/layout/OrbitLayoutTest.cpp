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
    const size_t children[] = {0, 2, 4};
    const double bounds[] = {0.0, 0.125, 0.5, 1.0};
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(items[i].node, &folder.children[children[i]]);
        EXPECT_EQ(items[i].start, bounds[i]);
        EXPECT_EQ(items[i].end, bounds[i + 1]);
    }
    const auto empty = folderOfFiles("/m", {0, 0});
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

TEST(OrbitHitTest, FindsTheSectorUnderThePointer) {
    // A view of side 216: centre 108, outer radius 100, inner radius 52; the sectors
    // are [0, 0.25) and [0.25, 1].
    constexpr double diameter = 216;
    constexpr double c = 108;
    const auto folder = folderOfFiles("/m", {1, 3});
    const auto items = OrbitLayout::items(folder.children);
    struct Case {
        double x, y, sweep;
        int child;  // -1: nothing
    };
    const Case cases[] = {
        {c, c - 52, 1, 0},      {c, c - 100, 1, 0},     // both radii belong to the ring
        {c - 52, c, 1, 1},      {c - 100, c, 1, 1},     //
        {c, c - 51.99, 1, -1},  {c - 51.99, c, 1, -1},  // the centre disc
        {c, c - 100.01, 1, -1}, {c, c, 1, -1},          //
        {1, 1, 1, -1},                                  // the margin
        {c + 1, c - 80, 1, 0},  {c - 1, c - 80, 1, 1},  // either side of the top
        {c + 80, c, 1, 1},                              // a boundary: the later sector
        {c + 80, c, 0.2, -1},   {c + 80, c, 0.25, 1},   // beyond the opening sweep
        {c, c + 80, 0.49, -1},  {c, c - 80, 0.0, 0},    //
    };
    for (const auto& [x, y, sweep, child] : cases) {
        const auto found = OrbitLayout::item(items, {x, y}, diameter, sweep);
        EXPECT_EQ(found ? found->node : nullptr, child < 0 ? nullptr : &folder.children[child])
            << x << ", " << y << " sweep " << sweep;
    }
    EXPECT_EQ(OrbitSector::fraction({c, c - 80}, {c, c}), 0.0);
    EXPECT_EQ(OrbitSector::fraction({c + 80, c}, {c, c}), 0.25);
    EXPECT_EQ(OrbitSector::fraction({c, c + 80}, {c, c}), 0.5);
    EXPECT_EQ(OrbitSector::fraction({c - 80, c}, {c, c}), 0.75);

    const auto zeros = folderOfFiles("/m", {0, 0, 0});
    const auto none = OrbitLayout::items(zeros.children);
    for (double x = 0; x <= diameter; x += 4) {
        for (double y = 0; y <= diameter; y += 4)
            ASSERT_FALSE(OrbitLayout::item(none, {x, y}, diameter).has_value());
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

}  // namespace
}  // namespace veldan
