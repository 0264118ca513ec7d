#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <poll.h>

#include "cache/ScanCache.hpp"
#include "tests/cache/LibplistEdit.hpp"
#include "tests/cache/Snapshots.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/Process.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

using namespace std::chrono_literals;
using test::IsolatedHome;
using test::TempDir;

class ScanCacheTest : public ::testing::Test {
protected:
    ScanCacheTest() { test::makeFolders(scope); }

    std::string file() const { return cache.fileFor(scope); }
    void write(const std::string& contents) const {
        test::makeFolders(cache.folder());
        test::writeFile(file(), contents);
    }
    std::string savedBytes() {
        EXPECT_EQ(cache.saveNow(snapshot, scope), ScanCache::SaveOutcome::saved);
        return test::readFile(file());
    }

    IsolatedHome home;
    TempDir dir;
    std::string scope = dir / "Projects";
    ScanCache cache;
    ScanSnapshot snapshot = test::sampleSnapshot(scope);
};

TEST_F(ScanCacheTest, NamesEachScopesFileByTheDigestOfItsPath) {
    EXPECT_EQ(ScanCache::scopeDigest("/"),
              "8a5edab282632443219e051e4ade2d1d5bbc671c781051bf1437897cbdfea0f1");
    EXPECT_EQ(ScanCache::scopeDigest("/tmp/../"), ScanCache::scopeDigest("/"));
    EXPECT_EQ(cache.folder(), home.cacheHome() + "/Veldan/Scans");
    EXPECT_EQ(file(), cache.folder() + "/" + ScanCache::scopeDigest(scope) + ".plist");
}

TEST_F(ScanCacheTest, LoadsWhatItSavedOnItsQueueOrNow) {
    EXPECT_FALSE(cache.load(scope));
    cache.save(snapshot, scope);
    cache.drain();
    EXPECT_EQ(cache.load(scope), snapshot);
    ScanSnapshot later = snapshot;
    later.visitedFileCount += 1;
    ASSERT_EQ(cache.saveNow(later, scope), ScanCache::SaveOutcome::saved);
    EXPECT_EQ(cache.load(scope), later);
    EXPECT_EQ(cache.load(scope + "/."), later);  // the same folder, standardized
}

TEST_F(ScanCacheTest, CreatesPrivateFoldersTaggedAsCache) {
    ASSERT_EQ(cache.saveNow(snapshot, scope), ScanCache::SaveOutcome::saved);
    for (const auto& folder : {home.cacheHome() + "/Veldan", cache.folder()}) {
        struct stat status {};
        ASSERT_EQ(::stat(folder.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0700u) << folder;
    }
    EXPECT_EQ(test::readFile(cache.folder() + "/CACHEDIR.TAG")
                  .rfind("Signature: 8a477f597d28d172789f06886806bc55\n", 0),
              0u);
}

TEST_F(ScanCacheTest, IgnoresTheFileOfAnotherScope) {
    const std::string other = dir / "Other";
    test::makeFolders(other);
    ASSERT_EQ(cache.saveNow(snapshot, other), ScanCache::SaveOutcome::saved);
    write(test::readFile(cache.fileFor(other)));
    EXPECT_FALSE(cache.load(scope));
    EXPECT_TRUE(cache.load(other));
}

TEST_F(ScanCacheTest, IgnoresLinksAndFoldersInPlaceOfTheFile) {
    const std::string good = savedBytes();
    test::writeFile(dir / "elsewhere.plist", good);
    ASSERT_EQ(::unlink(file().c_str()), 0);
    test::makeSymlink(dir / "elsewhere.plist", file());
    EXPECT_FALSE(cache.load(scope));
    // Saving replaces the link and never writes through it.
    test::writeFile(dir / "precious.txt", "precious");
    ASSERT_EQ(::unlink(file().c_str()), 0);
    test::makeSymlink(dir / "precious.txt", file());
    EXPECT_EQ(cache.saveNow(snapshot, scope), ScanCache::SaveOutcome::saved);
    EXPECT_EQ(test::readFile(dir / "precious.txt"), "precious");
    EXPECT_TRUE(cache.load(scope));
    ASSERT_EQ(::unlink(file().c_str()), 0);
    test::makeFolders(file());
    EXPECT_FALSE(cache.load(scope));
}

// The file holds an extra key (ignored when decoding) sized so that the whole file has
// exactly `size` bytes.
std::string paddedTo(const std::string& archive, size_t size) {
    size_t padding = size - archive.size();
    for (int attempt = 0; attempt < 8; ++attempt) {
        const std::string padded = test::editWithLibplist(archive, [&](plist_t top) {
            plist_dict_set_item(top, "padding",
                                plist_new_data(std::string(padding, 'p').data(), padding));
        });
        if (padded.size() == size) return padded;
        padding += size - padded.size();
    }
    throw std::runtime_error("could not pad the archive");
}

TEST_F(ScanCacheTest, ReadsFilesOfUpTo64MiBAndNotOneByteMore) {
    const std::string good = savedBytes();
    const std::string exact = paddedTo(good, ScanCache::maximumFileBytes);
    ASSERT_EQ(exact.size(), 67'108'864u);
    write(exact);
    EXPECT_EQ(cache.load(scope), snapshot);
    write(paddedTo(good, ScanCache::maximumFileBytes + 1));
    EXPECT_FALSE(cache.load(scope));
}

TEST_F(ScanCacheTest, DoesNotWriteASnapshotOver64MiB) {
    const std::string good = savedBytes();
    // Few nodes with very long names: over the limit, yet quick to build.
    ScanSnapshot huge = snapshot;
    const std::string longName(4000, 'n');
    for (int i = 0; i < 17'000; ++i) {
        huge.root.children.push_back(
            DiskNode{scope + "/" + longName + std::to_string(i), longName, 1});
    }
    EXPECT_EQ(cache.saveNow(huge, scope), ScanCache::SaveOutcome::tooLarge);
    EXPECT_EQ(test::readFile(file()), good);
}

TEST_F(ScanCacheTest, ForgetsAFolderReplacedUnderTheSamePath) {
    ASSERT_EQ(cache.saveNow(snapshot, scope), ScanCache::SaveOutcome::saved);
    // Same path, and usually the same inode number back: only the birth time differs.
    test::recreateWithSameInode(scope);
    EXPECT_FALSE(cache.load(scope));
    ASSERT_EQ(::rmdir(scope.c_str()), 0);
    EXPECT_FALSE(cache.load(scope));
}

TEST_F(ScanCacheTest, ForgetsALinkedScopeThatPointsElsewhereNow) {
    const std::string link = dir / "current";
    test::makeFolders(dir / "v2");
    test::makeSymlink(scope, link);
    ASSERT_EQ(cache.saveNow(snapshot, link), ScanCache::SaveOutcome::saved);
    EXPECT_TRUE(cache.load(link));
    ASSERT_EQ(::unlink(link.c_str()), 0);
    test::makeSymlink(dir / "v2", link);
    EXPECT_FALSE(cache.load(link));
}

TEST_F(ScanCacheTest, SavesNothingForAMissingFolder) {
    EXPECT_EQ(cache.saveNow(snapshot, dir / "missing"), ScanCache::SaveOutcome::folderMissing);
    EXPECT_FALSE(test::exists(cache.fileFor(dir / "missing")));
}

TEST_F(ScanCacheTest, MarksScopesStaleInThePreferences) {
    EXPECT_FALSE(cache.needsRefresh(snapshot, scope));
    cache.markStale(scope, snapshot.finishedAt + 5ms);
    EXPECT_TRUE(cache.needsRefresh(snapshot, scope));

    ScanSnapshot later = snapshot;
    later.finishedAt = snapshot.finishedAt + 10ms;
    EXPECT_FALSE(cache.needsRefresh(later, scope));
    // A mark in the very instant the scan finished errs on the side of a refresh.
    cache.markStale(scope, later.finishedAt);
    EXPECT_TRUE(cache.needsRefresh(later, scope));
    EXPECT_FALSE(cache.needsRefresh(later, dir / "Other"));
}

TEST_F(ScanCacheTest, MarksEverySavedMapHoldingWhatACleanupMoved) {
    const std::string inner = scope + "/app";
    const std::string other = dir / "Other";
    test::makeFolders(inner);
    test::makeFolders(other);
    for (const auto& folder : {scope, inner, other}) {
        ASSERT_EQ(cache.saveNow(snapshot, folder), ScanCache::SaveOutcome::saved);
    }
    cache.markStaleHolding({inner + "/node_modules", inner + "/.next"});
    EXPECT_TRUE(cache.needsRefresh(snapshot, scope));
    EXPECT_TRUE(cache.needsRefresh(snapshot, inner));
    EXPECT_FALSE(cache.needsRefresh(snapshot, other));
    cache.markStaleHolding({other});
    EXPECT_TRUE(cache.needsRefresh(snapshot, other));
}

TEST_F(ScanCacheTest, RemovesOnlyTemporaryFilesLongAbandoned) {
    savedBytes();
    const std::string old = cache.folder() + "/.veldan-0b1c.tmp";
    const std::string young = cache.folder() + "/.veldan-2d3e.tmp";
    test::writeFile(old, "partial");
    test::writeFile(young, "partial");
    const timespec times[2] = {{0, UTIME_OMIT}, {::time(nullptr) - 3600, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, old.c_str(), times, 0), 0);
    savedBytes();
    EXPECT_FALSE(test::exists(old));
    EXPECT_TRUE(test::exists(young));
}

// A save killed at any moment leaves the earlier file whole: the child saves a large
// snapshot over and over and is killed as soon as a temporary file appears.
TEST_F(ScanCacheTest, KeepsTheOldFileWholeWhenASaveIsKilled) {
    const std::string good = savedBytes();
    // Many nodes make each save long enough for a kill to land in the middle of it.
    ScanSnapshot large = snapshot;
    for (int i = 0; i < 60'000; ++i) {
        const std::string name = "entry-" + std::to_string(i) + "-of-a-large-folder.bin";
        large.root.children.push_back(DiskNode{scope + "/" + name, name, 1000 + i});
    }
    int leftovers = 0;
    for (int round = 0; round < 4; ++round) {
        const int watch = ::inotify_init1(IN_CLOEXEC);
        ASSERT_GE(watch, 0);
        ASSERT_GE(::inotify_add_watch(watch, cache.folder().c_str(), IN_CREATE), 0);
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            for (;;)
                cache.saveNow(large, scope);
        }
        pollfd ready{watch, POLLIN, 0};
        ASSERT_EQ(::poll(&ready, 1, 30'000), 1);
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        ::close(watch);

        const std::string now = test::readFile(file());
        auto loaded = cache.load(scope);
        ASSERT_TRUE(loaded) << "round " << round;
        EXPECT_TRUE(now == good || loaded->root == large.root);
        DIR* folder = ::opendir(cache.folder().c_str());
        while (auto* entry = ::readdir(folder)) {
            const std::string entryName = entry->d_name;
            if (entryName.rfind(".veldan-", 0) == 0) {
                ++leftovers;
                ::unlinkat(::dirfd(folder), entry->d_name, 0);
            }
        }
        ::closedir(folder);
        write(good);
    }
    EXPECT_GT(leftovers, 0) << "no kill landed during a write";
}

// Run as an ordinary user against a cache folder it cannot write: the scan succeeds, says
// nothing about the cache, and the saved map that was there stays as it was.
TEST_F(ScanCacheTest, StaysSilentAndKeepsTheOldFileWhenTheFolderIsUnwritable) {
    test::writeFileOfSize(scope + "/data.bin", 30'000);
    const std::string good = savedBytes();
    ASSERT_EQ(::chmod(file().c_str(), 0644), 0);
    for (const auto& folder :
         {home.home(), home.cacheHome(), home.cacheHome() + "/Veldan", cache.folder()}) {
        ASSERT_EQ(::chmod(folder.c_str(), 0755), 0);
    }
    test::ProcessOptions options;
    options.environment = home.environment();
    auto result = test::runProcess(test::asNobody({test::veldanBinary(), "scan", scope}), options);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.err, "");
    EXPECT_NE(result.out.find("data.bin"), std::string::npos);
    EXPECT_EQ(test::readFile(file()), good);
    // The old map is still there for the next run.
    result = test::runProcess(test::asNobody({test::veldanBinary(), "show", scope}), options);
    EXPECT_EQ(result.exitCode, 0) << result.err;
}

}  // namespace
}  // namespace veldan
