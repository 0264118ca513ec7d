// Moving selected AI caches and logs to a real Trash in a temporary home: every refusal
// on real folders, in the order the checks run, and a move trash-cli can list.

#include "aistorage/AIStorageCleanupExecutor.hpp"

#include <gtest/gtest.h>
#include <stdio.h>

#include "aistorage/AIStorageScanner.hpp"
#include "platform/MountPoints.hpp"
#include "tests/platform/TrashCli.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/MountNamespace.hpp"

namespace veldan {
namespace {

TEST(AIStorageCleanupExecutor, EachLocationStaysWithTheFirstCheckItFailsOrMovesToTheTrash) {
    test::IsolatedHome home;
    const std::string cacheHome = home.cacheHome();
    for (const std::string& folder :
         {home / ".ollama/models", home / ".lmstudio/models", home / ".claude/cache",
          home / ".codex/cache", home / ".codex/log", cacheHome + "/Cursor",
          home / ".ollama/logs"}) {
        test::makeFolders(folder);
        test::writeFileOfSize(folder + "/data", 20'000);
    }
    test::makeFolders(home / "tracked");
    ScanCancellation cancellation;
    const auto snapshot = AIStorageScanner().scan({}, cancellation);
    ASSERT_TRUE(snapshot);

    struct Row {
        std::string path;
        std::string detail;
    };
    const std::vector<Row> rows = {
        // A folder the user added lies inside it; a model location is never approved anyway.
        {home / ".ollama/models", "This location overlaps a folder you added for tracking."},
        // Passed in by mistake, and also replaced since the scan.
        {home / ".lmstudio/models", "This location is not approved for in-app cleanup."},
        // Deleted and created again: same inode, another birth time.
        {home / ".claude/cache",
         "This location changed or could not be read. Refresh and review it again."},
        // Moved away and linked back: the same folder, reached through a link.
        {home / ".codex/cache",
         "A folder in this path now points elsewhere. Refresh and review it again."},
        // Written to between the checks.
        {home / ".codex/log",
         "This location changed during verification. Refresh and review it again."},
        // Its parent moved into an added folder and linked back between the checks.
        {cacheHome + "/Cursor", "This location now overlaps a folder you added for tracking."},
        {home / ".ollama/logs", "Moved to Trash"},
    };
    ASSERT_TRUE(test::recreateWithSameInode(home / ".lmstudio/models"));
    ASSERT_TRUE(test::recreateWithSameInode(home / ".claude/cache"));
    ASSERT_EQ(::rename((home / ".codex/cache").c_str(), (home / "codex-cache").c_str()), 0);
    test::makeSymlink(home / "codex-cache", home / ".codex/cache");

    std::vector<AIStorageLocation> selected;
    for (const auto& row : rows)
        selected.push_back(*snapshot->location(row.path));
    std::vector<std::vector<std::string>> changed;
    AIStorageCleanupExecutor executor(
        [&](const std::vector<std::string>& moved) { changed.push_back(moved); });
    executor.beforeFinalCheck = [&](const AIStorageLocation& location) {
        if (location.path == home / ".codex/log") {
            test::writeFile(location.path + "/new.log", "x");
        } else if (location.path == cacheHome + "/Cursor") {
            ASSERT_EQ(::rename(cacheHome.c_str(), (home / "tracked/cache").c_str()), 0);
            test::makeSymlink(home / "tracked/cache", cacheHome);
        }
    };
    std::vector<std::tuple<int64_t, int64_t, AIStorageCleanupPhase>> progress;
    const auto report = executor.run(selected, {home / ".ollama/models/pinned", home / "tracked"},
                                     [&](int64_t done, int64_t total, AIStorageCleanupPhase phase) {
                                         progress.emplace_back(done, total, phase);
                                     });

    ASSERT_EQ(report.moves.size(), rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(report.moves[i].path, rows[i].path);
        EXPECT_EQ(report.moves[i].detail, rows[i].detail) << rows[i].path;
        EXPECT_EQ(report.moves[i].moved, i + 1 == rows.size());
        if (!report.moves[i].moved) EXPECT_TRUE(test::exists(rows[i].path)) << rows[i].path;
    }
    EXPECT_EQ(report.title(), "Some locations stayed put");
    EXPECT_EQ(report.logicalBytesMoved(), snapshot->location(home / ".ollama/logs")->bytes);
    EXPECT_FALSE(test::exists(home / ".ollama/logs"));
    EXPECT_TRUE(test::trashListShows(test::trashList(), home / ".ollama/logs"));
    EXPECT_EQ(changed, std::vector<std::vector<std::string>>{{home / ".ollama/logs"}});
    EXPECT_EQ(progress.front(), std::make_tuple(0, 7, AIStorageCleanupPhase::checking));
    EXPECT_EQ(progress.back(), std::make_tuple(7, 7, AIStorageCleanupPhase::finished));
}

TEST(AIStorageCleanupExecutor, OverlapIsJudgedOnThePathAsWrittenAndWithLinksResolved) {
    test::TempDir dir;
    test::makeFolders(dir / "real/cache/inner");
    test::makeSymlink(dir / "real", dir / "link");
    const std::string cache = dir / "link/cache";
    EXPECT_FALSE(AIStorageCleanupExecutor::overlapsTrackedLocation(cache, {}));
    EXPECT_FALSE(AIStorageCleanupExecutor::overlapsTrackedLocation(cache, {dir / "real/cache2"}));
    for (const std::string& tracked :
         {dir / "real/cache/inner", dir / "real", dir / "link/cache/", dir / "real/cache"}) {
        EXPECT_TRUE(AIStorageCleanupExecutor::overlapsTrackedLocation(cache, {tracked})) << tracked;
    }
}

using AIStorageMounts = test::InsideMountNamespace;

TEST(AIStorageMount, CasesPassInAPrivateMountNamespace) {
    test::runInMountNamespace("AIStorageMounts", 1);
}

// A folder bound twice into a location is counted once; another file system mounted inside
// a cache is neither measured nor ever carried into the Trash with it.
TEST_F(AIStorageMounts, DISABLED_MountsInsideLocationsAreMeasuredOnceAndNeverMoved) {
    test::IsolatedHome home;
    const std::string hf = home / ".cache/huggingface";
    const std::string cache = home.cacheHome() + "/ollama";
    for (const std::string& folder : {hf + "/hub", hf + "/mirror", cache + "/disk"})
        test::makeFolders(folder);
    test::writeFileOfSize(hf + "/hub/blob", 300'000);
    test::writeFileOfSize(cache + "/blob", 50'000);
    const test::Mount mirror(hf + "/hub", hf + "/mirror");
    const test::Mount disk;
    test::writeFileOfSize(disk / "never-measured", 100'000);
    const test::Mount inside(disk.top(), cache + "/disk");

    ScanCancellation cancellation;
    const auto snapshot = AIStorageScanner().scan({}, cancellation);
    ASSERT_TRUE(snapshot);
    EXPECT_EQ(snapshot->location(hf)->bytes, test::allocatedBytes(hf + "/hub/blob"));
    EXPECT_EQ(snapshot->location(cache)->bytes, test::allocatedBytes(cache + "/blob"));
    const auto report = AIStorageCleanupExecutor().run({*snapshot->location(cache)}, {});
    ASSERT_EQ(report.moves.size(), 1u);
    EXPECT_EQ(report.moves[0].detail, platform::holdsMountReason);
    EXPECT_TRUE(test::exists(cache + "/disk/never-measured"));
}

}  // namespace
}  // namespace veldan
