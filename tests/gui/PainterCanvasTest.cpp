// The window paints the very picture the command line writes: the same tiles and sectors
// in the same colours, whether through QPainter or through the SVG file.

#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include "app/OrbitPicture.hpp"
#include "app/SvgCanvas.hpp"
#include "app/TreemapPicture.hpp"
#include "gui/PainterCanvas.hpp"
#include "layout/OrbitLayout.hpp"
#include "layout/TreemapLayout.hpp"
#include "tests/gui/GuiTestSupport.hpp"

namespace veldan::gui {
namespace {

constexpr int width = 900;
constexpr int height = 600;

QImage painted(const std::function<void(MapCanvas&)>& draw) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    PainterCanvas canvas(painter);
    draw(canvas);
    return image;
}

QImage fromSvg(const std::string& svg) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(Qt::magenta);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    QSvgRenderer(QByteArray::fromStdString(svg)).render(&painter);
    return image;
}

// The share of pixels whose colours differ clearly; text runs in other faces and edges
// are all that may differ.
double differingShare(const QImage& a, const QImage& b) {
    int differing = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const QColor p = a.pixelColor(x, y);
            const QColor q = b.pixelColor(x, y);
            const int distance = std::abs(p.red() - q.red()) + std::abs(p.green() - q.green()) +
                                 std::abs(p.blue() - q.blue());
            if (distance > 60) ++differing;
        }
    }
    return static_cast<double>(differing) / (width * height);
}

TEST(PainterCanvas, PaintsTheSamePictureAsTheSvgFile) {
    const auto tree = test::sampleTree();
    const auto tiles = TreemapLayout::tiles(*tree, width, height);
    const auto items = OrbitLayout::items(tree->children);
    std::vector<QImage> fromFiles;
    for (const bool dark : {false, true}) {
        MapPictureStyle style;
        style.dark = dark;
        const QImage treemap = painted(
            [&](MapCanvas& canvas) { TreemapPicture::draw(canvas, tiles, width, height, style); });
        fromFiles.push_back(fromSvg(TreemapPicture::svg(tiles, width, height, style)));
        EXPECT_LT(differingShare(treemap, fromFiles.back()), 0.02) << dark;

        const QImage orbit = painted([&](MapCanvas& canvas) {
            OrbitPicture::draw(canvas, *tree, items, width, height, style);
        });
        EXPECT_LT(
            differingShare(orbit, fromSvg(OrbitPicture::svg(*tree, items, width, height, style))),
            0.02)
            << dark;
    }
    // The measure does tell pictures apart.
    EXPECT_GT(differingShare(fromFiles[0], fromFiles[1]), 0.5);
}

}  // namespace
}  // namespace veldan::gui
