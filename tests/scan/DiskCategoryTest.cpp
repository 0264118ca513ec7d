#include "scan/DiskCategory.hpp"

#include <gtest/gtest.h>

namespace veldan {

TEST(DiskCategory, FirstMatchingRuleWinsInTheFixedOrder) {
    EXPECT_EQ(categoryFor("/Users/me/Library/Caches/com.app"), DiskCategory::safe);
    EXPECT_EQ(categoryFor("/Users/me/Library/Developer/Xcode/DerivedData"), DiskCategory::build);
    EXPECT_EQ(categoryFor("/Users/me/.cache/huggingface/hub"), DiskCategory::models);
    EXPECT_EQ(categoryFor("/Users/me/.claude/projects/node_modules"), DiskCategory::agent);
    EXPECT_EQ(categoryFor("/Users/me/Library/Containers/com.docker.docker"), DiskCategory::docker);
    EXPECT_EQ(categoryFor("/home/me/.local/share/pnpm/store"), DiskCategory::safe);
    EXPECT_EQ(categoryFor("/home/me/store"), DiskCategory::files);  // store alone is not pnpm's
    EXPECT_EQ(categoryFor("/System/Library"), DiskCategory::system);
    EXPECT_EQ(categoryFor("/home/me/code/app/BUILD/out"), DiskCategory::build);
    EXPECT_EQ(categoryFor("/home/me/Documents/report.pdf"), DiskCategory::files);
    EXPECT_EQ(categoryFor("/"), DiskCategory::files);
}

TEST(DiskCategory, ComponentsMatchWholeNeverAsSubstrings) {
    EXPECT_EQ(categoryFor("/home/me/buildings/models2/dockerfile"), DiskCategory::files);
    EXPECT_EQ(categoryFor("/home/me/my.cache/x"), DiskCategory::files);
    EXPECT_EQ(categoryFor("/home/me/Models"), DiskCategory::models);
}

}  // namespace veldan
