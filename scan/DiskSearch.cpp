#include "scan/DiskSearch.hpp"

namespace veldan {

std::vector<const DiskNode*> DiskSearch::visibleNodes(const DiskNode& root) {
    std::vector<const DiskNode*> visible;
    std::vector<const DiskNode*> stack;
    for (const auto& child : root.children)
        stack.push_back(&child);
    while (!stack.empty()) {
        const DiskNode* node = stack.back();
        stack.pop_back();
        if (node->bytes < 1 || node->isSummary) continue;
        visible.push_back(node);
        for (const auto& child : node->children)
            stack.push_back(&child);
    }
    return visible;
}

}  // namespace veldan
