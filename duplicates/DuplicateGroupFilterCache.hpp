#pragma once
// The groups of a duplicate result that the results list shows: those with at least a
// minimum of extra bytes and, with a query, those where any copy's path contains it
// (ignoring case and accents). A shown group always lists all its copies. The answer is
// remembered and reused while the result revision, the trimmed query and the minimum
// stay the same.
//
// Contract: one cache per view, used on one thread. References returned stay valid until
// the next call to visible().

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "duplicates/DuplicateGroup.hpp"
#include "duplicates/DuplicateSelection.hpp"

namespace veldan {

class DuplicateGroupFilterCache {
public:
    // Minimum extra-size choices of the results list.
    static constexpr int64_t allSizes = 0;
    static constexpr int64_t tenMegabytes = 10'000'000;
    static constexpr int64_t hundredMegabytes = 100'000'000;
    static constexpr int64_t oneGigabyte = 1'000'000'000;
    // "All sizes", "10 MB+", "100 MB+", "1 GB+"; empty for any other value.
    static std::string_view minimumLabel(int64_t minimumExtraBytes);

    // `query` without surrounding white space and line breaks.
    static std::string trimmedQuery(std::string_view query);

    const std::vector<DuplicateGroup>& visible(const DuplicateScanResult& result,
                                               std::string_view query, int64_t minimumExtraBytes);
    // How many of `selectedPaths` belong to the groups last returned by visible().
    int64_t selectedCount(const DuplicatePathSet& selectedPaths) const;

private:
    struct Key {
        std::string revision;
        std::string query;
        int64_t minimumExtraBytes = 0;
        friend bool operator==(const Key&, const Key&) = default;
    };
    std::optional<Key> key_;
    std::vector<DuplicateGroup> groups_;
    std::unordered_set<std::string> visiblePaths_;
};

}  // namespace veldan
