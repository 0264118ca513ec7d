#pragma once
// The result of one AI storage scan: the tools that keep data on this computer, each
// with its measured locations, largest first.

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "aistorage/AIStorageGroup.hpp"

namespace veldan {

struct AIStorageSnapshot {
    std::vector<AIStorageGroup> groups;
    std::chrono::system_clock::time_point scannedAt;
    int64_t unreadableItems = 0;  // entries inside the locations that could not be read

    int64_t bytes() const;  // saturating sum of the group totals
    // The location with exactly this path, or null.
    const AIStorageLocation* location(const std::string& path) const;
};

}  // namespace veldan
