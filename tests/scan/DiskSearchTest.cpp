#include "scan/DiskSearch.hpp"

#include <gtest/gtest.h>

namespace veldan {

namespace {

DiskNode node(const std::string& path, int64_t bytes, std::vector<DiskNode> children = {}) {
    DiskNode n;
    n.path = path;
    n.name = path;
    n.bytes = bytes;
    n.children = std::move(children);
    return n;
}

}  // namespace

TEST(DiskSearch, OffersNonEmptyNodesInStackOrderWithoutSummaries) {
    DiskNode empty = node("/r/empty", 0, {node("/r/empty/hidden", 5)});
    DiskNode summary = DiskNode::summary("/r", 3, {});
    const DiskNode root = node("/r", 20,
                               {node("/r/a", 10, {node("/r/a/x", 6), node("/r/a/y", 4)}),
                                node("/r/b", 7), empty, summary});
    std::vector<std::string> paths;
    for (const DiskNode* found : DiskSearch::visibleNodes(root))
        paths.push_back(found->path);
    EXPECT_EQ(paths, (std::vector<std::string>{"/r/b", "/r/a", "/r/a/y", "/r/a/x"}));
}

}  // namespace veldan
