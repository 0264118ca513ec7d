#pragma once
// One measured folder, file, or summary of a folder's remaining small items.
//
// A plain value: copied freely, compared by value, safe to hand between threads.
// Children are ordered by bytes descending, ties by path ascending (byte order); a
// folder keeps at most 17 of them and one summary ("Other") for the rest.

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "scan/DiskCategory.hpp"

namespace veldan {

struct DiskNode {
    std::string path;  // also the identity: two nodes with the same path are the same item
    std::string name;
    int64_t bytes = 0;
    DiskCategory category = DiskCategory::files;
    std::vector<DiskNode> children;
    bool isDirectory = false;
    bool isSummary = false;
    bool isPartial = false;
    std::set<std::string> excludedPaths;  // summary only: siblings shown on their own

    static constexpr size_t maximumKeptChildren = 17;
    static constexpr std::string_view summaryComponent = "__other";
    static constexpr std::string_view summaryName = "Other";

    const std::string& id() const { return path; }

    // The summary child of `parentPath` covering `bytes` of items not kept individually.
    static DiskNode summary(std::string_view parentPath, int64_t bytes,
                            std::set<std::string> excludedPaths);
    // The same with the category already known (it is the parent folder's).
    static DiskNode summary(std::string_view parentPath, int64_t bytes,
                            std::set<std::string> excludedPaths, DiskCategory category);

    // The children order: more bytes first, then the smaller path.
    static bool ordersBefore(const DiskNode& a, const DiskNode& b);
    static bool ordersBefore(int64_t aBytes, std::string_view aPath, int64_t bBytes,
                             std::string_view bPath);

    // Whether `path` and this node lie on one line of descent (for highlighting). A
    // summary relates to everything in its folder that is not shown on its own.
    bool isRelated(std::string_view path) const;
    bool isRelated(const std::set<std::string>& paths) const;

    // Bytes per category over this subtree: each node adds its own bytes less its
    // children's (clamped at zero) to its category. Overflow is a bug and aborts.
    std::map<DiskCategory, int64_t> categoryTotals() const;

    friend bool operator==(const DiskNode&, const DiskNode&) = default;
};

}  // namespace veldan
