#include "devcleanup/DevCleanupResult.hpp"

#include <algorithm>
#include <string_view>

#include "platform/Paths.hpp"
#include "scan/SaturatingAdd.hpp"

namespace veldan {

namespace {

// Byte order, except that "/" comes before every other byte: a folder is then followed
// directly by everything inside it ("a", "a/b", "a/c", "a-b"), never by a sibling whose
// name merely starts the same way.
bool beforeInFolderOrder(std::string_view a, std::string_view b) {
    const auto rank = [](char c) { return c == '/' ? 0 : static_cast<unsigned char>(c) + 1; };
    const auto [left, right] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    if (left == a.end() || right == b.end()) return a.size() < b.size();
    return rank(*left) < rank(*right);
}

}  // namespace

int64_t DevCleanupResult::unionBytes(std::vector<const DevCleanupItem*> items) {
    std::sort(items.begin(), items.end(), [](const DevCleanupItem* a, const DevCleanupItem* b) {
        return beforeInFolderOrder(a->path, b->path);
    });
    int64_t total = 0;
    const std::string* outer = nullptr;
    for (const auto* item : items) {
        if (outer && platform::isSameOrUnder(item->path, *outer)) continue;
        outer = &item->path;
        total = saturatingAdd(total, item->bytes);
    }
    return total;
}

}  // namespace veldan
