#include "app/TreemapPicture.hpp"

#include <algorithm>

#include "app/LabelFit.hpp"
#include "app/SvgCanvas.hpp"
#include "app/SvgText.hpp"
#include "layout/TileContent.hpp"
#include "layout/TreemapLayout.hpp"

namespace veldan {

namespace {

constexpr double ascent = LabelFit::ascent;
constexpr double lineHeight = LabelFit::lineHeight;
constexpr double nameSize = 13;
constexpr double bandNameSize = 13;
constexpr double bandSizeSize = 12;
constexpr double shortLabelSize = 11;
constexpr double iconSize = 14;
constexpr double iconGap = 5;

struct Painter {
    MapCanvas& canvas;
    const MapPictureStyle& style;
    MapColor textColor;
};

void drawIcon(Painter& painter, std::string_view symbol, double x, double lineTop, double size) {
    painter.canvas.icon(symbol, x, lineTop, size, painter.textColor, 0.85);
}

// The band above nested tiles: icon, name on the left and the compact size on the right.
void drawTitleBand(Painter& painter, const MapTile& tile, const TileContent& content,
                   const MapRect& drawn) {
    const double bandTop = tile.frame.y + TreemapLayout::nestingInset;
    const double left = drawn.x + 8;
    const double right = drawn.maxX() - 8;
    const double baseline =
        bandTop + (TreemapLayout::titleBand - bandNameSize) / 2 + ascent * bandNameSize - 1;
    double nameLeft = left;
    const bool icon = !content.iconName.empty() && right - left > 3 * iconSize;
    if (icon) nameLeft += iconSize + iconGap;

    const std::string name = SvgText::clean(content.title);
    const double sizeWidth = LabelFit::width(content.sizeLabel, bandSizeSize, false);
    // The size shares the band only while the name stays recognisable beside it.
    std::string fitted =
        LabelFit::fitted(name, right - nameLeft - sizeWidth - 10, bandNameSize, true);
    const bool showSize =
        !fitted.empty() && (fitted == name || LabelFit::width(fitted, bandNameSize, true) >= 80);
    if (!showSize) fitted = LabelFit::fitted(name, right - nameLeft, bandNameSize, true);
    if (fitted.empty()) return;
    if (icon) {
        drawIcon(painter, content.iconName, left,
                 bandTop + (TreemapLayout::titleBand - iconSize) / 2, iconSize);
    }
    painter.canvas.text({nameLeft, baseline, bandNameSize, true, painter.textColor}, fitted);
    if (showSize) {
        painter.canvas.text(
            {right, baseline, bandSizeSize, false, painter.textColor, 0.8, MapTextAnchor::end},
            content.sizeLabel);
    }
}

// A tile without nested tiles: name (with its icon) at the top, the size below it or at
// the bottom of a tall tile, and for a summary the short explanation in between.
void drawLabels(Painter& painter, const TileContent& content, const MapRect& drawn) {
    const double padding = (drawn.width >= 60 && drawn.height >= 44) ? 8 : 4;
    const double left = drawn.x + padding;
    const double width = drawn.width - 2 * padding;
    const double top = drawn.y + padding;
    const double bottom = drawn.maxY() - padding;
    if (bottom - top < lineHeight * nameSize) return;

    const double iconBox = content.iconName.empty() ? 0 : iconSize;
    const bool icon = iconBox > 0 && width > 3 * iconBox;
    const double nameLeft = icon ? left + iconBox + iconGap : left;
    const std::string fitted =
        LabelFit::fitted(SvgText::clean(content.title), left + width - nameLeft, nameSize, true);
    if (fitted.empty()) return;
    if (icon) drawIcon(painter, content.iconName, left, top, iconBox);
    painter.canvas.text({nameLeft, top + ascent * nameSize, nameSize, true, painter.textColor},
                        fitted);
    double used = top + lineHeight * nameSize;

    if (!content.shortLabel.empty() && bottom - used >= 4 + lineHeight * shortLabelSize) {
        const std::string label =
            LabelFit::fitted(content.shortLabel, width, shortLabelSize, false);
        if (!label.empty()) {
            used += 4;
            painter.canvas.text({left, used + ascent * shortLabelSize, shortLabelSize, false,
                                 painter.textColor, 0.8},
                                label);
            used += lineHeight * shortLabelSize;
        }
    }

    const double size = content.sizeFontSize;
    if (bottom - used < 2 + lineHeight * size) return;
    if (LabelFit::width(content.sizeLabel, size, true) > width) return;
    // A tall tile keeps its size at the bottom, where the eye lands after the name.
    const double lineTop =
        (bottom - used > 3 * lineHeight * size) ? bottom - lineHeight * size : used + 2;
    painter.canvas.text({left, lineTop + ascent * size, size, true, painter.textColor, 0.9},
                        content.sizeLabel);
}

void drawTile(Painter& painter, const MapTile& tile) {
    const MapRect drawn = TreemapPicture::drawnFrame(tile.frame);
    if (drawn.width <= 0 || drawn.height <= 0) return;
    const DiskNode& node = *tile.node;
    auto content =
        TileContent::of(tile, painter.style.scanFinished, MapPictureStyle::opaqueKind(node));
    if (&node == painter.style.freeSpace) content.iconName.clear();
    const double radius = TreemapPicture::cornerRadius(drawn, tile.level);
    const MapPalette palette = painter.style.palette();
    painter.canvas.rect(drawn, radius, painter.style.fill(node));

    const bool nests = TreemapLayout::nestsInto(node, tile.frame, tile.level);
    if (nests) {
        painter.canvas.rect(drawn, radius, MapColor{}, palette.containerShadeOpacity());
        drawTitleBand(painter, tile, content, drawn);
        return;
    }
    if (node.isSummary) {
        const MapRect inner{drawn.x + 2, drawn.y + 2, drawn.width - 4, drawn.height - 4};
        painter.canvas.lines(MapCanvas::hatching(inner, 10), painter.style.hatchStroke());
    }
    drawLabels(painter, content, drawn);
}

}  // namespace

MapRect TreemapPicture::drawnFrame(const MapRect& frame) {
    // Tiles sit 1 point apart so that neighbours of one category stay distinguishable; a
    // sliver too thin to spare the gap is drawn whole.
    MapRect drawn = frame;
    if (frame.width > 4) {
        drawn.x += 1;
        drawn.width -= 2;
    }
    if (frame.height > 4) {
        drawn.y += 1;
        drawn.height -= 2;
    }
    return drawn;
}

double TreemapPicture::cornerRadius(const MapRect& drawn, int level) {
    return std::min({level == 0 ? 6.0 : 4.0, drawn.width / 4, drawn.height / 4});
}

void TreemapPicture::draw(MapCanvas& canvas, const std::vector<MapTile>& tiles, double width,
                          double height, const MapPictureStyle& style) {
    const auto palette = style.palette();
    Painter painter{canvas, style, palette.text()};
    canvas.rect({0, 0, width, height}, 0, palette.background());
    if (tiles.empty()) {
        const std::string message = LabelFit::fitted(style.emptyText, width - 16, 15, false);
        canvas.text(
            {width / 2, height / 2, 15, false, painter.textColor, 0.6, MapTextAnchor::middle},
            message);
    }
    for (const auto& tile : tiles)
        drawTile(painter, tile);
}

std::string TreemapPicture::svg(const std::vector<MapTile>& tiles, double width, double height,
                                const MapPictureStyle& style) {
    SvgCanvas canvas(width, height, MapPictureStyle::fontFamily);
    draw(canvas, tiles, width, height, style);
    return canvas.finish();
}

}  // namespace veldan
