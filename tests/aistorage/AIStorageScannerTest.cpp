// Measuring AI storage in a temporary home built of real folders, files and links.

#include "aistorage/AIStorageScanner.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <mutex>

#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"

namespace veldan {
namespace {

class AIStorageScannerTest : public ::testing::Test {
protected:
    int64_t write(const std::string& relative, int64_t bytes) {
        const std::string path = home_ / relative;
        test::makeFolders(path.substr(0, path.rfind('/')));
        test::writeFileOfSize(path, bytes);
        return test::allocatedBytes(path);
    }
    AIStorageSnapshot scan(const std::vector<AIStorageCustomLocation>& custom = {}) {
        ScanCancellation cancellation;
        auto snapshot = AIStorageScanner().scan(custom, cancellation);
        if (!snapshot) throw std::runtime_error("scan stopped");
        return std::move(*snapshot);
    }
    const AIStorageLocation& at(const AIStorageSnapshot& snapshot, const std::string& relative) {
        const auto* location = snapshot.location(home_ / relative);
        if (!location) throw std::runtime_error("no location " + relative);
        return *location;
    }

    test::IsolatedHome home_;
};

TEST_F(AIStorageScannerTest, NestedLocationsAreMeasuredSeparatelyAndLeftOutOfTheirContainer) {
    const int64_t own = write(".claude/settings.json", 10'000) + write(".claude/x/y/z", 20'000);
    const int64_t projects = write(".claude/projects/a/chat.jsonl", 300'000);
    const int64_t cache = write(".claude/cache/blob", 50'000);
    const auto snapshot = scan();
    ASSERT_EQ(snapshot.groups.size(), 1u);
    const auto& claude = at(snapshot, ".claude");
    EXPECT_EQ(claude.bytes, own);
    EXPECT_TRUE(claude.hasExcludedLocations);
    EXPECT_EQ(claude.notes(), std::vector<std::string>{"Nested locations are shown separately "
                                                       "and excluded from this size."});
    EXPECT_EQ(at(snapshot, ".claude/projects").bytes, projects);
    EXPECT_EQ(at(snapshot, ".claude/cache").bytes, cache);
    EXPECT_FALSE(snapshot.location(home_ / ".claude/telemetry"));  // missing rows are left out
    EXPECT_EQ(snapshot.bytes(), own + projects + cache);
    // Largest first.
    EXPECT_EQ(snapshot.groups[0].locations[0].path, home_ / ".claude/projects");
    EXPECT_TRUE(AIStorageScanner::isApprovedCleanupLocation(at(snapshot, ".claude/cache")));
    EXPECT_FALSE(AIStorageScanner::isApprovedCleanupLocation(at(snapshot, ".claude/projects")));
}

TEST_F(AIStorageScannerTest, AContainerWithoutItsNestedLocationsIsMeasuredWhole) {
    const int64_t all = write(".claude/history.jsonl", 40'000) + write(".claude/todos/a", 8'000);
    const auto snapshot = scan();
    const auto& claude = at(snapshot, ".claude");
    EXPECT_EQ(claude.bytes, all);
    EXPECT_FALSE(claude.hasExcludedLocations);
    EXPECT_TRUE(claude.notes().empty());
}

TEST_F(AIStorageScannerTest, LinkedLocationsAreReportedNotFollowed) {
    const std::string elsewhere = home_ / "elsewhere";
    write("elsewhere/cache/big", 400'000);
    write("elsewhere/codex/cache/big", 400'000);
    test::makeFolders(home_.cacheHome());
    test::makeSymlink(elsewhere + "/cache", home_.cacheHome() + "/ollama");
    test::makeSymlink(elsewhere + "/codex", home_ / ".codex");
    const auto snapshot = scan();
    for (const std::string path :
         {home_.cacheHome() + "/ollama", home_ / ".codex", home_ / ".codex/cache"}) {
        const auto* location = snapshot.location(path);
        ASSERT_TRUE(location) << path;
        EXPECT_EQ(location->status, AIStorageStatus::linked) << path;
        EXPECT_TRUE(location->isLinkedPath);
        EXPECT_EQ(location->bytes, 0);
        EXPECT_EQ(location->statusText(), "Link unavailable");
        EXPECT_FALSE(AIStorageScanner::isApprovedCleanupLocation(*location));
    }
    EXPECT_EQ(snapshot.bytes(), 0);
}

TEST_F(AIStorageScannerTest, FilesAndFoldersReachedTwiceAreCountedOnceAndDeepTreesWhole) {
    const int64_t file = write(".lmstudio/models/m.gguf", 200'000);
    test::makeHardLink(home_ / ".lmstudio/models/m.gguf", home_ / ".lmstudio/models/again.gguf");
    // Deeper than the walker keeps folders open: parked folders are reopened and finished.
    std::string deep = ".lmstudio/models";
    for (int level = 0; level < 70; ++level)
        deep += "/d";
    const int64_t bottom =
        write(deep + "/bottom", 30'000) + write(".lmstudio/models/d/side", 5'000);
    EXPECT_EQ(at(scan(), ".lmstudio/models").bytes, file + bottom);
}

TEST_F(AIStorageScannerTest,
       AddedFoldersAreMeasuredAndKeepCatalogueLocationsAroundThemFromCleanup) {
    const int64_t cache = write(".cache/ollama/blobs/a", 60'000);
    const int64_t pinned = write(".cache/ollama/pinned/b", 70'000);
    test::makeFolders(home_ / "gone");
    const std::vector<AIStorageCustomLocation> custom = {
        {home_ / ".cache/ollama/pinned", AIStorageToolID::ollama, AIStorageKind::models},
        {home_ / "gone", AIStorageToolID::other, AIStorageKind::appData},
        {"relative/ignored", AIStorageToolID::other, AIStorageKind::cache}};
    test::removeTree(home_ / "gone");
    const auto snapshot = scan(custom);
    const auto& around = at(snapshot, ".cache/ollama");
    EXPECT_EQ(around.bytes, cache);
    EXPECT_TRUE(around.overlapsCustomLocation);
    EXPECT_FALSE(around.cleanable);
    EXPECT_FALSE(AIStorageScanner::isApprovedCleanupLocation(around));
    EXPECT_EQ(around.notes().back(),
              "Overlaps a folder you added for tracking. It stays out of in-app cleanup.");
    const auto& added = at(snapshot, ".cache/ollama/pinned");
    EXPECT_EQ(added.bytes, pinned);
    EXPECT_TRUE(added.isCustom);
    EXPECT_FALSE(AIStorageScanner::isApprovedCleanupLocation(added));
    const auto& gone = at(snapshot, "gone");
    EXPECT_EQ(gone.status, AIStorageStatus::missing);
    EXPECT_EQ(gone.statusText(), "This added folder is no longer available");
    EXPECT_EQ(snapshot.groups.back().tool.name, "Other AI tools");
}

TEST_F(AIStorageScannerTest, ReportsProgressWithCountsAndACancelledScanReturnsNothing) {
    for (int i = 0; i < 3000; ++i)
        write(".codex/sessions/s" + std::to_string(i), 0);
    write(".codex/cache/c", 1000);
    std::mutex mutex;
    std::vector<std::array<int64_t, 3>> calls;
    ScanCancellation cancellation;
    const auto snapshot = AIStorageScanner().scan(
        {}, cancellation,
        [&](const std::string& title, int64_t completed, int64_t total, int64_t entries) {
            std::lock_guard lock(mutex);
            EXPECT_EQ(title, "Finding AI storage");
            calls.push_back({completed, total, entries});
        });
    ASSERT_TRUE(snapshot);
    ASSERT_GE(calls.size(), 2u);
    const int64_t total = calls.front()[1];
    EXPECT_EQ(calls.front(), (std::array<int64_t, 3>{0, total, 0}));
    // Workers report outside the lock, so the last call need not carry the largest counts.
    EXPECT_EQ(std::max_element(calls.begin(), calls.end())->at(0), total);
    int64_t entries = 0;
    for (const auto& call : calls)
        entries = std::max(entries, call[2]);
    EXPECT_GE(entries, 3003);

    ScanCancellation stop;
    EXPECT_FALSE(AIStorageScanner().scan(
        {}, stop, [&](const std::string&, int64_t, int64_t, int64_t) { stop.cancel(); }));
}

}  // namespace
}  // namespace veldan
