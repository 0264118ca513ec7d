#include <gtest/gtest.h>
#include <time.h>

#include "cache/ScanReportBuilder.hpp"
#include "tests/cache/Snapshots.hpp"
#include "tests/support/IsolatedHome.hpp"

namespace veldan {
namespace {

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    size_t start = 0;
    for (;;) {
        const size_t end = text.find('\n', start);
        lines.push_back(text.substr(start, end - start));
        if (end == std::string::npos) return lines;
        start = end + 1;
    }
}

bool hasLineStarting(const std::string& text, std::string_view prefix) {
    for (const auto& line : linesOf(text)) {
        if (line.rfind(prefix, 0) == 0) return true;
    }
    return false;
}

Recommendation recommendation(RecommendationKind kind, std::string title, int64_t bytes,
                              size_t paths) {
    Recommendation made;
    made.kind = kind;
    made.title = std::move(title);
    made.bytes = bytes;
    for (size_t i = 0; i < paths; ++i)
        made.paths.push_back("/p/" + std::to_string(i));
    return made;
}

class ScanReportBuilderTest : public ::testing::Test {
protected:
    ScanReportBuilderTest() {
        environment.set("TZ", "UTC");
        ::tzset();
        snapshot.finishedAt =
            std::chrono::system_clock::time_point(std::chrono::seconds(1'795'264'745));
        style.locale = platform::LocaleFormat("en_US");
    }
    ~ScanReportBuilderTest() override { ::tzset(); }

    std::string build(const std::vector<Recommendation>& recommendations = {}) const {
        return ScanReportBuilder::build("/p", snapshot, recommendations, "Complete", style);
    }

    test::ScopedEnvironment environment;
    ScanSnapshot snapshot = test::sampleSnapshot("/p");
    ScanReportStyle style;
};

TEST_F(ScanReportBuilderTest, WritesTheSummaryLineForLine) {
    const std::string report =
        build({recommendation(RecommendationKind::safe, "npm cache", 1'500'000'000, 1),
               recommendation(RecommendationKind::review, "Old downloads", 260'000'000, 2)});
    const std::vector<std::string> expected = {
        "Veldan scan summary",
        "Scope: /p",
        "Scanned: Nov 21, 2026, 12:39 PM",
        "Status: Complete",
        "Disk space",
        "Mapped: 11 GB (11,000,000,000 bytes)",
        "Sizes use allocated file space. Hard links are counted once; APFS copies can share "
        "blocks.",
        "Free at scan start: 123 GB (123,456,789,012 bytes)",
        "Total: 995 GB (994,662,584,320 bytes)",
        "Outside map: 860 GB (860,205,795,308 bytes)",
        "Items not measured: 3",
        "Photos libraries skipped without separate access: 1",
        "Folders visited: 1,234",
        "Files visited: 56,789",
        "Unmeasured paths (first 2)",
        "/p/locked \u2014 Access denied",
        "/p/gone\xFF \u2014 Moved or removed during the scan",
        "",
        "Largest mapped items",
        "7.0 GB (7,000,000,000 bytes)  /p/node_modules",
        "3.0 GB (3,000,000,000 bytes)  /p/caf\xE9-\xFF\xFE",
        "1.0 GB (1,000,000,000 bytes)  /p/model.gguf",
        "",
        "Largest files (100 MB or more)",
        "2.5 GB (2,500,000,000 bytes)  /p/caf\xE9-\xFF\xFE/r\xC3\xA9sum\xC3\xA9.pdf",
        "1.0 GB (1,000,000,000 bytes)  /p/model.gguf",
        "",
        "Recommendations",
        "Safe to remove: npm cache \u2014 1.5 GB (1,500,000,000 bytes); 1 location",
        "Review first: Old downloads \u2014 0.3 GB (260,000,000 bytes); 2 locations",
    };
    EXPECT_EQ(linesOf(report), expected);
    EXPECT_NE(report.back(), '\n');
}

TEST_F(ScanReportBuilderTest, SaysWhenTheSpaceOutsideTheMapIsUnknown) {
    snapshot.volume = VolumeSpace{0, 0};
    std::string report = build();
    EXPECT_TRUE(hasLineStarting(report, "Volume capacity: unavailable"));
    for (const char* absent : {"Free at scan start", "Total:", "Outside map"})
        EXPECT_FALSE(hasLineStarting(report, absent)) << absent;

    snapshot.volume = VolumeSpace{995'000'000'000 - 10'000'000'000, 995'000'000'000};
    const auto lines = linesOf(build());
    EXPECT_NE(std::find(lines.begin(), lines.end(),
                        "Outside map: cannot reconcile; mapped file sizes exceed reported used "
                        "volume space"),
              lines.end());
    snapshot.volume = VolumeSpace{995'000'000'000 - 11'000'000'000, 995'000'000'000};
    EXPECT_TRUE(hasLineStarting(build(), "Outside map: 0 GB (0 bytes)"));
}

TEST_F(ScanReportBuilderTest, ListsSkippedLibrariesOnlyWhenThereAreAny) {
    snapshot.skippedPhotosLibraries = 0;
    snapshot.skippedMusicLibraries = 0;
    std::string report = build();
    EXPECT_FALSE(hasLineStarting(report, "Photos libraries"));
    EXPECT_FALSE(hasLineStarting(report, "Music libraries"));
    snapshot.skippedMusicLibraries = 2;
    report = build();
    EXPECT_FALSE(hasLineStarting(report, "Photos libraries"));
    EXPECT_TRUE(hasLineStarting(report, "Music libraries skipped without separate access: 2"));
}

TEST_F(ScanReportBuilderTest, LeavesOutEmptySections) {
    snapshot.unreadablePaths.clear();
    snapshot.unreadableReasons.reset();
    snapshot.largestFiles.clear();
    const std::string report = build();
    EXPECT_FALSE(hasLineStarting(report, "Unmeasured paths"));
    EXPECT_FALSE(hasLineStarting(report, "Largest files"));
    EXPECT_FALSE(hasLineStarting(report, "Recommendations"));
    EXPECT_EQ(linesOf(report).back(), "1.0 GB (1,000,000,000 bytes)  /p/model.gguf");
}

TEST_F(ScanReportBuilderTest, ListsAtMostTwelveMappedItemsAndNeverTheSummary) {
    snapshot.root.children.clear();
    for (int i = 0; i < 17; ++i) {
        snapshot.root.children.push_back(
            DiskNode{"/p/item" + std::to_string(i), "item", 1'000'000 - i});
    }
    snapshot.root.children.insert(snapshot.root.children.begin(),
                                  DiskNode::summary("/p", 9'000'000, {}));
    const auto lines = linesOf(build());
    const auto heading = std::find(lines.begin(), lines.end(), "Largest mapped items");
    ASSERT_NE(heading, lines.end());
    std::vector<std::string> items(heading + 1, std::find(heading, lines.end(), ""));
    ASSERT_EQ(items.size(), 12u);
    EXPECT_EQ(items.front(), "1 MB (1,000,000 bytes)  /p/item0");
    EXPECT_EQ(items.back(), "1000 KB (999,989 bytes)  /p/item11");
}

TEST_F(ScanReportBuilderTest, WritesThePartialSummary) {
    const auto stopped = linesOf(ScanReportBuilder::buildPartial(
        "/p", snapshot.root, VolumeSpace{5'000'000'000, 20'000'000'000}, {{"/p/big", 150'000'000}},
        1'500, 20'000, false, style));
    const std::vector<std::string> expected = {
        "Veldan partial scan summary",
        "Scope: /p",
        "Status: Stopped before the scan finished; all sizes below are measured so far.",
        "Mapped so far: 11 GB (11,000,000,000 bytes)",
        "Sizes use allocated file space. Hard links are counted once; APFS copies can share "
        "blocks.",
        "Folders visited: 1,500",
        "Files visited: 20,000",
        "Free at scan start: 5.0 GB (5,000,000,000 bytes)",
        "Volume total: 20 GB (20,000,000,000 bytes)",
        "",
        "Largest mapped items",
        "7.0 GB (7,000,000,000 bytes)  /p/node_modules",
        "3.0 GB (3,000,000,000 bytes)  /p/caf\xE9-\xFF\xFE",
        "1.0 GB (1,000,000,000 bytes)  /p/model.gguf",
        "",
        "Largest files (100 MB or more)",
        "0.1 GB (150,000,000 bytes)  /p/big",
    };
    EXPECT_EQ(stopped, expected);

    const std::string running =
        ScanReportBuilder::buildPartial("/p", snapshot.root, std::nullopt, {}, 1, 2, true, style);
    EXPECT_EQ(linesOf(running)[2],
              "Status: Scan in progress; all sizes below are measured so far.");
    EXPECT_FALSE(hasLineStarting(running, "Free at scan start"));
    EXPECT_FALSE(hasLineStarting(running, "Largest files"));
}

TEST_F(ScanReportBuilderTest, ShowsPathsThroughTheCallersFilter) {
    style.pathText = [](std::string_view path) { return "<" + std::string(path) + ">"; };
    const auto lines = linesOf(build());
    EXPECT_EQ(lines[1], "Scope: </p>");
    EXPECT_EQ(lines[15], "</p/locked> \u2014 Access denied");
}

}  // namespace
}  // namespace veldan
