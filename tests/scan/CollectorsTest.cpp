// The bounded collections of a scan: kept children, largest files and issue samples.

#include <gtest/gtest.h>

#include "scan/KeptChildren.hpp"
#include "scan/LargestFileCollector.hpp"
#include "scan/ScanIssueCollector.hpp"
#include "scan/ScanIssueReason.hpp"
#include "scan/ScanIssueSamples.hpp"

namespace veldan {

namespace {

DiskNode file(const std::string& name, int64_t bytes) {
    DiskNode node;
    node.path = "/f/" + name;
    node.name = name;
    node.bytes = bytes;
    return node;
}

}  // namespace

TEST(KeptChildren, EighteenEqualFilesKeepTheSeventeenSmallestPathsAndOneOther) {
    KeptChildren kept;
    // Offered in reverse name order so the rule, not the arrival order, decides.
    for (int i = 17; i >= 0; --i)
        kept.keepLargest(file("f" + std::string(1, char('a' + i)), 10));
    auto children = std::move(kept).finish("/f", DiskCategory::files);
    ASSERT_EQ(children.size(), 18u);
    // The summary sorts like any child: equal bytes, and "/f/__other" < "/f/fa".
    const DiskNode& other = children.front();
    EXPECT_TRUE(other.isSummary);
    EXPECT_EQ(other.bytes, 10);
    EXPECT_EQ(other.path, "/f/__other");
    EXPECT_EQ(other.excludedPaths.size(), 17u);
    EXPECT_EQ(other.excludedPaths.count("/f/fr"), 0u);  // the 18th is inside Other
    for (int i = 0; i < 17; ++i)
        EXPECT_EQ(children[i + 1].name, "f" + std::string(1, char('a' + i)));
}

TEST(KeptChildren, LargerNodesDisplaceTheSmallestAndSummaryTakesItsOrderedPlace) {
    KeptChildren kept;
    for (int i = 0; i < 17; ++i)
        kept.keepLargest(file("s" + std::to_string(100 + i), 1));
    EXPECT_FALSE(kept.wouldKeep(1, "zzz"));
    EXPECT_TRUE(kept.wouldKeep(1, "a"));  // equal bytes, smaller path
    EXPECT_TRUE(kept.wouldKeep(2, "zzz"));
    kept.keepLargest(file("big", 50));
    kept.hide(30);  // items never offered as nodes
    auto children = std::move(kept).finish("/f", DiskCategory::files);
    ASSERT_EQ(children.size(), 18u);
    EXPECT_EQ(children[0].name, "big");
    EXPECT_TRUE(children[1].isSummary);  // 31 bytes: one displaced file plus the hidden 30
    EXPECT_EQ(children[1].bytes, 31);
}

TEST(KeptChildren, HiddenEmptyItemsStillGetASummary) {
    KeptChildren kept;
    for (int i = 0; i < 18; ++i)
        kept.keepLargest(file("e" + std::to_string(10 + i), 0));
    auto children = std::move(kept).finish("/f", DiskCategory::files);
    ASSERT_EQ(children.size(), 18u);
    EXPECT_TRUE(std::any_of(children.begin(), children.end(),
                            [](const DiskNode& n) { return n.isSummary && n.bytes == 0; }));
}

TEST(LargestFileCollector, KeepsTwentyFromOneHundredMegabytesOrderedByBytesThenPath) {
    LargestFileCollector collector;
    collector.record("/a/just-below", 99'999'999);
    collector.record("/a/threshold", 100'000'000);
    EXPECT_EQ(collector.files(), (std::vector<LargeFile>{{"/a/threshold", 100'000'000}}));
    for (int i = 0; i < 25; ++i)
        collector.record("/b/" + std::to_string(10 + i), 200'000'000 + i);
    collector.record("/b/tie-a", 200'000'024);
    auto files = collector.files();
    ASSERT_EQ(files.size(), 20u);
    EXPECT_EQ(files[0].path, "/b/34");
    EXPECT_EQ(files[1].path, "/b/tie-a");  // equal bytes: "/b/34" sorts first
    EXPECT_EQ(files[2].path, "/b/33");
    EXPECT_EQ(files.back().bytes, 200'000'006);
    collector.record("/c/too-small", 200'000'005);
    EXPECT_EQ(collector.files().back().bytes, 200'000'006);
}

TEST(ScanIssueSamples, KeepsTheFirstTwentyAndMakesRoomForEachActionableReason) {
    ScanIssueCollector collector;
    for (int i = 0; i < 21; ++i) {
        collector.record("/x/" + std::to_string(i), ScanIssueReason::couldNotRead);
    }
    auto totals = collector.totals();
    EXPECT_EQ(totals.count, 21);
    ASSERT_EQ(totals.paths.size(), 20u);
    EXPECT_EQ(totals.paths.front(), "/x/0");
    EXPECT_EQ(totals.paths.back(), "/x/19");

    collector.record("/denied/1", ScanIssueReason::accessDenied);     // evicts /x/0
    collector.record("/denied/2", ScanIssueReason::accessDenied);     // reason already shown
    collector.recordSkippedPhotosLibrary("/p/Photos.photoslibrary");  // evicts /x/1
    collector.record("/x/5", ScanIssueReason::accessDenied);          // already sampled
    totals = collector.totals();
    EXPECT_EQ(totals.count, 24);  // skipped libraries are counted apart
    EXPECT_EQ(totals.skippedPhotosLibraries, 1);
    ASSERT_EQ(totals.paths.size(), 20u);
    EXPECT_EQ(totals.reasons.at("/denied/1"), ScanIssueReason::accessDenied);
    EXPECT_EQ(totals.reasons.count("/denied/2"), 0u);
    EXPECT_EQ(totals.reasons.at("/p/Photos.photoslibrary"), ScanIssueReason::photosAccessRequired);
    EXPECT_EQ(totals.reasons.count("/x/0"), 0u);
    EXPECT_EQ(totals.reasons.count("/x/1"), 0u);
    EXPECT_EQ(totals.reasons.at("/x/5"), ScanIssueReason::couldNotRead);
    EXPECT_EQ(totals.paths.back(), "/p/Photos.photoslibrary");
    EXPECT_EQ(totals.reasons.size(), totals.paths.size());
}

TEST(ScanIssueSamples, AFullSampleOfActionableReasonsAdmitsNothingMore) {
    std::vector<std::string> paths;
    std::map<std::string, std::string> reasons;
    for (int i = 0; i < 20; ++i) {
        ScanIssueSamples::add("/d/" + std::to_string(i), ScanIssueReason::accessDenied, paths,
                              reasons);
    }
    ScanIssueSamples::add("/m/lib", ScanIssueReason::mediaAccessRequired, paths, reasons);
    EXPECT_EQ(paths.size(), 20u);
    EXPECT_EQ(reasons.count("/m/lib"), 0u);
}

}  // namespace veldan
