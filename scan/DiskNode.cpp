#include "scan/DiskNode.hpp"

#include <cstdlib>
#include <utility>

#include "platform/Paths.hpp"

namespace veldan {

namespace {

// `path` lies below `folder`; the root "/" takes no second slash.
bool lies(std::string_view path, std::string_view under) {
    return platform::isStrictlyUnder(path, under);
}

int64_t checkedAdd(int64_t a, int64_t b) {
    int64_t sum = 0;
    if (__builtin_add_overflow(a, b, &sum)) std::abort();
    return sum;
}

}  // namespace

DiskNode DiskNode::summary(std::string_view parentPath, int64_t bytes,
                           std::set<std::string> excludedPaths) {
    return summary(parentPath, bytes, std::move(excludedPaths), categoryFor(parentPath));
}

DiskNode DiskNode::summary(std::string_view parentPath, int64_t bytes,
                           std::set<std::string> excludedPaths, DiskCategory category) {
    DiskNode node;
    node.path = platform::joinPath(parentPath, summaryComponent);
    node.name = std::string(summaryName);
    node.bytes = bytes;
    node.category = category;
    node.isDirectory = true;
    node.isSummary = true;
    node.excludedPaths = std::move(excludedPaths);
    return node;
}

bool DiskNode::ordersBefore(const DiskNode& a, const DiskNode& b) {
    return ordersBefore(a.bytes, a.path, b.bytes, b.path);
}

bool DiskNode::ordersBefore(int64_t aBytes, std::string_view aPath, int64_t bBytes,
                            std::string_view bPath) {
    if (aBytes != bBytes) return aBytes > bBytes;
    return aPath < bPath;
}

bool DiskNode::isRelated(std::string_view other) const {
    if (!isSummary) return other == path || lies(other, path) || lies(path, other);
    const std::string parent = platform::parentPath(path);
    if (other == parent || lies(parent, other)) return true;
    if (!lies(other, parent)) return false;
    for (const auto& excluded : excludedPaths) {
        if (other == excluded || lies(other, excluded)) return false;
    }
    return true;
}

bool DiskNode::isRelated(const std::set<std::string>& paths) const {
    for (const auto& other : paths) {
        if (isRelated(other)) return true;
    }
    return false;
}

std::map<DiskCategory, int64_t> DiskNode::categoryTotals() const {
    std::map<DiskCategory, int64_t> totals;
    std::vector<const DiskNode*> stack{this};
    while (!stack.empty()) {
        const DiskNode* node = stack.back();
        stack.pop_back();
        int64_t childBytes = 0;
        for (const auto& child : node->children)
            childBytes = checkedAdd(childBytes, child.bytes);
        const int64_t own = node->bytes > childBytes ? node->bytes - childBytes : 0;
        auto& total = totals[node->category];
        total = checkedAdd(total, own);
        for (auto it = node->children.rbegin(); it != node->children.rend(); ++it) {
            stack.push_back(&*it);
        }
    }
    return totals;
}

}  // namespace veldan
