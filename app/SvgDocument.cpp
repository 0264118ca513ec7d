#include "app/SvgDocument.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "app/SvgText.hpp"

namespace veldan {

SvgDocument::SvgDocument(double width, double height, std::string_view fontFamily) {
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

}  // namespace

std::string SvgDocument::number(double value) {
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

std::string SvgDocument::hatching(const MapRect& rect, double spacing) {
    std::string data;
    if (rect.width <= 0 || rect.height <= 0 || !(spacing > 0)) return data;
    // Lines x + y = k, rising to the right; each runs between the rectangle's edges.
    for (double k = rect.minX() + rect.minY() + spacing / 2; k < rect.maxX() + rect.maxY();
         k += spacing) {
        const double x0 = std::max(rect.minX(), k - rect.maxY());
        const double x1 = std::min(rect.maxX(), k - rect.minY());
        if (x1 - x0 < 0.5) continue;
        data += "M" + number(x0) + " " + number(k - x0) + "L" + number(x1) + " " + number(k - x1);
    }
    return data;
}

void SvgDocument::rect(const MapRect& rect, double radius, const std::string& fill,
                       std::string_view attributes) {
    out_ += "<rect x=\"" + number(rect.x) + "\" y=\"" + number(rect.y) + "\" width=\"" +
            number(rect.width) + "\" height=\"" + number(rect.height) + "\"";
    if (radius > 0) out_ += " rx=\"" + number(radius) + "\"";
    out_ += " fill=\"" + fill + "\"";
    if (!attributes.empty()) (out_ += ' ') += attributes;
    out_ += "/>\n";
}

void SvgDocument::circle(MapPoint centre, double radius, const std::string& fill,
                         std::string_view attributes) {
    out_ += "<circle cx=\"" + number(centre.x) + "\" cy=\"" + number(centre.y) + "\" r=\"" +
            number(radius) + "\" fill=\"" + fill + "\"";
    if (!attributes.empty()) (out_ += ' ') += attributes;
    out_ += "/>\n";
}

void SvgDocument::polygon(const std::vector<MapPoint>& points, const std::string& fill,
                          std::string_view attributes) {
    out_ += "<polygon points=\"";
    for (size_t i = 0; i < points.size(); ++i) {
        if (i) out_ += ' ';
        out_ += number(points[i].x) + "," + number(points[i].y);
    }
    out_ += "\" fill=\"" + fill + "\"";
    if (!attributes.empty()) (out_ += ' ') += attributes;
    out_ += "/>\n";
}

void SvgDocument::path(std::string_view data, std::string_view attributes) {
    out_ += "<path d=\"";
    out_ += data;
    out_ += "\" ";
    out_ += attributes;
    out_ += "/>\n";
}

void SvgDocument::icon(std::string_view data, double gridSize, double x, double y, double size,
                       const std::string& fill, double opacity) {
    if (data.empty() || !(gridSize > 0)) return;
    out_ += "<path transform=\"translate(" + number(x) + " " + number(y) + ") scale(" +
            scale(size / gridSize) + ")\" fill=\"" + fill + "\" fill-rule=\"evenodd\"";
    if (opacity < 1) out_ += " fill-opacity=\"" + number(opacity) + "\"";
    out_ += " d=\"";
    out_ += data;
    out_ += "\"/>\n";
}

void SvgDocument::text(const SvgLabel& label, std::string_view cleanText) {
    out_ += "<text x=\"" + number(label.x) + "\" y=\"" + number(label.y) + "\" font-size=\"" +
            number(label.size) + "\"";
    if (label.bold) out_ += " font-weight=\"bold\"";
    out_ += " fill=\"" + label.color + "\"";
    if (label.opacity < 1) out_ += " fill-opacity=\"" + number(label.opacity) + "\"";
    if (label.rotation != 0) {
        out_ += " transform=\"rotate(" + number(label.rotation) + " " + number(label.pivot.x) +
                " " + number(label.pivot.y) + ")\"";
    }
    if (label.anchor != "start") {
        out_ += " text-anchor=\"";
        out_ += label.anchor;
        out_ += "\"";
    }
    out_ += ">" + SvgText::escape(cleanText) + "</text>\n";
}

void SvgDocument::beginGroup(std::string_view attributes) {
    out_ += "<g ";
    out_ += attributes;
    out_ += ">\n";
}

void SvgDocument::endGroup() {
    out_ += "</g>\n";
}

std::string SvgDocument::finish() {
    out_ += "</svg>\n";
    return std::move(out_);
}

}  // namespace veldan
