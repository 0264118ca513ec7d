#pragma once
// The outcome of one search for generated folders: every folder measured, largest
// first, and the total with overlapping folders counted once.

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "devcleanup/DevCleanupItem.hpp"

namespace veldan {

struct DevCleanupResult {
    std::string revision;               // a fresh UUID per search
    std::string scope;                  // the folder searched
    std::vector<DevCleanupItem> items;  // bytes descending, ties by path ascending
    // Entries that could not be read: inside items, and folders that could not be
    // searched at all.
    int64_t unreadableItems = 0;
    std::chrono::system_clock::time_point scannedAt;
    int64_t bytes = 0;  // unionBytes() of every item
    std::map<std::string, int64_t> itemBytesByPath;

    // The bytes of `items`, a folder lying inside another one of them counted once
    // (its bytes are already in the outer one's).
    static int64_t unionBytes(std::vector<const DevCleanupItem*> items);
};

}  // namespace veldan
