#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <thread>

#include "platform/FileWatcher.hpp"
#include "tests/support/Files.hpp"
#include "tests/support/TempDir.hpp"

namespace veldan::platform {
namespace {

using namespace std::chrono_literals;
using test::TempDir;

// Counts what the watcher delivers.
struct Deliveries {
    std::atomic<size_t> batches{0};
    std::atomic<size_t> events{0};
    FileWatcher::Callback callback() {
        return [this](size_t count) {
            batches += 1;
            events += count;
        };
    }
};

class FileWatcherTest : public ::testing::Test {
protected:
    FileWatcherTest() {
        test::makeFolders(dir / "tree/a/b/c");
        test::makeFolders(dir / "tree/d");
        test::writeFile(dir / "tree/a/file", "x");
    }
    std::unique_ptr<FileWatcher> watch(FileWatchOptions options = {}) {
        return std::make_unique<FileWatcher>(std::vector<std::string>{dir / "tree"},
                                             std::move(options), deliveries.callback());
    }
    TempDir dir;
    Deliveries deliveries;
};

TEST_F(FileWatcherTest, WatchesEveryFolderOfTheTree) {
    auto watcher = watch();
    EXPECT_TRUE(watcher->complete());
    EXPECT_EQ(watcher->watchCount(), 5u);  // tree, a, b, c, d
    watcher->flush();
    EXPECT_EQ(deliveries.batches, 0u);  // setting up is not a change
    test::writeFile(dir / "tree/a/b/c/new", "deep");
    watcher->flush();
    EXPECT_EQ(deliveries.batches, 1u);
    EXPECT_GE(deliveries.events, 1u);
}

TEST_F(FileWatcherTest, WatchesFoldersCreatedLater) {
    auto watcher = watch();
    // Made in one go, before the watcher can have noticed the first level.
    test::makeFolders(dir / "tree/new/x/y");
    watcher->flush();
    EXPECT_EQ(deliveries.batches, 1u);
    EXPECT_EQ(watcher->watchCount(), 8u);
    test::writeFile(dir / "tree/new/x/y/file", "z");
    watcher->flush();
    EXPECT_EQ(deliveries.batches, 2u);
}

TEST_F(FileWatcherTest, StopsWatchingAFolderMovedOutAndWatchesOneMovedIn) {
    auto watcher = watch();
    ASSERT_EQ(::rename((dir / "tree/a").c_str(), (dir / "away").c_str()), 0);
    watcher->flush();
    EXPECT_EQ(deliveries.batches, 1u);
    EXPECT_EQ(watcher->watchCount(), 2u);  // tree, d
    test::writeFile(dir / "away/b/outside", "not ours");
    watcher->flush();
    EXPECT_EQ(deliveries.batches, 1u);
    ASSERT_EQ(::rename((dir / "away").c_str(), (dir / "tree/back").c_str()), 0);
    watcher->flush();
    EXPECT_EQ(deliveries.batches, 2u);
    EXPECT_EQ(watcher->watchCount(), 5u);
    test::writeFile(dir / "tree/back/b/c/inside", "ours again");
    watcher->flush();
    EXPECT_EQ(deliveries.batches, 3u);
}

TEST_F(FileWatcherTest, CoalescesEventsWithinTheLatency) {
    auto watcher = watch();
    for (int i = 0; i < 50; ++i)
        test::writeFile(dir / ("tree/d/f" + std::to_string(i)), "x");
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(deliveries.batches, 0u);  // the window of 0.25 s is still open
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (deliveries.batches == 0 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(10ms);
    }
    std::this_thread::sleep_for(400ms);
    EXPECT_EQ(deliveries.batches, 1u);
    EXPECT_GE(deliveries.events, 50u);
}

TEST_F(FileWatcherTest, IgnoresItsOwnFolders) {
    test::makeFolders(dir / "tree/.cache/Veldan/Scans");
    FileWatchOptions options;
    options.ignoredFolders = {dir / "tree/.cache/Veldan"};
    auto watcher = watch(options);
    test::writeFile(dir / "tree/.cache/Veldan/Scans/map.plist", "saved");
    test::makeFolders(dir / "tree/.cache/Veldan/State");
    watcher->flush();
    EXPECT_EQ(deliveries.batches, 0u);
    test::writeFile(dir / "tree/.cache/other", "someone else");
    watcher->flush();
    EXPECT_EQ(deliveries.batches, 1u);
}

TEST_F(FileWatcherTest, NeverIgnoresAFolderThatHoldsTheRoot) {
    FileWatchOptions options;
    options.ignoredFolders = {dir.path()};
    auto watcher = watch(options);
    test::writeFile(dir / "tree/a/changed", "x");
    watcher->flush();
    EXPECT_EQ(deliveries.batches, 1u);
}

TEST_F(FileWatcherTest, IsIncompleteWhenTheTreeExceedsTheBudget) {
    FileWatchOptions options;
    options.watchBudget = 3;
    auto watcher = watch(options);
    EXPECT_FALSE(watcher->complete());
    EXPECT_EQ(watcher->gap(), WatchGap::watchLimit);
    EXPECT_EQ(watcher->watchCount(), 0u);  // nothing can be concluded: all released
}

TEST_F(FileWatcherTest, BecomesIncompleteWhenNewFoldersExceedTheBudget) {
    FileWatchOptions options;
    options.watchBudget = 6;
    auto watcher = watch(options);
    ASSERT_TRUE(watcher->complete());
    test::makeFolders(dir / "tree/d/e/f");
    watcher->flush();
    EXPECT_EQ(watcher->gap(), WatchGap::watchLimit);
    EXPECT_EQ(deliveries.batches, 1u);  // the loss itself is delivered as a change
}

TEST_F(FileWatcherTest, IsIncompleteAfterTheKernelQueueOverflowed) {
    size_t queueLimit = 0;
    std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> queueLimit;
    if (queueLimit == 0 || queueLimit > 100'000) GTEST_SKIP() << "queue limit " << queueLimit;
    FileWatchOptions options;
    options.readOnlyWhenFlushed = true;
    auto watcher = watch(options);
    // Each new file queues a creation and a close-after-write.
    for (size_t i = 0; i < queueLimit / 2 + 100; ++i) {
        test::writeFile(dir / ("tree/d/" + std::to_string(i)), "");
    }
    watcher->flush();
    EXPECT_EQ(watcher->gap(), WatchGap::overflow);
    EXPECT_GE(deliveries.batches, 1u);
}

TEST_F(FileWatcherTest, IsIncompleteWhenAFolderCannotBeRead) {
    test::makeFolders(dir / "tree/d/private/inside");
    ASSERT_EQ(::chmod((dir / "tree/d/private").c_str(), 0700), 0);
    // Root may read every folder; the watcher must run as an ordinary user to be refused.
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (::setgroups(0, nullptr) != 0 || ::setresgid(65534, 65534, 65534) != 0 ||
            ::setresuid(65534, 65534, 65534) != 0) {
            _exit(10);
        }
        FileWatcher watcher({dir / "tree"}, {}, [](size_t) {});
        _exit(watcher.gap() == WatchGap::permission ? 0 : 20 + static_cast<int>(watcher.gap()));
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace veldan::platform
