#include "app/SvgCanvas.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "app/MapIcons.hpp"
#include "app/SvgText.hpp"

namespace veldan {

SvgCanvas::SvgCanvas(double width, double height, std::string_view fontFamily) {
    out_ += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    out_ += "<svg xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\" width=\"" + number(width) +
            "\" height=\"" + number(height) + "\" viewBox=\"0 0 " + number(width) + " " +
            number(height) + "\" font-family=\"" + SvgText::escape(fontFamily) +
            "\" xml:space=\"preserve\">\n";
}

namespace {

// A scale factor with more digits than a coordinate needs, in the same locale-free way.
std::string scale(double factor) {
    char text[64];
    const auto result =
        std::to_chars(text, text + sizeof text, std::isfinite(factor) ? factor : 0.0,
                      std::chars_format::fixed, 6);
    return std::string(text, result.ptr);
}

std::string_view anchorName(MapTextAnchor anchor) {
    switch (anchor) {
        case MapTextAnchor::start:
            return "start";
        case MapTextAnchor::middle:
            return "middle";
        case MapTextAnchor::end:
            return "end";
    }
    return "start";
}

}  // namespace

std::string SvgCanvas::number(double value) {
    if (!std::isfinite(value)) return "0";
    value = std::clamp(value, -1e9, 1e9);  // far beyond any picture; keeps the text short
    double rounded = std::round(value * 100) / 100;
    if (rounded == 0) rounded = 0;  // no "-0"
    char text[64];
    const auto result =
        std::to_chars(text, text + sizeof text, rounded, std::chars_format::fixed, 2);
    std::string_view view(text, static_cast<size_t>(result.ptr - text));
    while (view.back() == '0')
        view.remove_suffix(1);
    if (view.back() == '.') view.remove_suffix(1);
    return std::string(view);
}

void SvgCanvas::opacity(std::string_view attribute, double value) {
    if (value >= 1) return;
    ((out_ += ' ') += attribute) += "=\"" + number(value) + "\"";
}

void SvgCanvas::rect(const MapRect& rect, double radius, MapColor fill, double fillOpacity) {
    out_ += "<rect x=\"" + number(rect.x) + "\" y=\"" + number(rect.y) + "\" width=\"" +
            number(rect.width) + "\" height=\"" + number(rect.height) + "\"";
    if (radius > 0) out_ += " rx=\"" + number(radius) + "\"";
    out_ += " fill=\"" + fill.hex() + "\"";
    opacity("fill-opacity", fillOpacity);
    out_ += "/>\n";
}

void SvgCanvas::circle(MapPoint centre, double radius, MapColor fill) {
    out_ += "<circle cx=\"" + number(centre.x) + "\" cy=\"" + number(centre.y) + "\" r=\"" +
            number(radius) + "\" fill=\"" + fill.hex() + "\"/>\n";
}

void SvgCanvas::polygon(const std::vector<MapPoint>& points, MapColor fill, double fillOpacity,
                        const MapStroke* outline) {
    out_ += "<polygon points=\"";
    for (size_t i = 0; i < points.size(); ++i) {
        if (i) out_ += ' ';
        out_ += number(points[i].x) + "," + number(points[i].y);
    }
    out_ += "\" fill=\"" + fill.hex() + "\"";
    opacity("fill-opacity", fillOpacity);
    if (outline != nullptr) {
        out_ += " stroke=\"" + outline->color.hex() + "\"";
        opacity("stroke-opacity", outline->opacity);
        out_ += " stroke-width=\"" + number(outline->width) + "\"";
        if (outline->roundJoins) out_ += " stroke-linejoin=\"round\"";
    }
    out_ += "/>\n";
}

void SvgCanvas::lines(const std::vector<MapSegment>& segments, const MapStroke& stroke) {
    out_ += "<path d=\"";
    for (const auto& [from, to] : segments) {
        out_ +=
            "M" + number(from.x) + " " + number(from.y) + "L" + number(to.x) + " " + number(to.y);
    }
    out_ += "\" stroke=\"" + stroke.color.hex() + "\"";
    opacity("stroke-opacity", stroke.opacity);
    out_ += " stroke-width=\"" + number(stroke.width) + "\" fill=\"none\"";
    if (stroke.roundJoins) out_ += " stroke-linejoin=\"round\"";
    out_ += "/>\n";
}

void SvgCanvas::icon(std::string_view symbolName, double x, double y, double size, MapColor fill,
                     double fillOpacity) {
    const std::string_view data = MapIcons::pathData(symbolName);
    if (data.empty()) return;
    out_ += "<path transform=\"translate(" + number(x) + " " + number(y) + ") scale(" +
            scale(size / MapIcons::gridSize) + ")\" fill=\"" + fill.hex() +
            "\" fill-rule=\"evenodd\"";
    opacity("fill-opacity", fillOpacity);
    out_ += " d=\"";
    out_ += data;
    out_ += "\"/>\n";
}

void SvgCanvas::text(const MapLabel& label, std::string_view cleanText) {
    out_ += "<text x=\"" + number(label.x) + "\" y=\"" + number(label.y) + "\" font-size=\"" +
            number(label.size) + "\"";
    if (label.bold) out_ += " font-weight=\"bold\"";
    out_ += " fill=\"" + label.color.hex() + "\"";
    opacity("fill-opacity", label.opacity);
    if (label.rotation != 0) {
        out_ += " transform=\"rotate(" + number(label.rotation) + " " + number(label.pivot.x) +
                " " + number(label.pivot.y) + ")\"";
    }
    if (label.anchor != MapTextAnchor::start) {
        out_ += " text-anchor=\"";
        out_ += anchorName(label.anchor);
        out_ += "\"";
    }
    out_ += ">" + SvgText::escape(cleanText) + "</text>\n";
}

std::string SvgCanvas::finish() {
    out_ += "</svg>\n";
    return std::move(out_);
}

}  // namespace veldan
