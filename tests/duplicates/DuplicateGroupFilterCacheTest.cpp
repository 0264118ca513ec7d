#include "duplicates/DuplicateGroupFilterCache.hpp"

#include <gtest/gtest.h>

#include "tests/duplicates/DuplicateTestSupport.hpp"

namespace veldan {
namespace {

using test::fileRecord;
using test::groupOf;

std::vector<std::string> ids(const std::vector<DuplicateGroup>& groups) {
    std::vector<std::string> out;
    for (const auto& group : groups)
        out.push_back(group.id);
    return out;
}

DuplicateGroup named(std::string id, std::vector<DuplicateFile> files) {
    auto group = groupOf(std::move(files));
    group.id = std::move(id);
    return group;
}

class DuplicateGroupFilterCacheTest : public ::testing::Test {
protected:
    DuplicateGroupFilterCacheTest() {
        result_.revision = "first";
        result_.groups = {
            named("big", {fileRecord("/d/Résumé.pdf", 600'000'000),
                          fileRecord("/d/x/Resume copy.pdf", 600'000'000),
                          fileRecord("/d/y/z.pdf", 600'000'000)}),
            named("mid", {fileRecord("/d/a.mov", 400'000'000), fileRecord("/d/b.mov", 400'000'000),
                          fileRecord("/d/c.mov", 400'000'000)}),
            named("small",
                  {fileRecord("/d/photo.jpg", 9'000'000), fileRecord("/d/PHOTO-2.jpg", 9'000'000)}),
        };
    }
    DuplicateScanResult result_;
    DuplicateGroupFilterCache cache_;
};

TEST_F(DuplicateGroupFilterCacheTest, MinimumExtraBytesHidesSmallerGroupsAndTheirSelections) {
    const DuplicatePathSet selected = {"/d/x/Resume copy.pdf", "/d/y/z.pdf", "/d/b.mov",
                                       "/elsewhere"};
    EXPECT_EQ(ids(cache_.visible(result_, "", DuplicateGroupFilterCache::allSizes)),
              (std::vector<std::string>{"big", "mid", "small"}));
    EXPECT_EQ(cache_.selectedCount(selected), 3);
    EXPECT_EQ(ids(cache_.visible(result_, "", DuplicateGroupFilterCache::tenMegabytes)),
              (std::vector<std::string>{"big", "mid"}));
    // Three 400 MB copies hold 800 MB extra: below 1 GB. Three 600 MB copies hold 1.2 GB.
    EXPECT_EQ(ids(cache_.visible(result_, "", DuplicateGroupFilterCache::oneGigabyte)),
              (std::vector<std::string>{"big"}));
    EXPECT_EQ(cache_.selectedCount(selected), 2);
}

TEST_F(DuplicateGroupFilterCacheTest, QueryMatchesAnyCopyIgnoringCaseAndAccentsAndShowsAllCopies) {
    const auto& shown = cache_.visible(result_, "  resume\n", 0);
    ASSERT_EQ(ids(shown), (std::vector<std::string>{"big"}));
    EXPECT_EQ(shown.front().files.size(), 3u);
    EXPECT_EQ(ids(cache_.visible(result_, "photo-2", 0)), (std::vector<std::string>{"small"}));
    EXPECT_TRUE(cache_.visible(result_, "nothing like it", 0).empty());
    EXPECT_EQ(ids(cache_.visible(result_, "\u00a0 \t", 0)).size(), 3u);  // blank query: no filter
    // Em space and medium mathematical space, as pasted from a document.
    EXPECT_EQ(ids(cache_.visible(result_, "\u2003resume\u205f", 0)),
              (std::vector<std::string>{"big"}));
    EXPECT_EQ(DuplicateGroupFilterCache::trimmedQuery("\u205f\u2003a b\u2003\u2028"), "a b");
}

TEST_F(DuplicateGroupFilterCacheTest, AnswerIsReusedUntilRevisionQueryOrMinimumChange) {
    const auto first = ids(cache_.visible(result_, "mov", 0));
    ASSERT_EQ(first, (std::vector<std::string>{"mid"}));
    // The same key answers from memory even though the groups changed meanwhile.
    result_.groups.pop_back();
    result_.groups[1].id = "renamed";
    EXPECT_EQ(ids(cache_.visible(result_, " mov ", 0)), first);
    result_.revision = "second";
    EXPECT_EQ(ids(cache_.visible(result_, "mov", 0)), (std::vector<std::string>{"renamed"}));
    EXPECT_TRUE(cache_.visible(result_, "mov", DuplicateGroupFilterCache::oneGigabyte).empty());
}

}  // namespace
}  // namespace veldan
