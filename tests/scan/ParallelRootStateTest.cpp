#include "scan/ParallelRootState.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "scan/ScanContext.hpp"

namespace veldan {

namespace {

DiskNode folder(const std::string& path, int64_t bytes) {
    DiskNode node;
    node.path = path;
    node.name = path.substr(path.rfind('/') + 1);
    node.bytes = bytes;
    node.isDirectory = true;
    node.isPartial = true;
    return node;
}

}  // namespace

TEST(ParallelRootState, CloseWaitsForADeliveryUnderWayAndNoneFollowsIt) {
    std::mutex mutex;
    std::condition_variable changed;
    bool entered = false;
    bool release = false;
    std::atomic<int> deliveries{0};
    ScanCancellation cancellation;
    ParallelRootState state(
        "/r", {},
        [&](const DiskNode& root) {
            EXPECT_TRUE(root.isPartial);
            EXPECT_EQ(root.bytes, 7);
            ++deliveries;
            std::unique_lock lock(mutex);
            entered = true;
            changed.notify_all();
            changed.wait(lock, [&] { return release; });
        },
        cancellation);
    ParallelRootState::Reporter reporter(state, 0);
    reporter.setIndex(0);
    reporter.partial(folder("/r/a", 7));
    {
        std::unique_lock lock(mutex);
        ASSERT_TRUE(changed.wait_for(lock, std::chrono::seconds(5), [&] { return entered; }));
    }
    std::atomic<bool> closed{false};
    std::thread closer([&] {
        state.close();
        closed = true;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    EXPECT_FALSE(closed) << "close() returned while a partial was still being delivered";
    {
        std::lock_guard lock(mutex);
        release = true;
    }
    changed.notify_all();
    closer.join();
    EXPECT_TRUE(closed);

    std::this_thread::sleep_for(std::chrono::milliseconds(450));  // past the partial interval
    reporter.setIndex(1);
    reporter.partial(folder("/r/b", 3));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_EQ(deliveries, 1);
}

TEST(ParallelRootState, AStoppedScanDeliversNoFurtherPartials) {
    ScanCancellation cancellation;
    std::atomic<int> deliveries{0};
    ParallelRootState state(
        "/r", {}, [&](const DiskNode&) { ++deliveries; }, cancellation);
    ParallelRootState::Reporter reporter(state, 0);
    cancellation.cancel();
    reporter.setIndex(0);
    reporter.partial(folder("/r/a", 7));
    ParallelChildResult halfMeasured;
    halfMeasured.node = folder("/r/b", 3);
    halfMeasured.bytes = 3;
    state.finish(1, std::move(halfMeasured));
    state.close();
    EXPECT_EQ(deliveries, 0);
}

TEST(ParallelRootState, FinishedChildrenFollowTheSeventeenChildRuleAtTheRoot) {
    ScanCancellation cancellation;
    ParallelRootState state("/r", {}, {}, cancellation);
    state.finishListing({}, 0, 19);
    for (int i = 0; i < 19; ++i) {
        auto index = state.takeNext();
        ASSERT_TRUE(index.has_value());
        ParallelChildResult result;
        result.node = folder("/r/c" + std::to_string(10 + i), 100 + i);
        result.node->isPartial = false;
        result.bytes = 100 + i;
        state.finish(*index, std::move(result));
    }
    EXPECT_FALSE(state.takeNext().has_value());
    const DiskNode root = state.takeRoot();
    EXPECT_EQ(root.bytes, 19 * 100 + 171);
    ASSERT_EQ(root.children.size(), 18u);
    // c10 and c11 fold into Other, whose 201 bytes then sort it first.
    EXPECT_TRUE(root.children.front().isSummary);
    EXPECT_EQ(root.children.front().bytes, 100 + 101);
    EXPECT_EQ(root.children.back().name, "c12");
    EXPECT_FALSE(root.isPartial);
}

TEST(ScanContext, StartupAliasesOnlyApplyToTheWholeDisk) {
    ScanCancellation cancellation;
    ScanContext disk("/", ScanSettings{"/home/me"}, {}, cancellation);
    for (const char* alias : {"/Volumes", "/System/Volumes", "/.nofollow", "/.resolve"}) {
        EXPECT_TRUE(disk.isStartupAlias(alias)) << alias;
    }
    EXPECT_FALSE(disk.isStartupAlias("/System"));
    EXPECT_FALSE(disk.isStartupAlias("/Volumes/x"));
    ScanContext folder("/data", ScanSettings{"/home/me"}, {}, cancellation);
    EXPECT_FALSE(folder.isStartupAlias("/Volumes"));
}

}  // namespace veldan
