#pragma once
// The map canvas as an SVG document: numbers written the same way on every locale, and
// every text escaped.
//
// Contract: elements are appended in call order (later ones paint over earlier ones);
// finish() closes the document once and hands it over.

#include <string>
#include <string_view>
#include <vector>

#include "app/MapCanvas.hpp"

namespace veldan {

class SvgCanvas final : public MapCanvas {
public:
    SvgCanvas(double width, double height, std::string_view fontFamily);

    // Numbers with at most two decimals and no trailing zeros, independent of locale.
    static std::string number(double value);

    void rect(const MapRect& rect, double radius, MapColor fill, double opacity = 1) override;
    void circle(MapPoint centre, double radius, MapColor fill) override;
    void polygon(const std::vector<MapPoint>& points, MapColor fill, double opacity,
                 const MapStroke* outline = nullptr) override;
    void lines(const std::vector<MapSegment>& segments, const MapStroke& stroke) override;
    void icon(std::string_view symbolName, double x, double y, double size, MapColor fill,
              double opacity = 1) override;
    void text(const MapLabel& label, std::string_view cleanText) override;

    std::string finish();

private:
    void opacity(std::string_view attribute, double value);

    std::string out_;
};

}  // namespace veldan
