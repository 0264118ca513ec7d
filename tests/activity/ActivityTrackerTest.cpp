// The tracker keeps its history in a real Activity.plist under a temporary
// XDG_STATE_HOME: what it records, when the daily check is due, and what survives
// damaged files, other processes writing at the same time and a full disk.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "activity/ActivityArchiveCodec.hpp"
#include "activity/ActivityTracker.hpp"
#include "tests/cache/LibplistEdit.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/MountNamespace.hpp"

namespace veldan {

namespace {

using Clock = std::chrono::system_clock;
using namespace std::chrono_literals;

ScanSnapshot scanOf(const std::string& root, int64_t freeBytes) {
    ScanSnapshot snapshot;
    snapshot.root.path = root;
    snapshot.root.bytes = 5'000;
    snapshot.volume = {freeBytes, 10 * freeBytes};
    snapshot.unreadableItems = 2;
    return snapshot;
}

ActivityArchive onDisk(const std::string& path) {
    return ActivityArchiveCodec::decode(test::readFile(path)).archive;
}

}  // namespace

TEST(ActivityTracker, OnlyAScanOfTheStartupDiskAddsASnapshot) {
    test::IsolatedHome home;
    ActivityTracker tracker;
    TrackedDownload download;
    download.path = home / "Downloads/a.iso";
    const auto at = std::chrono::floor<std::chrono::microseconds>(Clock::now());
    tracker.recordScan(scanOf(home.home(), 700), {download}, at);
    auto history = tracker.history();
    EXPECT_TRUE(history.snapshots.empty());
    EXPECT_EQ(history.downloads, std::vector<TrackedDownload>{download});
    EXPECT_EQ(history.lastDailyCheckAt, at);

    tracker.recordScan(scanOf("/", 700), {}, at);
    tracker.drain();
    history = onDisk(tracker.archivePath());
    ASSERT_EQ(history.snapshots.size(), 1u);
    EXPECT_EQ(history.snapshots[0], (ActivitySnapshot{at, 700, 5'000, 2}));
    EXPECT_TRUE(history.downloads.empty());
    EXPECT_EQ(tracker.archivePath(), home.stateHome() + "/Veldan/Activity.plist");
}

TEST(ActivityTracker, TheDailyCheckIsDueAfter24HoursNot23) {
    test::IsolatedHome home;
    ActivityTracker tracker;
    const auto last = Clock::now();
    EXPECT_FALSE(tracker.isDailyCheckDue(last)) << "off by default";
    ASSERT_TRUE(tracker.setDailyEnabled(true));
    EXPECT_TRUE(tracker.isDailyCheckDue(last)) << "never checked";
    tracker.recordScan(scanOf("/", 1), {}, last);

    const struct {
        std::chrono::seconds after;
        bool due;
    } cases[] = {{23h, false}, {24h - 1s, false}, {24h, true},      {72h, true},
                 {-1h, false}, {-24h, false},     {-24h - 1s, true}};
    for (const auto& c : cases) {
        EXPECT_EQ(tracker.isDailyCheckDue(last + c.after), c.due) << c.after.count() << " s";
    }
    tracker.setChecking(true);
    EXPECT_FALSE(tracker.isDailyCheckDue(last + 48h)) << "a check is running";
    tracker.setChecking(false);
    ASSERT_TRUE(tracker.setDailyEnabled(false));
    EXPECT_FALSE(tracker.isDailyCheckDue(last + 48h));
}

TEST(ActivityTracker, DamagedAndNewerFilesNeverCrashAndANewerOneIsNeverOverwritten) {
    test::IsolatedHome home;
    const std::string file = ActivityTracker::defaultArchivePath();
    {
        ActivityTracker tracker;
        tracker.recordTrash("first", 100, 1);
    }
    EXPECT_EQ(ActivityTracker().history().totalMovedToTrashItems, 1) << "read back at start";

    // Damaged while a tracker runs: its next write rebuilds the file from what it knew.
    ActivityTracker running;
    test::writeFile(file, "bplist00 not really");
    running.recordTrash("second", 100, 1);
    running.drain();
    EXPECT_EQ(onDisk(file).totalMovedToTrashItems, 2);

    // Damaged before start: the history starts empty.
    test::writeFile(file, std::string(5000, '\xff'));
    EXPECT_EQ(ActivityTracker().history(), ActivityArchive{});
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_EQ(ActivityTracker().history(), ActivityArchive{}) << "a folder in its place";
    std::filesystem::remove(file);

    ActivityArchive known;
    known.recordCleanup(
        {"A", Clock::now(), "from a newer Veldan", CleanupActivity::Kind::toolCleanup, 0, 1});
    const std::string newer = test::editWithLibplist(
        ActivityArchiveCodec::encode(known),
        [](plist_t root) { plist_dict_set_item(root, "version", plist_new_uint(2)); });
    test::writeFile(file, newer);
    ActivityTracker older;
    older.recordTrash("third", 5, 1);
    older.drain();
    EXPECT_EQ(test::readFile(file), newer);
    EXPECT_EQ(older.history().activities.size(), 2u) << "kept in memory";
}

TEST(ActivityTracker, TwoProcessesWritingAtOnceLoseNoEntry) {
    test::IsolatedHome home;
    constexpr int processes = 4;
    constexpr int each = 20;
    std::vector<pid_t> children;
    for (int p = 0; p < processes; ++p) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            {
                ActivityTracker tracker;
                for (int i = 0; i < each; ++i)
                    tracker.recordToolCleanup("process " + std::to_string(p), 1);
            }
            ::_exit(0);
        }
        children.push_back(child);
    }
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    const auto history = onDisk(ActivityTracker::defaultArchivePath());
    EXPECT_EQ(history.totalToolCleanups, processes * each);
    EXPECT_EQ(history.activities.size(), size_t(processes * each));
}

TEST(ActivityTracker, AFullDiskKeepsTheEarlierFileWholeAndTheNextChangeWritesWhatWasLost) {
    test::runInMountNamespace("ActivityTrackerInside", 1);
}

class ActivityTrackerInside : public test::InsideMountNamespace {};

TEST_F(ActivityTrackerInside, DISABLED_FullDisk) {
    test::IsolatedHome home;
    const test::Mount small("size=64k");
    test::ScopedEnvironment environment;
    environment.set("XDG_STATE_HOME", small.top());
    const std::string folder = small.top();
    ActivityTracker tracker;
    tracker.recordTrash("kept", 1, 1);
    tracker.drain();
    const std::string before = test::readFile(tracker.archivePath());

    std::string filler(4096, 'x');
    FILE* fill = std::fopen((folder + "/filler").c_str(), "w");
    ASSERT_NE(fill, nullptr);
    while (std::fwrite(filler.data(), 1, filler.size(), fill) == filler.size() &&
           std::fflush(fill) == 0) {
    }
    std::fclose(fill);
    tracker.recordTrash("lost for now", 1, 1);
    tracker.drain();
    EXPECT_EQ(test::readFile(tracker.archivePath()), before);
    EXPECT_EQ(tracker.history().activities.size(), 2u) << "the history in memory stays";

    std::filesystem::remove(folder + "/filler");
    tracker.recordTrash("third", 1, 1);
    tracker.drain();
    EXPECT_EQ(onDisk(tracker.archivePath()).activities.size(), 3u);
}

}  // namespace veldan
