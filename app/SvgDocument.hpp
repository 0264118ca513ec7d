#pragma once
// A small writer of SVG documents: the elements the map pictures use, numbers written
// the same way on every locale, and every text escaped.
//
// Contract: element methods append in call order (later elements paint over earlier
// ones); finish() closes the document once.

#include <string>
#include <string_view>
#include <vector>

#include "layout/MapPoint.hpp"
#include "layout/MapRect.hpp"

namespace veldan {

struct SvgLabel {
    double x = 0;
    double y = 0;  // the baseline
    double size = 12;
    bool bold = false;
    std::string color;
    double opacity = 1;
    std::string_view anchor = "start";  // "start", "middle" or "end"
    double rotation = 0;                // degrees clockwise around `pivot`
    MapPoint pivot = {};
};

class SvgDocument {
public:
    SvgDocument(double width, double height, std::string_view fontFamily);

    // Numbers with at most two decimals and no trailing zeros, independent of locale.
    static std::string number(double value);
    // Path data of diagonal lines `spacing` apart across `rect`, each cut to it.
    static std::string hatching(const MapRect& rect, double spacing);

    void rect(const MapRect& rect, double radius, const std::string& fill,
              std::string_view attributes = {});
    void circle(MapPoint centre, double radius, const std::string& fill,
                std::string_view attributes = {});
    void polygon(const std::vector<MapPoint>& points, const std::string& fill,
                 std::string_view attributes = {});
    void path(std::string_view data, std::string_view attributes);
    // Path data drawn on a grid of `gridSize` scaled into a `size` square at (x, y).
    void icon(std::string_view data, double gridSize, double x, double y, double size,
              const std::string& fill, double opacity = 1);
    // `cleanText` must already be clean (SvgText::clean); it is escaped here.
    void text(const SvgLabel& label, std::string_view cleanText);
    void beginGroup(std::string_view attributes);
    void endGroup();

    std::string finish();

private:
    std::string out_;
};

}  // namespace veldan
