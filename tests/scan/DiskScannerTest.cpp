#include "scan/DiskScanner.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "platform/FileStatus.hpp"
#include "scan/ScanIssueReason.hpp"
#include "tests/scan/IndependentWalk.hpp"
#include "tests/scan/ScanTestSupport.hpp"
#include "tests/scan/TreeGenerator.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {

using test::findNode;
using test::scanned;

// Inside one top-level folder, the workers without an entry of their own help in it: not
// a byte may be lost or counted twice however the work was split.
TEST(DiskScanner, RootTotalMatchesAnIndependentWalkToTheByteHoweverTheWorkIsShared) {
    for (unsigned seed : {1u, 2u, 3u}) {
        for (const std::string inside : {"", "/one"}) {
            test::TempDir dir;
            test::generateTree(dir.path() + inside, seed);
            const auto expected = test::independentWalk(dir.path());
            const auto snapshot = scanned(dir.path(), test::settingsWithHome(dir / "home"));
            SCOPED_TRACE("seed " + std::to_string(seed) + inside);
            EXPECT_EQ(snapshot.root.bytes, expected.bytes);
            EXPECT_EQ(snapshot.visitedFileCount, expected.files);
            EXPECT_EQ(snapshot.visitedFolderCount, expected.folders);
            EXPECT_EQ(snapshot.unreadableItems, 0);
            test::expectWellFormed(snapshot.root);
            EXPECT_EQ(snapshot.discoveredDirectories.at(dir.path()), expected.bytes);
        }
    }
}

TEST(DiskScanner, AFolderOfManyFilesOfItsOwnShowsProgressWhileItIsListed) {
    test::TempDir dir;
    for (int i = 0; i < 3000; ++i)
        test::writeFileOfSize(dir / ("f" + std::to_string(i)), (i % 5) * 4096);
    test::makeFolders(dir / "sub");
    test::writeFileOfSize(dir / "sub/x", 4096);
    std::atomic<int64_t> mostFiles{0};
    ScanCancellation cancellation;
    const auto outcome = DiskScanner().scan(dir.path(), cancellation,
                                            [&](const std::string&, int64_t, int64_t files) {
                                                mostFiles = std::max<int64_t>(mostFiles, files);
                                            });
    ASSERT_TRUE(outcome.has_value());
    EXPECT_GE(mostFiles, 64) << "the scanned folder's own files count as they are measured";
    EXPECT_EQ(outcome->snapshot.visitedFileCount, 3001);
    EXPECT_EQ(outcome->root().bytes, test::independentWalk(dir.path()).bytes);
    ASSERT_EQ(outcome->root().children.size(), 18u);
    test::expectWellFormed(outcome->root());
}

TEST(DiskScanner, FoldersBelowDepthFiveBecomeWholeNodesWithTheirFullSize) {
    test::TempDir dir;
    const std::string deep = dir / "1/2/3/4/5/6/7/8";
    test::makeFolders(deep);
    test::writeFileOfSize(deep + "/file", 50'000);
    test::writeFileOfSize(dir / "1/2/3/4/5/file5", 10'000);
    const auto snapshot = scanned(dir.path());
    const DiskNode* five = findNode(snapshot.root, dir / "1/2/3/4/5");
    ASSERT_NE(five, nullptr);
    EXPECT_EQ(five->children.size(), 2u);  // the depth-6 folder and file5
    const DiskNode* six = findNode(snapshot.root, dir / "1/2/3/4/5/6");
    ASSERT_NE(six, nullptr);
    EXPECT_TRUE(six->isDirectory);
    EXPECT_TRUE(six->children.empty());
    EXPECT_EQ(six->bytes, test::allocatedBytes(deep + "/file"));
    EXPECT_EQ(snapshot.visitedFolderCount, 9);
}

TEST(DiskScanner, OpaqueFoldersAreMeasuredWholeAndTrackedOnesAreDiscovered) {
    test::TempDir dir;
    test::generateTree(dir.path(), 7, 1);
    test::makeFolders(dir / "notes/target/inner");
    test::writeFileOfSize(dir / "notes/target/inner/x", 4096);
    test::makeFolders(dir / "1/2/3/4/5/6/app/.next/cache");
    test::writeFileOfSize(dir / "1/2/3/4/5/6/app/.next/cache/x", 4096);
    const auto snapshot = scanned(dir.path(), test::settingsWithHome(dir / "home"));
    // Below the mapped depth a tracked folder is still found, with its bytes.
    EXPECT_EQ(snapshot.discoveredDirectories.at(dir / "1/2/3/4/5/6/app/.next"),
              test::allocatedBytes(dir / "1/2/3/4/5/6/app/.next/cache/x"));
    for (const char* opaque : {"proj/node_modules", "proj/.git", "rust/target", "py/.venv"}) {
        const DiskNode* node = findNode(snapshot.root, dir / opaque);
        ASSERT_NE(node, nullptr) << opaque;
        EXPECT_TRUE(node->children.empty()) << opaque;
        EXPECT_GT(node->bytes, 0) << opaque;
    }
    const DiskNode* mapped = findNode(snapshot.root, dir / "notes/target");
    ASSERT_NE(mapped, nullptr);
    EXPECT_EQ(mapped->children.size(), 1u);  // no Cargo.toml beside it: mapped as usual
    EXPECT_EQ(snapshot.discoveredDirectories.at(dir / "proj/node_modules"),
              findNode(snapshot.root, dir / "proj/node_modules")->bytes);
    EXPECT_EQ(findNode(snapshot.root, dir / "proj/node_modules")->category, DiskCategory::build);
}

TEST(DiskScanner, RecommendationFoldersUnderTheHomeAreDiscovered) {
    test::TempDir dir;
    test::makeFolders(dir / "home/.cache/uv/wheels");
    test::writeFileOfSize(dir / "home/.cache/uv/wheels/w", 20'000);
    test::makeFolders(dir / "home/Library/Caches/app");
    test::writeFileOfSize(dir / "home/Library/Caches/app/c", 30'000);
    const auto snapshot = scanned(dir.path(), test::settingsWithHome(dir / "home"));
    EXPECT_EQ(snapshot.discoveredDirectories.at(dir / "home/.cache/uv"),
              test::allocatedBytes(dir / "home/.cache/uv/wheels/w"));
    EXPECT_EQ(snapshot.discoveredDirectories.at(dir / "home/Library/Caches"),
              test::allocatedBytes(dir / "home/Library/Caches/app/c"));
    EXPECT_EQ(snapshot.discoveredDirectories.count(dir / "home/Library"), 0u);
    EXPECT_EQ(findNode(snapshot.root, dir / "home/Library/Caches")->category, DiskCategory::safe);
}

TEST(DiskScanner, TreesDeeperThanPathMaxAreMeasuredRelativeToFolders) {
    test::TempDir dir;
    int fd = ::open(dir.path().c_str(), O_RDONLY | O_DIRECTORY);
    const std::string name(60, 'd');
    const int levels = 150;  // about 9,000 bytes of path, more than twice PATH_MAX
    for (int i = 0; i < levels; ++i) {
        ASSERT_EQ(::mkdirat(fd, name.c_str(), 0755), 0);
        const int next = ::openat(fd, name.c_str(), O_RDONLY | O_DIRECTORY);
        ::close(fd);
        fd = next;
    }
    const int file = ::openat(fd, "bottom", O_WRONLY | O_CREAT, 0644);
    const std::string data(20'000, 'x');
    ASSERT_EQ(::write(file, data.data(), data.size()), static_cast<ssize_t>(data.size()));
    struct stat status {};
    ::fstat(file, &status);
    ::close(file);
    ::close(fd);
    const auto snapshot = scanned(dir.path());
    EXPECT_EQ(snapshot.root.bytes, static_cast<int64_t>(status.st_blocks) * 512);
    EXPECT_EQ(snapshot.visitedFolderCount, levels + 1);
    EXPECT_EQ(snapshot.visitedFileCount, 1);
    EXPECT_EQ(snapshot.unreadableItems, 0);
}

TEST(DiskScanner, LargestFilesComeOnlyFromTheMappedPartAndByAllocatedSize) {
    test::TempDir dir;
    test::writeSparseFile(dir / "sparse", int64_t{1} << 33);  // 8 GiB long, no blocks
    const std::string deep = dir / "1/2/3/4/5/6/7";
    test::makeFolders(deep);
    test::makeFolders(dir / "p/node_modules");
    for (const std::string& path :
         {deep + "/deep-big", dir / "p/node_modules/opaque-big", dir / "1/shallow-big"}) {
        const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT, 0644);
        ASSERT_EQ(::posix_fallocate(fd, 0, 110'000'000), 0);
        ::close(fd);
    }
    const auto snapshot = scanned(dir.path());
    ASSERT_EQ(snapshot.largestFiles.size(), 1u);
    EXPECT_EQ(snapshot.largestFiles[0].path, dir / "1/shallow-big");
    EXPECT_EQ(snapshot.largestFiles[0].bytes, test::allocatedBytes(dir / "1/shallow-big"));
    EXPECT_GE(snapshot.root.bytes, 3 * 110'000'000);  // still measured everywhere
}

TEST(DiskScanner, UnauthorisedMediaLibrariesAreMeasuredWholeAndCountedAtAnyDepth) {
    test::TempDir dir;
    test::makeFolders(dir / "Pictures/Photos Library.photoslibrary/originals");
    test::writeFileOfSize(dir / "Pictures/Photos Library.photoslibrary/originals/a.heic", 50'000);
    test::makeFolders(dir / "1/2/3/4/5/6/Old.PhotosLibrary/x");
    test::makeFolders(dir / "Music/Music Library.musiclibrary");
    test::writeFileOfSize(dir / "Music/Music Library.musiclibrary/db", 9'000);
    ScanSettings settings = test::settingsWithHome(dir / "home");
    settings.photos = platform::MediaAuthorization::denied;
    const auto snapshot = scanned(dir.path(), settings);
    EXPECT_EQ(snapshot.skippedPhotosLibraries, 2);
    EXPECT_EQ(snapshot.skippedMusicLibraries, 0);
    const DiskNode* library =
        findNode(snapshot.root, dir / "Pictures/Photos Library.photoslibrary");
    ASSERT_NE(library, nullptr);
    EXPECT_TRUE(library->children.empty());
    EXPECT_EQ(library->bytes,
              test::allocatedBytes(dir / "Pictures/Photos Library.photoslibrary/originals/a.heic"));
    ASSERT_TRUE(snapshot.unreadableReasons.has_value());
    EXPECT_EQ(snapshot.unreadableReasons->at(dir / "Pictures/Photos Library.photoslibrary"),
              "Photos access is required");
    EXPECT_NE(findNode(snapshot.root, dir / "Music/Music Library.musiclibrary/db"), nullptr)
        << "an authorised library is mapped like any folder";
}

TEST(DiskScanner, CancellationReturnsNothing) {
    test::TempDir dir;
    // Progress is first reported once a subfolder is listed, before it is finished.
    for (int top = 0; top < 8; ++top) {
        test::makeFolders(dir / ("t" + std::to_string(top)));
        for (int i = 0; i < 50; ++i)
            test::writeFile(dir / ("t" + std::to_string(top) + "/f" + std::to_string(i)), "data");
    }
    ScanCancellation cancelled;
    cancelled.cancel();
    EXPECT_FALSE(DiskScanner().scan(dir.path(), cancelled).has_value());

    ScanCancellation cancellation;
    auto outcome =
        DiskScanner().scan(dir.path(), cancellation,
                           [&](const std::string&, int64_t, int64_t) { cancellation.cancel(); });
    EXPECT_FALSE(outcome.has_value());
}

TEST(DiskScanner, PartialRootsArriveMarkedPartialWhileTheScanRuns) {
    test::TempDir dir;
    for (int top = 0; top < 6; ++top) {
        test::makeFolders(dir / ("t" + std::to_string(top)));
        for (int i = 0; i < 300; ++i) {
            test::writeFileOfSize(dir / ("t" + std::to_string(top) + "/f" + std::to_string(i)),
                                  4096);
        }
    }
    ScanCancellation cancellation;
    std::atomic<bool> returned{false};
    std::atomic<int> partials{0};
    std::atomic<int> badPartials{0};
    // A slow progress receiver stretches the scan past the partial interval.
    auto outcome = DiskScanner().scan(
        dir.path(), cancellation,
        [&](const std::string&, int64_t, int64_t) {
            std::this_thread::sleep_for(std::chrono::milliseconds(150));
        },
        [&](const DiskNode& root) {
            ++partials;
            if (returned || !root.isPartial || root.path != dir.path()) ++badPartials;
        });
    returned = true;
    ASSERT_TRUE(outcome.has_value());
    EXPECT_FALSE(outcome->root().isPartial);
    EXPECT_GT(partials, 0);
    EXPECT_EQ(badPartials, 0);
}

TEST(DiskScanner, SubtreeAndRemainderUseTheSameWalk) {
    test::TempDir dir;
    for (int top = 0; top < 4; ++top) {
        const std::string folder = dir / ("top" + std::to_string(top) + "/inner");
        test::makeFolders(folder);
        for (int i = 0; i <= top; ++i)
            test::writeFileOfSize(folder + "/f" + std::to_string(i), 10'000 * (i + 1));
    }
    test::makeFolders(dir / "top0/node_modules/pkg");
    test::writeFileOfSize(dir / "top0/node_modules/pkg/index.js", 5'000);
    const DiskScanner scanner(test::settingsWithHome(dir / "home"));
    ScanCancellation cancellation;
    const auto full = scanner.scan(dir.path(), cancellation);
    ASSERT_TRUE(full.has_value());

    const auto subtree = scanner.scanSubtree(dir / "top2", cancellation);
    ASSERT_TRUE(subtree.has_value());
    EXPECT_EQ(subtree->node.bytes, findNode(full->root(), dir / "top2")->bytes);
    EXPECT_EQ(subtree->node.path, dir / "top2");

    // A stopped scan: one finished child, one partial one. The finished child is taken as
    // it stands (its bytes are marked to prove it), the partial one is measured again.
    DiskNode partial = full->root();
    partial.isPartial = true;
    partial.children.erase(
        std::remove_if(
            partial.children.begin(), partial.children.end(),
            [&](const DiskNode& n) { return n.path != dir / "top0" && n.path != dir / "top1"; }),
        partial.children.end());
    ASSERT_EQ(partial.children.size(), 2u);
    const int64_t top0 = findNode(full->root(), dir / "top0")->bytes;
    for (auto& child : partial.children) {
        if (child.path == dir / "top0") child.bytes += 1;
        if (child.path == dir / "top1") child.isPartial = true;
    }
    const auto completed = scanner.scanRemainder(partial, dir.path(), cancellation);
    ASSERT_TRUE(completed.has_value());
    EXPECT_EQ(completed->root().bytes, full->root().bytes + 1);
    EXPECT_EQ(findNode(completed->root(), dir / "top0")->bytes, top0 + 1);
    EXPECT_EQ(findNode(completed->root(), dir / "top1")->bytes,
              findNode(full->root(), dir / "top1")->bytes);
    EXPECT_FALSE(completed->root().isPartial);
    // What the kept child's nodes show is known again without walking it.
    const std::map<std::string, int64_t> discovered{
        {dir / "top0/node_modules", findNode(full->root(), dir / "top0/node_modules")->bytes},
        {dir.path(), full->root().bytes + 1}};
    EXPECT_EQ(completed->snapshot.discoveredDirectories, discovered);
    // node_modules is measured as one block, so its pkg folder and file are not shown.
    EXPECT_EQ(completed->snapshot.visitedFolderCount, full->snapshot.visitedFolderCount - 1);
    EXPECT_EQ(completed->snapshot.visitedFileCount, full->snapshot.visitedFileCount - 1);
}

TEST(DiskScanner, WholeDiskScansAlsoEnterTheHomeFoldersDevice) {
    test::TempDir dir;
    const auto shm = platform::statPath("/dev/shm", true);
    const auto tmp = platform::statPath(dir.path(), true);
    ASSERT_TRUE(shm && tmp);
    const DiskScanner startup(test::settingsWithHome("/dev/shm"));
    const auto devices = startup.allowedDevices("/");
    EXPECT_EQ(devices.count(shm->device), 1u);
    EXPECT_EQ(startup.allowedDevices(dir.path()), std::set<uint64_t>{tmp->device});
}

}  // namespace veldan
