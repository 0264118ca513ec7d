#pragma once
// The work shared by the discovery workers of one search for generated folders.
//
// Protocol: takePath() hands out the last queued folder (last in, first out), else the
// next of the scope's own folders in listing order, else waits while another worker is
// still busy (it may queue more), else ends the walk. A worker that took a folder walks
// it and everything below it on its own stack, offering shallow subfolders (depth 7 or
// less) back to the shared queue while that holds 31 or fewer, and calls done() when
// its stack is empty. Every folder is visit()ed once by (device, inode) however many
// paths lead to it.
//
// Contract: every member is thread-safe (one lock and its condition guard all state);
// nothing calls out while holding the lock.

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "devcleanup/DevCandidate.hpp"
#include "devcleanup/DevFolderChain.hpp"
#include "platform/FileStatus.hpp"
#include "scan/FolderIdentity.hpp"
#include "scan/ScanCancellation.hpp"

namespace veldan {

// A folder waiting to be searched: opened relative to its parent's descriptor, with the
// marker files its parent holds (DevCleanupKind's sibling marker bits).
struct DevQueuedFolder {
    SharedFd parent;
    std::string path;
    int depth = 1;  // the scope's own folders are at depth 1
    uint8_t parentMarkers = 0;
};

class DevDiscoveryState {
public:
    static constexpr size_t sharedLimit = 32;
    static constexpr int sharedDepth = 7;
    static constexpr double progressInterval = 0.25;

    explicit DevDiscoveryState(std::vector<DevQueuedFolder> roots);

    // The next folder to search, counted as active until done(); nothing once the walk
    // is over or cancelled.
    std::optional<DevQueuedFolder> takePath(const ScanCancellation& cancellation);
    // Queues `folder` for any worker and returns true, or returns false (leaving it
    // untouched) when it lies too deep or the queue is full, and the caller keeps it.
    bool offer(DevQueuedFolder& folder);
    void done();

    struct Visit {
        int64_t visited = 0;
        int64_t candidates = 0;
        bool shouldReport = false;  // 0.25 s passed since the last report
    };
    // Claims the folder `status` describes; nothing when it was claimed before.
    std::optional<Visit> visit(const platform::FileStatus& status);
    void add(DevCandidate candidate);
    void addUnreadable();

    // After every worker has returned.
    std::vector<DevCandidate> takeCandidates();
    int64_t unreadableCount() const;

private:
    mutable std::mutex lock_;
    std::condition_variable workAvailable_;
    std::vector<DevQueuedFolder> roots_;
    size_t nextRoot_ = 0;
    std::vector<DevQueuedFolder> queued_;
    size_t activeWorkers_ = 0;
    std::unordered_set<FolderIdentity, FolderIdentityHash> visitedDirectories_;
    std::vector<DevCandidate> candidates_;
    int64_t unreadableCount_ = 0;
    int64_t visitedCount_ = 0;
    double lastProgress_ = 0;
};

}  // namespace veldan
