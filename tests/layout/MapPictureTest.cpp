// The drawn pictures: every label stays inside its tile, sector or disc, summaries are
// marked, and the palette keeps text readable in both variants.

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <set>

#include "app/LabelFit.hpp"
#include "app/MapPalette.hpp"
#include "app/OrbitPicture.hpp"
#include "app/TreemapPicture.hpp"
#include "layout/OrbitLayout.hpp"
#include "layout/TreemapLayout.hpp"
#include "tests/layout/LayoutNodes.hpp"
#include "tests/layout/SvgElements.hpp"

namespace veldan {
namespace {

constexpr double ascent = LabelFit::ascent;
constexpr double descent = LabelFit::descent;
constexpr double rounding = 0.01;  // numbers are written with two decimals

struct Box {
    double left, top, right, bottom;
};

// The box a <text> covers before any rotation, from its anchor, baseline and measure.
Box textBox(const test::SvgElement& text) {
    const double size = text.number("font-size");
    const double width = LabelFit::width(text.text, size, text.value("font-weight") == "bold");
    const double x = text.number("x");
    const double y = text.number("y");
    const std::string anchor = text.value("text-anchor");
    const double left = anchor == "end" ? x - width : anchor == "middle" ? x - width / 2 : x;
    return {left, y - ascent * size, left + width, y + descent * size};
}

std::vector<std::string> textsOf(const std::string& svg) {
    std::vector<std::string> texts;
    for (const auto& element : test::svgElements(svg)) {
        if (element.name == "text") texts.push_back(element.text);
    }
    return texts;
}

// Names of the kinds real trees have: long, hostile, wide characters, invalid UTF-8.
std::string generatedName(std::mt19937_64& random, int index) {
    static const std::vector<std::string> names = {"node_modules",
                                                   "Library",
                                                   "a",
                                                   "Screen Recording 2024-05-01 at 10.11.12.mov",
                                                   "quote'\"<&>",
                                                   "bad\xff\xfe",
                                                   "日本語のフォルダ",
                                                   "emoji 😀🎉",
                                                   std::string(300, 'W'),
                                                   "new\nline",
                                                   "WWWWWWWWWWWWWWWW",
                                                   "iiiiiiiiiiiiiiiiiiiiiiiiiiii"};
    return names[std::uniform_int_distribution<size_t>(0, names.size() - 1)(random)] + " " +
           std::to_string(index);
}

DiskNode generatedTree(std::mt19937_64& random, const std::string& path, int depth) {
    const size_t count = std::uniform_int_distribution<size_t>(depth > 0 ? 1 : 0, 18)(random);
    std::vector<DiskNode> children;
    for (size_t i = 0; i < count; ++i) {
        const std::string childPath = path + "/" + generatedName(random, static_cast<int>(i));
        const int64_t bytes = static_cast<int64_t>(
            std::pow(10.0, std::uniform_real_distribution<double>(3, 12)(random)));
        if (i == 0 && count > 8) {
            children.push_back(DiskNode::summary(path, bytes, {}));
        } else if (depth > 0 && std::bernoulli_distribution(0.5)(random)) {
            children.push_back(generatedTree(random, childPath, depth - 1));
        } else {
            children.push_back(test::fileNode(childPath, bytes));
        }
        children.back().category = allDiskCategories[i % 7];
    }
    std::stable_sort(children.begin(), children.end(),
                     [](const DiskNode& a, const DiskNode& b) { return a.bytes > b.bytes; });
    return test::folderNode(path, std::move(children));
}

TEST(TreemapPicture, EveryLabelStaysInsideItsTile) {
    std::mt19937_64 random(31);
    const std::pair<double, double> sizes[] = {{1200, 800}, {360, 240}, {3000, 300},
                                               {95, 95},    {50, 700},  {800, 800}};
    int labels = 0;
    for (int round = 0; round < 24; ++round) {
        const auto tree = generatedTree(random, "/r", 3);
        const auto [width, height] = sizes[round % std::size(sizes)];
        MapPictureStyle style;
        style.dark = round % 2 == 1;
        const auto tiles = TreemapLayout::tiles(tree, width, height);
        const auto elements = test::svgElements(TreemapPicture::svg(tiles, width, height, style));

        // Each tile's labels follow its own rectangle (the shade of a container is black).
        const test::SvgElement* tile = nullptr;
        for (const auto& element : elements) {
            if (element.name == "rect" && element.value("fill") != "#000000") tile = &element;
            if (element.name != "text") continue;
            ASSERT_NE(tile, nullptr);
            const Box box = textBox(element);
            SCOPED_TRACE("round " + std::to_string(round) + ": \"" + element.text + "\"");
            EXPECT_GE(box.left, tile->number("x") - rounding);
            EXPECT_GE(box.top, tile->number("y") - rounding);
            EXPECT_LE(box.right, tile->number("x") + tile->number("width") + rounding);
            EXPECT_LE(box.bottom, tile->number("y") + tile->number("height") + rounding);
            ++labels;
        }
    }
    EXPECT_GT(labels, 200);
}

TEST(TreemapPicture, ATileTooNarrowForANameShowsNoLabelRatherThanACutOne) {
    const auto folder = test::folderOfFiles("/r", {980, 20});
    const auto tiles = TreemapLayout::tiles(folder, 300, 100);
    ASSERT_LT(tiles[1].frame.width, 20);
    EXPECT_EQ(textsOf(TreemapPicture::svg(tiles, 300, 100, {})),
              (std::vector<std::string>{"f0", "980 B"}));
}

TEST(TreemapPicture, SummaryTilesAreHatchedAndExplainThemselves) {
    auto folder = test::folderNode("/r", {test::fileNode("/r/big", 600)});
    folder.children.push_back(DiskNode::summary("/r", 400, {"/r/big"}));
    folder.bytes = 1000;
    const auto tiles = TreemapLayout::tiles(folder, 600, 400);
    const std::string svg = TreemapPicture::svg(tiles, 600, 400, {});
    EXPECT_NE(svg.find("Smaller items · Explore to see them"), std::string::npos);
    int hatched = 0;
    for (const auto& element : test::svgElements(svg)) {
        if (element.name == "path" && element.value("stroke-opacity") != "") ++hatched;
    }
    EXPECT_EQ(hatched, 1);

    folder.children.pop_back();
    const std::string plain =
        TreemapPicture::svg(TreemapLayout::tiles(folder, 600, 400), 600, 400, {});
    EXPECT_EQ(plain.find("stroke-opacity"), std::string::npos);
}

TEST(TreemapPicture, ParentTilesCarryATitleBandWithNameAndSize) {
    const auto folder = test::folderNode(
        "/r", {test::folderNode("/r/Projects", {test::fileNode("/r/Projects/a", 3'000'000),
                                                test::fileNode("/r/Projects/b", 1'000'000)})});
    const auto tiles = TreemapLayout::tiles(folder, 400, 300);
    const auto elements = test::svgElements(TreemapPicture::svg(tiles, 400, 300, {}));
    std::vector<std::pair<std::string, double>> texts;
    for (const auto& element : elements) {
        if (element.name == "text") texts.emplace_back(element.text, element.number("y"));
    }
    ASSERT_GE(texts.size(), 4u);
    EXPECT_EQ(texts[0].first, "Projects");
    EXPECT_EQ(texts[1].first, "4 MB");
    EXPECT_EQ(texts[0].second, texts[1].second);  // one band, one baseline
    EXPECT_LT(texts[0].second, TreemapLayout::nestingInset + TreemapLayout::titleBand + 1);
    EXPECT_EQ(texts[2].first, "a");  // nested tiles are drawn after their parent
}

TEST(OrbitPicture, SectorLabelsStayInsideTheirSectorAndTheCentreInsideTheDisc) {
    std::mt19937_64 random(8);
    int sectorLabels = 0;
    for (int round = 0; round < 16; ++round) {
        const auto tree = generatedTree(random, "/r", 1);
        const double diameter = round % 2 ? 800 : 300;
        const auto items = OrbitLayout::items(tree.children);
        MapPictureStyle style;
        style.dark = round % 3 == 0;
        const auto elements =
            test::svgElements(OrbitPicture::svg(tree, items, diameter + 400, diameter, style));
        const double c = diameter / 2;
        // Where on the ring a point of a label lies, as the hit test sees it.
        const auto sectorAt = [&](MapPoint p) {
            const auto item = OrbitLayout::item(items, p, diameter);
            return item ? item->node : nullptr;
        };
        const double disc = OrbitLayout::innerRatio * OrbitLayout::outerRadius(diameter);
        for (const auto& element : elements) {
            if (element.name != "text") continue;
            SCOPED_TRACE("round " + std::to_string(round) + ": \"" + element.text + "\"");
            const Box box = textBox(element);
            double degrees = 0;
            MapPoint pivot{element.number("x"), element.number("y")};
            const std::string transform = element.value("transform");
            if (!transform.empty()) {
                ASSERT_EQ(std::sscanf(transform.c_str(), "rotate(%lf %lf %lf)", &degrees, &pivot.x,
                                      &pivot.y),
                          3);
            }
            const double turn = degrees * std::numbers::pi / 180;
            const auto corner = [&](double x, double y) {
                const double dx = x - pivot.x;
                const double dy = y - pivot.y;
                return MapPoint{pivot.x + dx * std::cos(turn) - dy * std::sin(turn),
                                pivot.y + dx * std::sin(turn) + dy * std::cos(turn)};
            };
            const MapPoint corners[] = {corner(box.left, box.top), corner(box.right, box.top),
                                        corner(box.left, box.bottom),
                                        corner(box.right, box.bottom)};
            if (element.number("x") > diameter) {  // the list beside the ring
                EXPECT_LE(box.right, diameter + 400 + rounding);
                continue;
            }
            const MapPoint middle = corner((box.left + box.right) / 2, (box.top + box.bottom) / 2);
            const DiskNode* sector = sectorAt(middle);
            for (const auto& point : corners) {
                if (sector == nullptr) {
                    EXPECT_LE(std::hypot(point.x - c, point.y - c), disc);
                } else {
                    EXPECT_EQ(sectorAt(point), sector);
                }
            }
            if (sector != nullptr) ++sectorLabels;
        }
    }
    EXPECT_GT(sectorLabels, 40);
}

TEST(OrbitPicture, TheCentreDiscShowsTheFolderNameAndSizeOrSaysTheFolderIsEmpty) {
    const auto folder = test::folderOfFiles("/Users/me/Music", {3'000'000'000, 1'500'000'000});
    const auto items = OrbitLayout::items(folder.children);
    const auto texts = textsOf(OrbitPicture::svg(folder, items, 600, 600, {}));
    EXPECT_NE(std::find(texts.begin(), texts.end(), "Music"), texts.end());
    EXPECT_NE(std::find(texts.begin(), texts.end(), "4.5 GB"), texts.end());
    EXPECT_NE(OrbitPicture::svg(test::folderOfFiles("/r", {0, 0}), {}, 1000, 600, {})
                  .find("Nothing to map in this folder"),
              std::string::npos);
}

double relativeLuminance(MapColor color) {
    const auto channel = [](uint8_t value) {
        const double c = value / 255.0;
        return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(color.red) + 0.7152 * channel(color.green) +
           0.0722 * channel(color.blue);
}

double contrast(MapColor a, MapColor b) {
    const double la = relativeLuminance(a);
    const double lb = relativeLuminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

MapColor shaded(MapColor color, double blackOpacity) {
    const auto scale = [&](uint8_t value) {
        return static_cast<uint8_t>(std::lround(value * (1 - blackOpacity)));
    };
    return {scale(color.red), scale(color.green), scale(color.blue)};
}

TEST(MapPalette, FourteenDistinctColoursAllReadableUnderTheirText) {
    std::set<std::string> colours;
    for (const bool dark : {false, true}) {
        const MapPalette palette{dark};
        for (const auto category : allDiskCategories) {
            const MapColor fill = palette.fill(category);
            colours.insert(fill.hex());
            SCOPED_TRACE(std::string(title(category)) + (dark ? " dark" : " light"));
            EXPECT_GE(contrast(fill, palette.text()), 4.5);
            EXPECT_GE(contrast(shaded(fill, palette.containerShadeOpacity()), palette.text()), 4.5);
        }
        EXPECT_GE(contrast(palette.surface(), palette.text()), 7);
    }
    EXPECT_EQ(colours.size(), static_cast<size_t>(MapPalette::categoryColorCount));
}

}  // namespace
}  // namespace veldan
