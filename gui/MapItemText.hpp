#pragma once
// The words every view uses for an item of the map: its display name, the help text shown
// on hover (name, size, share, path and what a click does) and what a screen reader
// reads.
//
// Contract: pure functions of the item and the content it is shown in.

#include <QString>

#include "gui/MapContent.hpp"
#include "scan/DiskNode.hpp"

namespace veldan::gui {

class MapItemText {
public:
    // Clean display text of raw bytes: invalid UTF-8, controls and direction marks show as
    // U+FFFD, so a name cannot disguise itself.
    static QString display(std::string_view raw);
    static QString name(const DiskNode& node);
    // "12 GB · 34%"
    static QString sizeAndShare(const DiskNode& node, const MapContent& content);
    // Name, size and share, the path, and the tile's help text in the local wording.
    static QString toolTip(const DiskNode& node, const MapContent& content);
    // "Documents, 12 GB, 34 percent"
    static QString spoken(const DiskNode& node, const MapContent& content);
    // The largest items first, at most `count`, for the map's accessible description.
    static QString largestItems(const MapContent& content, size_t count = 5);
};

}  // namespace veldan::gui
