#include "scan/DiskNode.hpp"

#include <gtest/gtest.h>

#include "scan/DiskCategory.hpp"

namespace veldan {

namespace {

DiskNode folder(std::string path, int64_t bytes, std::vector<DiskNode> children = {},
                DiskCategory category = DiskCategory::files) {
    DiskNode node;
    node.name = path.substr(path.rfind('/') + 1);
    node.path = std::move(path);
    node.bytes = bytes;
    node.category = category;
    node.children = std::move(children);
    node.isDirectory = true;
    return node;
}

}  // namespace

TEST(DiskNodeRelation, RelatesAncestorsAndDescendantsButNotNamePrefixes) {
    EXPECT_TRUE(folder("/", 10).isRelated("/Users"));
    const DiskNode a = folder("/Users/a", 10);
    EXPECT_TRUE(a.isRelated("/Users/a"));
    EXPECT_TRUE(a.isRelated("/Users/a/b/c"));
    EXPECT_TRUE(a.isRelated("/"));
    EXPECT_FALSE(a.isRelated("/Users/ab"));
    EXPECT_FALSE(a.isRelated("/Users/b"));
    EXPECT_TRUE(a.isRelated(std::set<std::string>{"/x", "/Users/a/z"}));
    EXPECT_FALSE(a.isRelated(std::set<std::string>{"/x", "/Users/ab"}));
}

TEST(DiskNodeRelation, SummaryCoversItsFolderExceptTheItemsShownOnTheirOwn) {
    const DiskNode summary = DiskNode::summary("/Users", 5, {"/Users/big"});
    EXPECT_EQ(summary.path, "/Users/__other");
    EXPECT_EQ(summary.name, "Other");
    EXPECT_TRUE(summary.isSummary);
    EXPECT_TRUE(summary.isRelated("/Users/small/file"));
    EXPECT_TRUE(summary.isRelated("/Users"));
    EXPECT_TRUE(summary.isRelated("/"));
    EXPECT_FALSE(summary.isRelated("/Users/big/file"));
    EXPECT_FALSE(summary.isRelated("/Users/big"));
    EXPECT_TRUE(summary.isRelated("/Users/bigger"));
    EXPECT_FALSE(summary.isRelated("/Other/place"));

    const DiskNode rootSummary = DiskNode::summary("/", 5, {"/Users"});
    EXPECT_EQ(rootSummary.path, "/__other");
    EXPECT_TRUE(rootSummary.isRelated("/tmp/x"));
    EXPECT_FALSE(rootSummary.isRelated("/Users/me"));
}

TEST(DiskNodeTotals, CreditsOwnBytesPerCategoryClampedAtZero) {
    DiskNode root = folder("/r", 100,
                           {folder("/r/build", 70, {}, DiskCategory::build),
                            folder("/r/cache", 50, {}, DiskCategory::safe)});
    // Children add up to 120 > 100: the root's own share is clamped to 0, not -20.
    auto totals = root.categoryTotals();
    EXPECT_EQ(totals.at(DiskCategory::files), 0);
    EXPECT_EQ(totals.at(DiskCategory::build), 70);
    EXPECT_EQ(totals.at(DiskCategory::safe), 50);
    EXPECT_EQ(totals.count(DiskCategory::models), 0u);

    root.bytes = 200;
    root.children[0].children = {folder("/r/build/x", 30, {}, DiskCategory::build)};
    totals = root.categoryTotals();
    EXPECT_EQ(totals.at(DiskCategory::files), 80);
    EXPECT_EQ(totals.at(DiskCategory::build), 70);
}

}  // namespace veldan
