#include "app/OrbitPicture.hpp"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

#include "app/LabelFit.hpp"
#include "app/SvgCanvas.hpp"
#include "app/SvgText.hpp"
#include "layout/OrbitLayout.hpp"
#include "layout/TileContent.hpp"
#include "scan/SaturatingAdd.hpp"
#include "scan/SizeText.hpp"

namespace veldan {

namespace {

constexpr double ascent = LabelFit::ascent;
constexpr double lineHeight = LabelFit::lineHeight;
constexpr double listTextSize = 13;
constexpr double rowHeight = 28;
constexpr double sideListMinimum = 240;  // narrower leftovers stay empty around the ring

// A label's box centred on `centre` and turned by `angle` radians (clockwise, y down).
struct LabelBox {
    MapPoint centre;
    double width = 0;
    double height = 0;
    double angle = 0;

    MapPoint at(double dx, double dy) const {
        const double c = std::cos(angle);
        const double s = std::sin(angle);
        return {centre.x + dx * c - dy * s, centre.y + dx * s + dy * c};
    }
};

// Whether `box` lies inside `sector` kept `margin` points clear of its edges. The box's
// outline is sampled densely: a sector wider than half a turn is not convex, so its
// corners alone prove nothing.
bool fitsInSector(const LabelBox& box, OrbitSector sector, const MapRect& ring, double margin) {
    const double radius = OrbitSector::radius(ring);
    const double angularMargin = margin / (2 * std::numbers::pi * sector.innerRatio * radius);
    sector.innerRatio += margin / radius;
    sector.outerRatio -= margin / radius;
    sector.start += angularMargin;
    sector.end -= angularMargin;
    if (sector.start >= sector.end) return false;
    constexpr int steps = 12;
    const double halfWidth = box.width / 2;
    const double halfHeight = box.height / 2;
    for (int i = 0; i <= steps; ++i) {
        const double t = static_cast<double>(i) / steps;
        const double dx = -halfWidth + box.width * t;
        const double dy = -halfHeight + box.height * t;
        for (const MapPoint p : {box.at(dx, -halfHeight), box.at(dx, halfHeight),
                                 box.at(-halfWidth, dy), box.at(halfWidth, dy)}) {
            if (!sector.contains(p, ring)) return false;
        }
    }
    return true;
}

struct Painter {
    MapCanvas& canvas;
    const MapPictureStyle& style;
    MapPalette palette;
    MapColor textColor;
};

struct SectorLabel {
    std::string name;
    bool withSize = false;
    LabelBox box;
};

// Where the label of a sector goes: across the ring (upright) or along the radius (for
// the narrow sectors of many similar items), with its size below the name while there is
// room, the whole name before an elided one.
std::optional<SectorLabel> placeLabel(const std::string& name, double sizeWidth, double nameSize,
                                      double sizeSize, const OrbitItem& item, const MapRect& ring) {
    const OrbitSector sector = OrbitLayout::sector(item);
    const double middle = (item.start + item.end) / 2;
    const MapPoint centre =
        OrbitSector::point(middle, (sector.innerRatio + sector.outerRatio) / 2, ring);
    // Along the radius, the text reads outwards on the right half and inwards on the
    // left half, so that it is never upside down.
    double radial = OrbitSector::angle(middle);
    if (std::cos(radial) < 0) radial += std::numbers::pi;
    const double twoLines = lineHeight * (nameSize + sizeSize) + 2;
    const double oneLine = lineHeight * nameSize;
    const double fullWidth = LabelFit::width(name, nameSize, true);

    const auto attempt = [&](const std::string& text, bool withSize,
                             double angle) -> std::optional<SectorLabel> {
        double width = LabelFit::width(text, nameSize, true);
        if (withSize) width = std::max(width, sizeWidth);
        const LabelBox box{centre, width, withSize ? twoLines : oneLine, angle};
        if (!fitsInSector(box, sector, ring, 4)) return std::nullopt;
        return SectorLabel{text, withSize, box};
    };
    for (const bool withSize : {true, false}) {
        for (const double angle : {0.0, radial}) {
            if (auto label = attempt(name, withSize, angle)) return label;
        }
    }
    for (const bool withSize : {true, false}) {
        for (const double angle : {0.0, radial}) {
            for (double limit = fullWidth * 0.85; limit >= 3 * nameSize; limit *= 0.85) {
                const std::string fitted = LabelFit::fitted(name, limit, nameSize, true);
                if (fitted.empty()) break;
                if (auto label = attempt(fitted, withSize, angle)) return label;
            }
        }
    }
    return std::nullopt;
}

void drawSectorLabel(Painter& painter, const OrbitItem& item, const MapRect& ring) {
    // Labels grow with the ring, so that a large picture does not look empty.
    const double radius = OrbitSector::radius(ring);
    const double nameSize = std::clamp(radius / 24, 11.0, 18.0);
    const double sizeSize = std::clamp(radius / 28, 10.0, 16.0);
    const double arc =
        (item.end - item.start) * 2 * std::numbers::pi * radius * (OrbitLayout::innerRatio + 1) / 2;
    if (arc < lineHeight * nameSize) return;

    const std::string name = SvgText::clean(item.node->name);
    const std::string size = SizeText::string(item.node->bytes, true);
    const auto label =
        placeLabel(name, LabelFit::width(size, sizeSize, false), nameSize, sizeSize, item, ring);
    if (!label) return;
    const LabelBox& box = label->box;
    const double degrees = box.angle * 180 / std::numbers::pi;
    const double top = box.centre.y - box.height / 2;
    painter.canvas.text({box.centre.x, top + ascent * nameSize, nameSize, true, painter.textColor,
                         1, MapTextAnchor::middle, degrees, box.centre},
                        label->name);
    if (label->withSize) {
        const double bottom = box.centre.y + box.height / 2;
        painter.canvas.text(
            {box.centre.x, bottom - (lineHeight - ascent) * sizeSize, sizeSize, false,
             painter.textColor, 0.85, MapTextAnchor::middle, degrees, box.centre},
            size);
    }
}

// Diagonal hatching cut to a summary sector, the mark of grouped smaller items (as on
// the treemap's summary tiles). Lines are traced in one-point steps and kept where they
// run inside the sector shrunk by two points, so no stroke crosses into a neighbour.
void drawSummaryMarks(Painter& painter, const OrbitItem& item, const MapRect& ring) {
    OrbitSector sector = OrbitLayout::sector(item);
    const double radius = OrbitSector::radius(ring);
    sector.innerRatio += 2 / radius;
    sector.outerRatio -= 2 / radius;
    const auto outline = sector.outline(ring, 180);
    MapRect bounds{outline.front().x, outline.front().y, 0, 0};
    for (const auto& p : outline) {
        const double right = std::max(bounds.maxX(), p.x);
        const double bottom = std::max(bounds.maxY(), p.y);
        bounds.x = std::min(bounds.x, p.x);
        bounds.y = std::min(bounds.y, p.y);
        bounds.width = right - bounds.x;
        bounds.height = bottom - bounds.y;
    }
    const double step = 1;
    const double margin = 2 / (2 * std::numbers::pi * radius * sector.innerRatio);
    sector.start += margin;
    sector.end -= margin;
    if (sector.start >= sector.end) return;
    std::vector<MapSegment> segments;
    const auto segment = [&](double from, double to, double k) {
        if (to - from < 1) return;
        segments.push_back({{from, k - from}, {to, k - to}});
    };
    for (double k = bounds.minX() + bounds.minY() + 5; k < bounds.maxX() + bounds.maxY(); k += 10) {
        const double x0 = std::max(bounds.minX(), k - bounds.maxY());
        const double x1 = std::min(bounds.maxX(), k - bounds.minY());
        bool inRun = false;
        double runStart = x0;
        double last = x0;
        for (double x = x0; x <= x1 + step / 2; x += step) {
            const bool inside = sector.contains({x, k - x}, ring);
            if (inside && !inRun) runStart = x;
            if (!inside && inRun) segment(runStart, last, k);
            inRun = inside;
            if (inside) last = x;
        }
        if (inRun) segment(runStart, last, k);
    }
    if (segments.empty()) return;
    painter.canvas.lines(segments, painter.style.hatchStroke());
}

// The widest text that fits across a disc of `radius` over the vertical span of a line.
double chordWidth(double radius, double lineTop, double lineBottom, double centreY) {
    const double far = std::max(std::abs(lineTop - centreY), std::abs(lineBottom - centreY));
    return far >= radius ? 0 : 2 * std::sqrt(radius * radius - far * far);
}

void drawCentre(Painter& painter, const DiskNode& folder, const MapRect& ring) {
    const MapPoint c = OrbitSector::centre(ring);
    const double radius = OrbitLayout::innerRatio * OrbitSector::radius(ring) - 4;
    if (radius <= 0) return;
    painter.canvas.circle(c, radius, painter.palette.surface());

    const double nameSize = std::clamp(radius * 0.14, 12.0, 22.0);
    const double sizeSize = std::clamp(radius * 0.26, 14.0, 40.0);
    const double textRadius = radius - 8;
    const double height = lineHeight * (nameSize + sizeSize) + 4;
    const double top = c.y - height / 2;
    const double nameBottom = top + lineHeight * nameSize;
    const std::string name = SvgText::clean(folder.name.empty() ? folder.path : folder.name);
    const std::string fitted =
        LabelFit::fitted(name, chordWidth(textRadius, top, nameBottom, c.y), nameSize, true);
    const std::string size = SizeText::string(folder.bytes);
    const double sizeTop = nameBottom + 4;
    const bool showSize = LabelFit::width(size, sizeSize, true) <=
                          chordWidth(textRadius, sizeTop, sizeTop + lineHeight * sizeSize, c.y);
    if (!fitted.empty()) {
        painter.canvas.text({c.x, top + ascent * nameSize, nameSize, true, painter.textColor, 0.75,
                             MapTextAnchor::middle},
                            fitted);
    }
    if (showSize) {
        painter.canvas.text({c.x, sizeTop + ascent * sizeSize, sizeSize, true, painter.textColor, 1,
                             MapTextAnchor::middle},
                            size);
    }
}

// How the list fills `area`: the rows that show an item, whether a last line says how many
// more there are, and where the first line starts; nothing when the list has no room.
struct ListLines {
    size_t rows = 0;
    bool overflow = false;
    double top = 0;
};

std::optional<ListLines> listLines(const MapRect& area, size_t itemCount) {
    const auto capacity = static_cast<size_t>(std::max(0.0, std::floor(area.height / rowHeight)));
    if (capacity == 0 || area.width < 120) return std::nullopt;
    const bool overflow = itemCount > capacity;
    const size_t rows = overflow ? capacity - 1 : itemCount;
    const size_t lines = rows + (overflow ? 1 : 0);
    return ListLines{rows, overflow,
                     area.y + (area.height - static_cast<double>(lines) * rowHeight) / 2};
}

void drawList(Painter& painter, const DiskNode& folder, const std::vector<OrbitItem>& items,
              const MapRect& area) {
    const auto lines = listLines(area, items.size());
    if (!lines) return;
    const auto [rows, overflow, top] = *lines;
    const double shareRight = area.maxX();
    const double sizeRight = shareRight - LabelFit::width("100%", 12, false) - 14;
    const double nameLeft = area.x + 24;
    const double textOffset = rowHeight / 2 + 0.36 * listTextSize;
    const int64_t total = painter.style.freeSpace
                              ? saturatingAdd(folder.bytes, painter.style.freeSpace->bytes)
                              : folder.bytes;

    for (size_t i = 0; i < rows; ++i) {
        const OrbitItem& item = items[i];
        const double rowTop = top + static_cast<double>(i) * rowHeight;
        const MapRect swatch{area.x, rowTop + (rowHeight - 14) / 2, 14, 14};
        painter.canvas.rect(swatch, 3, painter.style.fill(*item.node));
        if (item.node->isSummary) {
            painter.canvas.icon(TileContent::summaryIconName, swatch.x + 2, swatch.y + 2, 10,
                                painter.textColor, 0.7);
        }
        const std::string size = SizeText::string(item.node->bytes, true);
        const double sizeWidth = LabelFit::width(size, listTextSize, true);
        const std::string name =
            LabelFit::fitted(SvgText::clean(item.node->name), sizeRight - sizeWidth - 12 - nameLeft,
                             listTextSize, false);
        const double baseline = rowTop + textOffset;
        painter.canvas.text({nameLeft, baseline, listTextSize, false, painter.textColor}, name);
        painter.canvas.text(
            {sizeRight, baseline, listTextSize, true, painter.textColor, 1, MapTextAnchor::end},
            size);
        painter.canvas.text(
            {shareRight, baseline, 12, false, painter.textColor, 0.6, MapTextAnchor::end},
            SizeText::share(item.node->bytes, total));
    }
    if (overflow) {
        const std::string more = "…and " + std::to_string(items.size() - rows) + " more";
        painter.canvas.text({nameLeft, top + static_cast<double>(rows) * rowHeight + textOffset,
                             listTextSize, false, painter.textColor, 0.6},
                            LabelFit::fitted(more, area.maxX() - nameLeft, listTextSize, false));
    }
}

}  // namespace

std::vector<MapRect> OrbitPicture::listRows(const MapRect& list, size_t itemCount) {
    std::vector<MapRect> frames;
    const auto lines = listLines(list, itemCount);
    if (!lines) return frames;
    for (size_t i = 0; i < lines->rows; ++i) {
        frames.push_back(
            {list.x, lines->top + static_cast<double>(i) * rowHeight, list.width, rowHeight});
    }
    return frames;
}

OrbitPicture::Frame OrbitPicture::frame(double width, double height) {
    Frame frame;
    frame.diameter = std::min(width, height);
    if (width - frame.diameter >= sideListMinimum) {
        frame.list = {frame.diameter + 8, 24, width - frame.diameter - 32, height - 48};
    } else if (height - frame.diameter >= sideListMinimum) {
        frame.list = {24, frame.diameter + 8, width - 48, height - frame.diameter - 32};
    } else {
        frame.origin = {(width - frame.diameter) / 2, (height - frame.diameter) / 2};
    }
    frame.ring = OrbitLayout::ringRect(frame.diameter);
    frame.ring.x += frame.origin.x;
    frame.ring.y += frame.origin.y;
    return frame;
}

void OrbitPicture::draw(MapCanvas& canvas, const DiskNode& folder,
                        const std::vector<OrbitItem>& items, double width, double height,
                        const MapPictureStyle& style) {
    Painter painter{canvas, style, style.palette(), style.palette().text()};
    const MapColor background = painter.palette.background();
    canvas.rect({0, 0, width, height}, 0, background);

    const Frame layout = frame(width, height);
    const MapRect& ring = layout.ring;
    if (ring.width <= 0) return;

    // The track shows where the ring runs even where no sector covers it.
    canvas.polygon(OrbitSector{0, 1, OrbitLayout::innerRatio, 1}.outline(ring), painter.textColor,
                   0.06);
    const MapStroke gap{background, 1, 1.5, true};
    for (const auto& item : items) {
        canvas.polygon(OrbitLayout::sector(item).outline(ring), painter.style.fill(*item.node), 1,
                       &gap);
        if (item.node->isSummary) drawSummaryMarks(painter, item, ring);
    }
    for (const auto& item : items)
        drawSectorLabel(painter, item, ring);
    drawCentre(painter, folder, ring);
    const MapRect& list = layout.list;
    if (list.width > 0) {
        if (items.empty()) {
            canvas.text(
                {list.x, list.y + list.height / 2, listTextSize, false, painter.textColor, 0.6},
                LabelFit::fitted(painter.style.emptyText, list.width, listTextSize, false));
        } else {
            drawList(painter, folder, items, list);
        }
    }
}

std::string OrbitPicture::svg(const DiskNode& folder, const std::vector<OrbitItem>& items,
                              double width, double height, const MapPictureStyle& style) {
    SvgCanvas canvas(width, height, MapPictureStyle::fontFamily);
    draw(canvas, folder, items, width, height, style);
    return canvas.finish();
}

}  // namespace veldan
