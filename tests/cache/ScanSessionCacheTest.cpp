#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>

#include "cache/ScanCache.hpp"
#include "cache/ScanSessionCache.hpp"
#include "platform/Preferences.hpp"
#include "scan/DiskScanner.hpp"
#include "tests/cache/Snapshots.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

using test::IsolatedHome;
using test::TempDir;

class ScanSessionCacheTest : public ::testing::Test {
protected:
    ScanSessionCacheTest() {
        test::makeFolders(root + "/src/deep");
        test::makeFolders(root + "/docs");
        test::writeFileOfSize(root + "/src/deep/code.bin", 40'000);
        test::writeFileOfSize(root + "/docs/notes.txt", 10'000);
        cache.setAccessLevelSource([this] { return access; });
    }

    // Scans `path` through the session cache; `reused` tells whether it walked.
    ScanSnapshot scan(bool& reused, const std::string& path = {}) {
        ScanCancellation cancellation;
        auto outcome = DiskScanner(ScanSettings::current(), &cache)
                           .scan(path.empty() ? root : path, cancellation);
        if (!outcome) throw std::runtime_error("scan failed");
        reused = last && outcome->snapshot.finishedAt == last->finishedAt;
        last = outcome->snapshot;
        return outcome->snapshot;
    }
    bool scanReuses(const std::string& path = {}) {
        bool reused = false;
        scan(reused, path);
        return reused;
    }

    IsolatedHome home;
    TempDir dir;
    std::string root = dir / "project";
    ScanSessionCache cache;
    int access = 1;
    std::optional<ScanSnapshot> last;
};

TEST_F(ScanSessionCacheTest, DropsTheSnapshotWhenAFileChangesAfterTheScan) {
    scanReuses();
    test::writeFileOfSize(root + "/src/deep/more.bin", 30'000);
    bool reused = true;
    const ScanSnapshot fresh = scan(reused);
    EXPECT_FALSE(reused);
    EXPECT_EQ(fresh.visitedFileCount, 3);
}

TEST_F(ScanSessionCacheTest, DoesNotKeepAScanWhoseFolderChangedWhileItWasMeasured) {
    auto preparation = cache.prepare(root, access);
    ASSERT_FALSE(preparation.snapshot);
    ScanCancellation cancellation;
    auto walked = DiskScanner().scan(root, cancellation);
    ASSERT_TRUE(walked);
    test::writeFile(root + "/docs/written-during-the-walk", "x");
    EXPECT_FALSE(preparation.ticket.store(walked->snapshot));
    EXPECT_FALSE(cache.prepare(root, access).snapshot);

    // Without a change the same steps keep it.
    auto again = cache.prepare(root, access);
    ASSERT_TRUE(again.ticket.store(walked->snapshot));
    EXPECT_TRUE(cache.prepare(root, access).snapshot);
}

TEST_F(ScanSessionCacheTest, SeesChangesInFoldersCreatedAfterTheScan) {
    auto identity = ScanRootIdentity::read(root);
    ASSERT_TRUE(identity);
    ScanSessionWatcher watcher(*identity, {});
    const ScanSnapshot snapshot = test::sampleSnapshot(root);
    ASSERT_TRUE(watcher.store(snapshot, access, watcher.generation()));
    test::makeFolders(root + "/new/inner");
    watcher.flush();
    ASSERT_FALSE(watcher.reuse(access));
    // Kept again after the new folder appeared: a change inside it must count too.
    ASSERT_TRUE(watcher.store(snapshot, access, watcher.flush()));
    ASSERT_TRUE(watcher.reuse(access));
    test::writeFile(root + "/new/inner/file", "x");
    watcher.flush();
    EXPECT_FALSE(watcher.reuse(access));
}

TEST_F(ScanSessionCacheTest, RenamingTheFolderAwayDefeatsReuse) {
    scanReuses();
    ASSERT_EQ(::rename(root.c_str(), (dir / "project-old").c_str()), 0);
    test::makeFolders(root + "/src/deep");
    EXPECT_FALSE(scanReuses());
}

TEST_F(ScanSessionCacheTest, ALinkPointedElsewhereDefeatsReuse) {
    // The link lives outside the watched tree, so only the identity check can notice.
    const std::string link = dir / "current";
    test::makeFolders(dir / "copy/src/deep");
    test::makeSymlink(root, link);
    EXPECT_FALSE(scanReuses(link));
    EXPECT_TRUE(scanReuses(link));
    ASSERT_EQ(::unlink(link.c_str()), 0);
    test::makeSymlink(dir / "copy", link);
    EXPECT_FALSE(scanReuses(link));
}

TEST_F(ScanSessionCacheTest, ReusesAnUnchangedFolderUntilTheAccessLevelChanges) {
    EXPECT_FALSE(scanReuses());
    // The walk itself reads every folder; reading is not a change.
    EXPECT_TRUE(scanReuses());
    EXPECT_TRUE(scanReuses());
    access = 2;  // full disk access granted since
    EXPECT_FALSE(scanReuses());
    EXPECT_TRUE(scanReuses());
}

TEST_F(ScanSessionCacheTest, ACleanupInTheFolderDropsTheSnapshot) {
    scanReuses();
    cache.invalidateCurrent({"/somewhere/else", dir / "project-other"});
    EXPECT_TRUE(scanReuses());
    cache.invalidateCurrent({root + "/docs/notes.txt"});
    EXPECT_FALSE(scanReuses());
    cache.invalidateCurrent({dir.path()});  // a folder holding the scanned one
    EXPECT_FALSE(scanReuses());
    cache.invalidateCurrent({"/"});
    EXPECT_FALSE(scanReuses());
    EXPECT_TRUE(scanReuses());
}

TEST_F(ScanSessionCacheTest, NeverReusesATreeThatIsNotWatchedCompletely) {
    platform::FileWatchOptions options;
    options.watchBudget = 2;  // the tree has five folders
    cache.setWatchOptions(options);
    EXPECT_FALSE(scanReuses());
    EXPECT_FALSE(scanReuses());
}

TEST_F(ScanSessionCacheTest, IgnoresItsOwnWritesInTheScannedHome) {
    // A lived-in home: the base folders exist (creating them would be a change like any).
    test::makeFolders(home.cacheHome());
    test::makeFolders(home.configHome());
    test::makeFolders(home / "Documents");
    test::writeFileOfSize(home / "Documents/report.pdf", 20'000);
    EXPECT_FALSE(scanReuses(home.home()));
    ScanCache saved;
    ASSERT_EQ(saved.saveNow(*last, home.home()), ScanCache::SaveOutcome::saved);
    saved.markStale(home.home());
    EXPECT_TRUE(scanReuses(home.home()));
    test::writeFile(home / "Documents/new.txt", "a change of the user's");
    EXPECT_FALSE(scanReuses(home.home()));
}

TEST_F(ScanSessionCacheTest, IgnoresItsOwnWritesThroughALinkedCacheFolder) {
    test::makeFolders(home / "real-cache");
    test::makeFolders(home.configHome());
    test::makeSymlink(home / "real-cache", home / "linked-cache");
    test::ScopedEnvironment environment;
    environment.set("XDG_CACHE_HOME", home / "linked-cache");
    EXPECT_FALSE(scanReuses(home.home()));
    ScanCache saved;
    ASSERT_EQ(saved.saveNow(*last, home.home()), ScanCache::SaveOutcome::saved);
    ASSERT_TRUE(test::exists(home / "real-cache/Veldan"));
    EXPECT_TRUE(scanReuses(home.home()));
}

TEST_F(ScanSessionCacheTest, ReportsTheFlushedGenerationOfItsFolderOnly) {
    EXPECT_FALSE(cache.flushedGeneration(root));
    scanReuses();
    auto before = cache.flushedGeneration(root);
    ASSERT_TRUE(before);
    test::writeFile(root + "/docs/x", "x");
    auto after = cache.flushedGeneration(root);
    ASSERT_TRUE(after);
    EXPECT_GT(*after, *before);
    EXPECT_FALSE(cache.flushedGeneration(dir / "other"));
}

TEST(AdditionalVolumePath, IsTheHomeVolumeWhenItIsNotTheStartupDisk) {
    EXPECT_FALSE(ScanSessionCache::additionalVolumePath("/tmp", "/tmp"));
    struct stat shm {};
    struct stat top {};
    if (::stat("/dev/shm", &shm) != 0 || ::stat("/", &top) != 0 || shm.st_dev == top.st_dev) {
        GTEST_SKIP() << "no second file system to put a home on";
    }
    char pattern[] = "/dev/shm/veldan-home-XXXXXX";
    ASSERT_TRUE(::mkdtemp(pattern));
    const std::string homeFolder = std::string(pattern) + "/home";
    test::makeFolders(homeFolder);
    test::ScopedEnvironment environment;
    environment.set("HOME", homeFolder);
    EXPECT_EQ(ScanSessionCache::additionalVolumePath("/", "/"), "/dev/shm");
    EXPECT_FALSE(ScanSessionCache::additionalVolumePath("/tmp", "/tmp"));
    test::removeTree(pattern);
}

}  // namespace
}  // namespace veldan
