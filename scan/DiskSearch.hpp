#pragma once
// The nodes that search may offer: every node of a tree below its root that holds at
// least one byte, summaries excluded. Empty nodes are dropped with their subtrees.

#include <vector>

#include "scan/DiskNode.hpp"

namespace veldan {

class DiskSearch {
public:
    // In stack order: the last child of a folder is visited first. Pointers stay valid
    // while `root` is alive and unchanged.
    static std::vector<const DiskNode*> visibleNodes(const DiskNode& root);
};

}  // namespace veldan
