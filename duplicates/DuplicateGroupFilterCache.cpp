#include "duplicates/DuplicateGroupFilterCache.hpp"

#include <algorithm>
#include <array>

#include "platform/Collation.hpp"

namespace veldan {

namespace {

// White space and line breaks, including the Unicode ones a pasted query may carry:
// no-break space, next line, the line and paragraph separators and the ideographic space.
constexpr std::array<std::string_view, 5> unicodeSpaces = {"\u00a0", "\u0085", "\u2028", "\u2029",
                                                           "\u3000"};

size_t spaceAt(std::string_view text, size_t at) {
    const char c = text[at];
    if (c == ' ' || (c >= '\t' && c <= '\r')) return 1;
    for (const auto space : unicodeSpaces) {
        if (text.substr(at, space.size()) == space) return space.size();
    }
    return 0;
}

size_t spaceEndingAt(std::string_view text, size_t end) {
    const char c = text[end - 1];
    if (c == ' ' || (c >= '\t' && c <= '\r')) return 1;
    for (const auto space : unicodeSpaces) {
        if (end >= space.size() && text.substr(end - space.size(), space.size()) == space) {
            return space.size();
        }
    }
    return 0;
}

}  // namespace

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
    size_t start = 0;
    while (start < query.size()) {
        const size_t space = spaceAt(query, start);
        if (space == 0) break;
        start += space;
    }
    size_t end = query.size();
    while (end > start) {
        const size_t space = spaceEndingAt(query, end);
        if (space == 0) break;
        end -= space;
    }
    return std::string(query.substr(start, end - start));
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
