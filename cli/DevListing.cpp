#include "cli/DevListing.hpp"

#include <algorithm>
#include <charconv>

#include "cli/CommandScan.hpp"
#include "cli/Terminal.hpp"
#include "scan/SaturatingAdd.hpp"

namespace veldan::cli {

std::optional<int64_t> parseAge(std::string_view text) {
    if (text.size() < 2) return std::nullopt;
    int64_t unit = 0;
    switch (text.back()) {
        case 'h':
            unit = 3600;
            break;
        case 'd':
            unit = 86400;
            break;
        case 'w':
            unit = 7 * 86400;
            break;
        default:
            return std::nullopt;
    }
    const std::string_view digits = text.substr(0, text.size() - 1);
    int64_t count = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), count);
    int64_t seconds = 0;
    if (error != std::errc() || end != digits.data() + digits.size() || count < 0 ||
        __builtin_mul_overflow(count, unit, &seconds)) {
        return std::nullopt;
    }
    return seconds;
}

DevListing listItems(const DevCleanupResult& result, const DevFilter& filter,
                     std::chrono::system_clock::time_point now) {
    const int64_t nowSeconds =
        std::chrono::duration_cast<std::chrono::seconds>(now.time_since_epoch()).count();
    DevListing listing;
    int64_t sum = 0;
    for (const auto& item : result.items) {
        if (!filter.kinds.empty() && !filter.kinds.contains(item.kind)) continue;
        if (filter.olderThanSeconds && nowSeconds - item.modifiedSeconds < *filter.olderThanSeconds)
            continue;
        listing.shown.push_back(&item);
        sum = saturatingAdd(sum, item.bytes);
    }
    // The result is largest first; a stable sort by kind keeps that within each group.
    std::stable_sort(
        listing.shown.begin(), listing.shown.end(),
        [](const DevCleanupItem* a, const DevCleanupItem* b) { return a->kind < b->kind; });
    listing.shownBytes = DevCleanupResult::unionBytes(listing.shown);
    listing.overlaps = listing.shownBytes < sum;
    return listing;
}

DevSelection selectItems(const DevListing& listing, const std::vector<std::string>& tokens) {
    std::set<DevCleanupKind> kinds;
    std::set<std::string> paths;
    bool all = false;
    for (const auto& token : tokens) {
        if (token == "all") {
            all = true;
        } else if (const auto kind = devCleanupKindNamed(token)) {
            kinds.insert(*kind);
        } else {
            paths.insert(commandRoot(token));
        }
    }
    DevSelection selection;
    for (const auto* item : listing.shown) {
        const bool named = paths.erase(item->path) > 0;
        const bool picked = (all || kinds.contains(item->kind)) && item->unreadableItems == 0;
        if (named || picked) selection.items.push_back(*item);
    }
    if (!paths.empty()) {
        selection.problem = Terminal::display(*paths.begin()) +
                            " is not one of the generated folders shown; nothing was moved.";
    }
    return selection;
}

}  // namespace veldan::cli
