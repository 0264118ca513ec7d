#pragma once
// Drawings of the tile icons for pictures, by symbol name: single-colour outlines on a
// 16 x 16 grid, filled with the even-odd rule.

#include <string_view>

namespace veldan {

class MapIcons {
public:
    static constexpr double gridSize = 16;
    // SVG path data for `symbolName`; empty for a name without a drawing.
    static std::string_view pathData(std::string_view symbolName);
};

}  // namespace veldan
