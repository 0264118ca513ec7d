#pragma once
// The work queue shared by the collection workers of one duplicate search.
//
// Protocol: a worker takes a directory with takeDirectory() (last in, first out) and then
// works depth-first on its own stack; subfolders it finds go back to the shared queue
// while that holds fewer than 64 entries, otherwise onto its stack, which bounds both
// contention and memory. When its stack is empty it calls directoryDone(). The walk ends
// when the queue is empty and no worker holds a directory.
//
// Listed folders stay open for their subfolders (share()) up to a fixed number of
// descriptors for the whole walk; beyond that, subfolders are reached by their paths.
//
// Contract: every member is thread-safe (one lock and its condition guard all state; the
// count of shared folders is atomic); the progress callback is called outside the lock.
// The work must outlive every folder it shared.

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "duplicates/DuplicateCollectResult.hpp"
#include "duplicates/DuplicateDirectory.hpp"
#include "duplicates/DuplicateScanPhase.hpp"
#include "scan/ScanCancellation.hpp"

namespace veldan {

class DuplicateCollectWork {
public:
    static constexpr size_t sharedQueueLimit = 64;
    static constexpr double progressInterval = 0.25;
    // `root` is the search's folder, expected to be `rootIdentity`; at most
    // `sharedFolderLimit` listed folders are kept open at once.
    DuplicateCollectWork(std::string root, DuplicateIdentity rootIdentity, size_t workers,
                         int sharedFolderLimit, DuplicateScanProgress progress);

    // Waits for a directory; nothing once every directory is done or the search is
    // cancelled. A returned directory counts as being worked on until directoryDone().
    std::optional<DuplicateDirectory> takeDirectory(const ScanCancellation& cancellation);
    // Moves directories from the back of `directories` to the shared queue while it has
    // room, waking a waiter for each; the caller keeps what is left.
    void offerDirectories(std::vector<DuplicateDirectory>& directories);
    // The caller's directory and everything on its own stack are done.
    void directoryDone();

    // Takes `fd` over to share it with the subfolders of its listing, or returns nothing
    // (leaving `fd` untouched) when the walk already keeps its limit of folders open.
    DuplicateSharedFolder share(platform::UniqueFd& fd);

    // True the first time a directory or a hard-linked file is claimed.
    bool claimDirectory(const DuplicateIdentity& identity);
    bool claimHardlinkedFile(const DuplicateIdentity& identity);

    // Stores the worker's count; reports the sum unless the last report is younger than
    // 0.25 s (always with `force`).
    void report(size_t worker, int64_t files, bool force);
    void finishWorker(DuplicateCollectResult result, size_t worker);
    // After every worker has returned: the results, with the sets and the queue emptied
    // and one final report of the total.
    std::vector<DuplicateCollectResult> takeResults();

private:
    std::mutex lock_;
    std::condition_variable condition_;
    DuplicateScanProgress progress_;
    // Before the queue, whose folders give their places back when they are destroyed.
    const int sharedFolderLimit_;
    std::atomic<int> sharedFolders_ = 0;
    std::vector<DuplicateDirectory> queued_;
    size_t activeWorkers_ = 0;
    std::unordered_set<DuplicateIdentity, DuplicateIdentityHash> seenDirectories_;
    std::unordered_set<DuplicateIdentity, DuplicateIdentityHash> seenHardlinkedFiles_;
    std::vector<int64_t> fileCounts_;
    double lastProgress_ = 0;
    std::vector<std::optional<DuplicateCollectResult>> workerResults_;
};

}  // namespace veldan
