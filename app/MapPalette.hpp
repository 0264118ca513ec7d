#pragma once
// The colours of the drawn map: one fixed palette of fourteen category colours, a light
// and a dark variant of each of the seven categories, plus the neutral colours of the
// background and the text that go with each variant.

#include <cstdint>
#include <string>

#include "scan/DiskCategory.hpp"

namespace veldan {

struct MapColor {
    uint8_t red = 0;
    uint8_t green = 0;
    uint8_t blue = 0;

    std::string hex() const;  // "#rrggbb"
    friend bool operator==(const MapColor&, const MapColor&) = default;
};

struct MapPalette {
    bool dark = false;

    static constexpr int categoryColorCount = 14;

    MapColor fill(DiskCategory category) const;
    MapColor background() const;
    MapColor surface() const;    // the orbit's centre disc
    MapColor freeSpace() const;  // the volume's free space, an item without a category
    // Labels, icons and hatching drawn over the fills.
    MapColor text() const;
    // How much black darkens a tile that holds nested tiles, so that its frame reads as
    // a container around them.
    double containerShadeOpacity() const;
};

}  // namespace veldan
