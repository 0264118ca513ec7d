#include "app/ExplorationCache.hpp"

#include <gtest/gtest.h>

namespace veldan::test {
namespace {

std::shared_ptr<const SubtreeScan> folderAt(const std::string& path) {
    auto folder = std::make_shared<SubtreeScan>();
    folder->node.path = path;
    return folder;
}

TEST(ExplorationCacheTest, KeepsTheSixtyFourMostRecentlyUsedFoldersOfOneGeneration) {
    ExplorationCache cache;
    for (int index = 0; index < 64; ++index) {
        cache.remember("/f" + std::to_string(index), 3, folderAt("/f" + std::to_string(index)));
    }
    ASSERT_TRUE(cache.find("/f0", 3));  // used again: now the newest
    cache.remember("/f64", 3, folderAt("/f64"));
    EXPECT_EQ(cache.size(), 64u);
    EXPECT_TRUE(cache.find("/f0", 3));
    EXPECT_FALSE(cache.find("/f1", 3));
    EXPECT_EQ(cache.find("/f64", 3)->node.path, "/f64");
    EXPECT_FALSE(cache.find("/f2", 4));  // measured for another map
    cache.clear();
    EXPECT_FALSE(cache.find("/f0", 3));
}

}  // namespace
}  // namespace veldan::test
