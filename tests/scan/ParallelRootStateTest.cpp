#include "scan/ParallelRootState.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>


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

}  // namespace veldan
