#include "duplicates/DuplicateScanner.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <functional>
#include <future>
#include <stdexcept>
#include <thread>

#include "platform/FileStatus.hpp"
#include "platform/Sha256.hpp"
#include "platform/UniqueFd.hpp"
#include "tests/duplicates/DuplicateTestSupport.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/IsolatedHome.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan {
namespace {

using test::groupPaths;
using test::writeFileOfSize;
using Groups = std::vector<std::vector<std::string>>;

constexpr int64_t megabyte = 1'000'000;

class DuplicateScannerTest : public ::testing::Test {
protected:
    std::optional<DuplicateScanResult> scan(const DuplicateScanProgress& progress = {}) {
        return DuplicateScanner().scan(dir_.path(), cancellation_, progress);
    }
    std::string path(const std::string& relative) { return dir_ / relative; }
    void write(const std::string& relative, int64_t bytes, unsigned seed) {
        const std::string full = path(relative);
        test::makeFolders(full.substr(0, full.rfind('/')));
        writeFileOfSize(full, bytes, seed);
    }
    void copies(std::initializer_list<const char*> names, int64_t bytes, unsigned seed) {
        for (const char* name : names)
            write(name, bytes, seed);
    }
    DuplicateFile snapshot(const std::string& relative) {
        const auto status = platform::statPath(path(relative), false);
        if (!status) throw std::runtime_error("lstat " + relative);
        return DuplicateFile::snapshot(path(relative), *status);
    }

    test::TempDir dir_;
    ScanCancellation cancellation_;
};

TEST_F(DuplicateScannerTest, FindsOneMillionByteCopiesButNotSmallerOnes) {
    copies({"a/big", "b/big"}, megabyte, 1);
    copies({"a/small", "b/small"}, megabyte - 1, 2);
    const auto result = scan();
    ASSERT_TRUE(result);
    EXPECT_EQ(groupPaths(*result), (Groups{{path("a/big"), path("b/big")}}));
    EXPECT_EQ(result->filesVisited, 4);
    EXPECT_EQ(result->unreadableFiles, 0);
}

TEST_F(DuplicateScannerTest, HardLinksAreNeverCopiesOfEachOther) {
    write("links/one", 5 * megabyte, 4);
    test::makeHardLink(path("links/one"), path("links/two"));
    test::makeHardLink(path("links/one"), path("elsewhere-three"));
    auto result = scan();
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->groups.empty());

    write("real-copy", 5 * megabyte, 4);
    result = scan();
    ASSERT_TRUE(result);
    ASSERT_EQ(result->groups.size(), 1u);
    const auto& files = result->groups.front().files;
    ASSERT_EQ(files.size(), 2u);  // one of the three links, and the copy
    EXPECT_TRUE(files[0].path == path("real-copy") || files[1].path == path("real-copy"));
}

TEST_F(DuplicateScannerTest, MiddleDifferencesFailVerificationUnder16MiBAndSamplingFrom16MiB) {
    const int64_t small = 3 * megabyte;
    const int64_t large = DuplicateScanner::middleSampleFloor;
    copies({"small-a", "small-b"}, small, 5);
    test::changeByteAt(path("small-b"), small / 2);
    copies({"large-a", "large-b"}, large, 6);
    test::changeByteAt(path("large-b"), large / 2);
    copies({"c", "d"}, large + 4096, 9);
    test::ProgressRecorder progress;
    const auto result = scan(progress.callback());
    ASSERT_TRUE(result);
    EXPECT_EQ(groupPaths(*result), (Groups{{path("c"), path("d")}}));
    EXPECT_EQ(result->unreadableFiles, 0);
    // The large pair was told apart by its middle samples; the small pair needed whole reads.
    const auto reports = progress.reports();
    EXPECT_NE(std::find(reports.begin(), reports.end(),
                        test::ProgressRecorder::Report{DuplicateScanPhase::verifying, 4, 4}),
              reports.end());
    for (const auto& [phase, completed, total] : reports)
        EXPECT_TRUE(phase != DuplicateScanPhase::verifying || total == 4);
}

TEST_F(DuplicateScannerTest, FileChangedBetweenPhasesIsDroppedAsUnreadable) {
    // Touched before sampling (equal content, other identity), or edited before verifying.
    for (const bool touch : {true, false}) {
        copies({"one", "two", "three"}, 2 * megabyte, 10);
        const auto phase = touch ? DuplicateScanPhase::sampling : DuplicateScanPhase::verifying;
        bool changed = false;
        const auto result = scan([&](DuplicateScanPhase reported, int64_t completed, int64_t) {
            if (reported != phase || completed != 0 || changed) return;
            changed = true;
            if (touch)
                test::setModifiedTime(path("two"), 1'000'000'000);
            else
                test::changeByteAt(path("two"), 10);
        });
        ASSERT_TRUE(changed);
        ASSERT_TRUE(result);
        EXPECT_EQ(groupPaths(*result), (Groups{{path("one"), path("three")}})) << touch;
        EXPECT_EQ(result->unreadableFiles, 1) << touch;
    }
}

TEST_F(DuplicateScannerTest, SkipsTrashFoldersAtAnyDepthAndPackagesOfAnyCase) {
    // A volume's trash lies at the top of its mount; ".Trash-1000" here is not at one.
    copies({"keep/a", "keep/b", ".Trash/c", "deep/er/.Trash/d", "Tool.APP/Contents/e",
            "Shots.photoslibrary/f", "disk.sparsebundle/g", ".Trash-1000/files/h"},
           megabyte, 12);
    copies({"Trash-notes/i", "Trash-notes/j"}, megabyte, 13);
    const auto result = scan();
    ASSERT_TRUE(result);
    auto groups = groupPaths(*result);
    std::sort(groups.begin(), groups.end());
    EXPECT_EQ(groups, (Groups{{path(".Trash-1000/files/h"), path("keep/a"), path("keep/b")},
                              {path("Trash-notes/i"), path("Trash-notes/j")}}));
    EXPECT_EQ(result->filesVisited, 5);
}

TEST_F(DuplicateScannerTest, SkipsTheHomeTrashOfThisPlatform) {
    test::IsolatedHome home;
    write("visible/a", megabyte, 14);
    const std::string trashed = home.dataHome() + "/Trash/files/a";
    test::makeFolders(home.dataHome() + "/Trash/files");
    writeFileOfSize(trashed, megabyte, 14);
    auto result = DuplicateScanner().scan(home.home(), cancellation_);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->filesVisited, 0);
    writeFileOfSize(home / "a-copy", megabyte, 14);
    writeFileOfSize(home / "b-copy", megabyte, 14);
    result = DuplicateScanner().scan(home.home(), cancellation_);
    ASSERT_TRUE(result);
    EXPECT_EQ(groupPaths(*result), (Groups{{home / "a-copy", home / "b-copy"}}));
}

TEST_F(DuplicateScannerTest, NeverFollowsSymbolicLinks) {
    write("real/a", megabyte, 15);
    write("other/b", megabyte, 16);
    test::makeSymlink(path("real/a"), path("link-to-file"));
    test::makeSymlink(path("real"), path("link-to-folder"));
    const auto result = scan();
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->groups.empty());
    EXPECT_EQ(result->filesVisited, 2);
}

TEST_F(DuplicateScannerTest, AFolderSwappedAfterItsParentsListingLeadsNowhere) {
    // Once the root is listed, and before anything below it is opened, "d1" becomes a link
    // to an outside folder and "d2" is replaced by another outside folder. Both outside
    // folders hold a copy of "keep".
    test::TempDir outside;
    for (const char* folder : {"d1", "d2"}) {
        test::makeFolders(outside / folder);
        writeFileOfSize(outside / folder + "/f", megabyte, 30);
    }
    write("keep", megabyte, 30);
    write("d1/a", megabyte, 31);
    write("d2/b", megabyte, 32);
    DuplicateScanSeams seams;
    std::atomic<int> listed = 0;
    seams.afterListing = [&] {
        if (++listed != 1) return;
        ASSERT_EQ(::rename(path("d1").c_str(), path("moved1").c_str()), 0);
        test::makeSymlink(outside / "d1", path("d1"));
        ASSERT_EQ(::rename(path("d2").c_str(), path("moved2").c_str()), 0);
        ASSERT_EQ(::rename((outside / "d2").c_str(), path("d2").c_str()), 0);
    };
    const auto result = DuplicateScanner({}, seams).scan(dir_.path(), cancellation_);
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->groups.empty()) << "an outside copy was read";
    EXPECT_EQ(result->filesVisited, 1);
    EXPECT_EQ(result->unreadableFiles, 2);
}

TEST_F(DuplicateScannerTest, CopiesDeeperThanPathMaxAreCompared) {
    write("top", megabyte, 33);
    const std::string contents = test::readFile(path("top"));
    platform::UniqueFd folder(::open(dir_.path().c_str(), O_RDONLY | O_DIRECTORY));
    std::string deep = dir_.path();
    for (int level = 0; level < 80; ++level) {  // about 4,900 bytes of path
        const std::string name(60, 'd');
        ASSERT_EQ(::mkdirat(folder.get(), name.c_str(), 0755), 0);
        folder = platform::UniqueFd(::openat(folder.get(), name.c_str(), O_RDONLY | O_DIRECTORY));
        deep += "/" + name;
    }
    for (const char* name : {"a", "b"}) {
        const platform::UniqueFd file(::openat(folder.get(), name, O_WRONLY | O_CREAT, 0644));
        ASSERT_EQ(::write(file.get(), contents.data(), contents.size()),
                  static_cast<ssize_t>(contents.size()));
    }
    ASSERT_GT(deep.size(), size_t{PATH_MAX});
    // Folders opened relative to their parents, and all of them reached by path, as when
    // the walk already keeps its share of folders open.
    for (const int openFolders : {DuplicateScanSeams{}.sharedFolderLimit, 0}) {
        DuplicateScanSeams seams;
        seams.sharedFolderLimit = openFolders;
        const auto result = DuplicateScanner({}, seams).scan(dir_.path(), cancellation_);
        ASSERT_TRUE(result);
        EXPECT_EQ(groupPaths(*result), (Groups{{deep + "/a", deep + "/b", path("top")}}));
        EXPECT_EQ(result->unreadableFiles, 0);
    }
}

TEST_F(DuplicateScannerTest, OrdersFilesInFinderOrderAndEqualGroupsById) {
    copies({"file10", "file2", "File3"}, megabyte, 17);
    copies({"x/one", "x/two"}, megabyte, 30);
    copies({"y/one", "y/two"}, megabyte, 19);
    copies({"z/one", "z/two"}, 3 * megabyte, 20);
    // These seeds give digests whose byte order (y first) disagrees with the order of their
    // Base64 ids (x first), so only the id tie-break puts x first.
    const auto x = platform::Sha256::of(test::readFile(path("x/one")));
    const auto y = platform::Sha256::of(test::readFile(path("y/one")));
    ASSERT_LT(y, x);
    ASSERT_LT(platform::base64(x.data(), x.size()), platform::base64(y.data(), y.size()));
    const auto result = scan();
    ASSERT_TRUE(result);
    ASSERT_EQ(result->groups.size(), 4u);
    EXPECT_EQ(result->groups[0].bytesPerFile, 3 * megabyte);  // 3 MB extra
    EXPECT_EQ(groupPaths(*result)[1],
              (std::vector<std::string>{path("file2"), path("File3"), path("file10")}));
    EXPECT_EQ(result->groups[1].extraBytes(), 2 * megabyte);
    EXPECT_EQ(groupPaths(*result)[2], (std::vector<std::string>{path("x/one"), path("x/two")}));
    EXPECT_EQ(groupPaths(*result)[3], (std::vector<std::string>{path("y/one"), path("y/two")}));
}

TEST_F(DuplicateScannerTest, FindsCopiesAcrossManyFoldersWithEveryWorkerBusy) {
    // Far more folders than the shared queue holds, so workers keep some on their own stacks.
    std::vector<std::string> expected;
    for (int i = 0; i < 100; ++i) {
        const std::string folder = "wide/" + std::to_string(i);
        test::makeFolders(path(folder));
        if (i % 30 == 0) {
            write(folder + "/copy", megabyte, 22);
            expected.push_back(path(folder + "/copy"));
        }
    }
    const auto result = scan();
    ASSERT_TRUE(result);
    ASSERT_EQ(result->groups.size(), 1u);
    auto paths = groupPaths(*result).front();
    std::sort(paths.begin(), paths.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(paths, expected);
}

TEST_F(DuplicateScannerTest, RootThatIsMissingOrNotAFolderGivesNoResult) {
    write("file", megabyte, 23);
    EXPECT_FALSE(DuplicateScanner().scan(path("missing"), cancellation_));
    EXPECT_FALSE(DuplicateScanner().scan(path("file"), cancellation_));
    test::makeSymlink(dir_.path(), path("link"));
    EXPECT_FALSE(DuplicateScanner().scan(path("link"), cancellation_));
}

TEST_F(DuplicateScannerTest, UnchangedClonesAreNotReportedButEditedOnesAre) {
    copies({"clone-a", "clone-b"}, megabyte, 24);
    int64_t privateBytes = 0;
    const ClonedFileSpace::Query query = [&](const std::string&) {
        return std::optional<ClonedFileSpace::Sharing>({privateBytes, 77, 2});
    };
    auto result = DuplicateScanner(query).scan(dir_.path(), cancellation_);
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->groups.empty());
    privateBytes = 4096;
    result = DuplicateScanner(query).scan(dir_.path(), cancellation_);
    ASSERT_TRUE(result);
    EXPECT_EQ(result->groups.size(), 1u);
}

class DuplicateCancellationTest
    : public DuplicateScannerTest,
      public ::testing::WithParamInterface<std::tuple<DuplicateScanPhase, bool>> {};

TEST_P(DuplicateCancellationTest, CancellingWhileHashingReturnsNothing) {
    const auto [phase, atEnd] = GetParam();
    copies({"a", "b", "c"}, 2 * megabyte, 25);
    bool cancelled = false;
    const auto result = scan([&](DuplicateScanPhase reported, int64_t completed, int64_t total) {
        if (reported == phase && (atEnd ? completed == total : completed == 0)) {
            cancelled = true;
            cancellation_.cancel();
        }
    });
    EXPECT_TRUE(cancelled);
    EXPECT_FALSE(result);
}

INSTANTIATE_TEST_SUITE_P(EveryPhase, DuplicateCancellationTest,
                         ::testing::Values(std::make_tuple(DuplicateScanPhase::sampling, false),
                                           std::make_tuple(DuplicateScanPhase::sampling, true),
                                           std::make_tuple(DuplicateScanPhase::verifying, false),
                                           std::make_tuple(DuplicateScanPhase::verifying, true)));

TEST_F(DuplicateScannerTest, CancellingWhileCollectingEndsTheSearchWithTheWalk) {
    for (int i = 0; i < 8; ++i)
        write("folder" + std::to_string(i) + "/a", megabyte, 25);
    DuplicateScanSeams seams;
    int listed = 0;
    seams.afterListing = [&] {
        if (++listed == 1) cancellation_.cancel();  // the root, before any folder below it
    };
    // Workers report from their own threads while they walk; the walk's final count and
    // every later phase report from the thread that called scan().
    const auto caller = std::this_thread::get_id();
    std::atomic<int> reportsAfterTheWalk = 0;
    const auto result = DuplicateScanner({}, seams).scan(
        dir_.path(), cancellation_, [&](DuplicateScanPhase, int64_t, int64_t) {
            if (std::this_thread::get_id() == caller) ++reportsAfterTheWalk;
        });
    EXPECT_GE(listed, 1);
    EXPECT_FALSE(result);
    EXPECT_EQ(reportsAfterTheWalk, 0);
}

// A pipe renamed onto the path between the status check and the open: opening it must
// not wait for a writer that never comes.
TEST_F(DuplicateScannerTest, PipeSwappedInBeforeOpeningFailsAtOnce) {
    write("a", megabyte, 27);
    const DuplicateFile file = snapshot("a");
    const std::string pipe = path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    DuplicateScanSeams seams;
    bool swapped = false;
    seams.beforeOpen = [&] { swapped = ::rename(pipe.c_str(), file.path.c_str()) == 0; };
    auto hashing = std::async(std::launch::async, [&] {
        return DuplicateScanner::hash(file, false, ScanCancellation{}, seams);
    });
    const bool finished = hashing.wait_for(std::chrono::seconds(3)) == std::future_status::ready;
    if (!finished) {
        // A writer that comes and goes lets the blocked open return, so the thread ends.
        const int writer = ::open(file.path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        if (writer >= 0) ::close(writer);
    }
    EXPECT_TRUE(finished) << "opening the pipe waited for a writer";
    EXPECT_FALSE(hashing.get());
    EXPECT_TRUE(swapped);
}

// Only the checks after the last read can notice these changes: the file matched its
// snapshot when it was opened.
TEST_F(DuplicateScannerTest, FileChangedWhileItIsReadGivesNoDigest) {
    const auto append = [&] {
        const int fd = ::open(path("a").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
        ASSERT_GE(fd, 0);
        ASSERT_EQ(::write(fd, "x", 1), 1);
        ::close(fd);
    };
    const auto touch = [&] { test::setModifiedTime(path("a"), 1'000'000'000); };
    for (const bool sampled : {false, true}) {
        const std::vector<std::function<void()>> changes = {{}, append, touch};
        for (const auto& change : changes) {
            write("a", 3 * megabyte, 28);  // three chunks, or two samples
            const DuplicateFile file = snapshot("a");
            const bool unchanged = !change;
            const auto expected = DuplicateScanner::hash(file, sampled, cancellation_);
            DuplicateScanSeams seams;
            int reads = 0;
            seams.afterRead = [&] {
                if (++reads == 1 && change) change();
            };
            const auto digest = DuplicateScanner::hash(file, sampled, cancellation_, seams);
            EXPECT_EQ(reads, sampled ? 2 : 3);
            EXPECT_EQ(digest.has_value(), unchanged) << (sampled ? "sampled" : "full");
            if (unchanged) {
                ASSERT_TRUE(expected);
                EXPECT_EQ(digest, expected);
            }
        }
    }
}

}  // namespace
}  // namespace veldan
