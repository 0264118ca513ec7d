#include "duplicates/DuplicateGroupFilterCache.hpp"

#include <algorithm>

#include "platform/Collation.hpp"
#include "platform/TrimmedText.hpp"

namespace veldan {

std::string_view DuplicateGroupFilterCache::minimumLabel(int64_t minimumExtraBytes) {
    switch (minimumExtraBytes) {
        case allSizes:
            return "All sizes";
        case tenMegabytes:
            return "10 MB+";
        case hundredMegabytes:
            return "100 MB+";
        case oneGigabyte:
            return "1 GB+";
        default:
            return {};
    }
}

std::string DuplicateGroupFilterCache::trimmedQuery(std::string_view query) {
    return platform::trimmedText(query);
}

const std::vector<DuplicateGroup>& DuplicateGroupFilterCache::visible(
    const DuplicateScanResult& result, std::string_view query, int64_t minimumExtraBytes) {
    Key key{result.revision, trimmedQuery(query), minimumExtraBytes};
    if (key_ && *key_ == key) return groups_;
    groups_.clear();
    visiblePaths_.clear();
    for (const auto& group : result.groups) {
        if (group.extraBytes() < minimumExtraBytes) continue;
        if (!key.query.empty() &&
            std::none_of(group.files.begin(), group.files.end(), [&](const DuplicateFile& file) {
                return platform::localizedContains(file.path, key.query);
            })) {
            continue;
        }
        for (const auto& file : group.files)
            visiblePaths_.insert(file.path);
        groups_.push_back(group);
    }
    key_ = std::move(key);
    return groups_;
}

int64_t DuplicateGroupFilterCache::selectedCount(const DuplicatePathSet& selectedPaths) const {
    return std::count_if(selectedPaths.begin(), selectedPaths.end(),
                         [&](const std::string& path) { return visiblePaths_.contains(path); });
}

}  // namespace veldan
