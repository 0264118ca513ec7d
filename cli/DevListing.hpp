#pragma once
// Which generated folders `veldan dev` shows (--kind, --older-than) and which of them it
// selects for the Trash (--select).
//
// Contract: pure functions of their arguments, except that selection paths are resolved
// against the file system the way the command's own folder is.

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "devcleanup/DevCleanupResult.hpp"

namespace veldan::cli {

struct DevFilter {
    std::set<DevCleanupKind> kinds;           // empty: every kind
    std::optional<int64_t> olderThanSeconds;  // the folder's own modification time
    std::string olderThanText;                // as given, for the description
};

// "30d", "12h" or "2w" in seconds; nothing for anything else.
std::optional<int64_t> parseAge(std::string_view text);

struct DevListing {
    // Grouped by kind (in kind order), largest first within a kind.
    std::vector<const DevCleanupItem*> shown;
    int64_t shownBytes = 0;  // folders inside other shown folders counted once
    bool overlaps = false;   // shownBytes is less than the plain sum
};

DevListing listItems(const DevCleanupResult& result, const DevFilter& filter,
                     std::chrono::system_clock::time_point now);

struct DevSelection {
    std::vector<DevCleanupItem> items;  // in the order shown
    std::string problem;                // set when a path names no shown folder
};

// `tokens` are "all", kind names ("node", ...) or folder paths. "all" and kinds pick the
// shown folders that were measured completely; a path picks its folder as it is, so the
// move can say why an incomplete one stays.
DevSelection selectItems(const DevListing& listing, const std::vector<std::string>& tokens);

}  // namespace veldan::cli
