#include "app/MapPalette.hpp"

#include <cstdio>

namespace veldan {

namespace {

struct Variants {
    MapColor light;
    MapColor dark;
};

// Light fills are soft enough for dark text, dark fills deep enough for white text, both
// at a contrast of at least 4.5:1 (also under the container shade); hues stay apart so
// that neighbouring categories never blur.
Variants variants(DiskCategory category) {
    switch (category) {
        case DiskCategory::agent:
            return {{0xC3, 0xB1, 0xF5}, {0x6A, 0x52, 0xB8}};
        case DiskCategory::files:
            return {{0x9C, 0xC4, 0xF7}, {0x2F, 0x67, 0xAE}};
        case DiskCategory::build:
            return {{0xF8, 0xC0, 0x7E}, {0x9A, 0x5A, 0x1C}};
        case DiskCategory::safe:
            return {{0x9E, 0xDD, 0xB4}, {0x24, 0x7A, 0x4E}};
        case DiskCategory::system:
            return {{0xC2, 0xC9, 0xD3}, {0x55, 0x5E, 0x6C}};
        case DiskCategory::docker:
            return {{0x8E, 0xDB, 0xE6}, {0x1A, 0x75, 0x88}};
        case DiskCategory::models:
            return {{0xF5, 0xAE, 0xCB}, {0xA1, 0x42, 0x74}};
    }
    return {{0x9C, 0xC4, 0xF7}, {0x2F, 0x67, 0xAE}};
}

}  // namespace

std::string MapColor::hex() const {
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", red, green, blue);
    return text;
}

MapColor MapPalette::fill(DiskCategory category) const {
    const auto pair = variants(category);
    return dark ? pair.dark : pair.light;
}

MapColor MapPalette::background() const {
    return dark ? MapColor{0x17, 0x18, 0x1C} : MapColor{0xF3, 0xF4, 0xF7};
}

MapColor MapPalette::surface() const {
    return dark ? MapColor{0x24, 0x26, 0x2C} : MapColor{0xFF, 0xFF, 0xFF};
}

MapColor MapPalette::freeSpace() const {
    return dark ? MapColor{0x2E, 0x31, 0x38} : MapColor{0xE2, 0xE5, 0xEA};
}

double MapPalette::containerShadeOpacity() const {
    return dark ? 0.2 : 0.08;
}

MapColor MapPalette::text() const {
    return dark ? MapColor{0xF5, 0xF6, 0xF8} : MapColor{0x1A, 0x1D, 0x24};
}

}  // namespace veldan
