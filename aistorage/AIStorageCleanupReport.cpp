#include "aistorage/AIStorageCleanupReport.hpp"

#include <algorithm>

#include "scan/SaturatingAdd.hpp"
#include "scan/SizeText.hpp"

namespace veldan {

namespace {

std::string locationsText(int64_t count) {
    return std::to_string(count) + (count == 1 ? " location" : " locations");
}

}  // namespace

int64_t AIStorageCleanupReport::movedCount() const {
    return std::count_if(moves.begin(), moves.end(),
                         [](const AIStorageCleanupMove& move) { return move.moved; });
}

std::set<std::string> AIStorageCleanupReport::movedPaths() const {
    std::set<std::string> paths;
    for (const auto& move : moves) {
        if (move.moved) paths.insert(move.path);
    }
    return paths;
}

int64_t AIStorageCleanupReport::logicalBytesMoved() const {
    int64_t total = 0;
    for (const auto& move : moves) {
        if (move.moved) total = saturatingAdd(total, move.bytes);
    }
    return total;
}

std::string AIStorageCleanupReport::title() const {
    const bool allMoved = !moves.empty() && movedCount() == static_cast<int64_t>(moves.size());
    return allMoved ? "Caches & logs moved to Trash" : "Some locations stayed put";
}

std::string AIStorageCleanupReport::detail() const {
    const int64_t moved = movedCount();
    const auto total = static_cast<int64_t>(moves.size());
    if (moved == 0) return "None of the " + locationsText(total) + " moved to Trash.";
    std::string text = moved == total
                           ? "Moved " + locationsText(moved)
                           : "Moved " + std::to_string(moved) + " of " + locationsText(total);
    return text + " (" + SizeText::string(logicalBytesMoved()) + ") to Trash.";
}

}  // namespace veldan
