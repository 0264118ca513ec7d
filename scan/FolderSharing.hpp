#pragma once
// Lets workers that ran out of top-level entries help inside the entries still being
// walked, so one large folder does not leave the other cores idle.
//
// Protocol:
//  - While some worker is hungry (wanted()), a walker offers one listed folder that still
//    has subfolders to enter. From then on each subfolder of that folder is claimed under
//    the sharing lock, by its own walker (claimOwn) or by a helper (takeAny, helpWithin).
//  - A helper walks the claimed subfolder on its own and hands the finished node back
//    (deposit); the offering walker folds the deposits in (collect) before it finishes the
//    folder. While a deposit is still out it helps below that same folder (helpWithin).
//  - A walker that waits only ever takes work below what it waits for, and work that is
//    claimed is always being walked, so no two workers can wait on each other.
//
// Contract: one per scan, shared by its workers; every member is thread-safe. A folder
// and its descriptor live until its walker and every helper have let go of it.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "scan/KeptChildren.hpp"
#include "scan/ScanEntry.hpp"
#include "scan/SharedFolder.hpp"

namespace veldan {

class FolderSharing {
public:
    struct Task {
        std::shared_ptr<SharedFolder> folder;
        ScanEntry subfolder;
    };

    // Every worker joins before it takes its first entry, so that the scan counts as
    // done only once all of them are out of work.
    void join();
    // Whether more workers wait for work than there are folders on offer; cheap enough to
    // ask between any two folders.
    bool wanted() const {
        return hungry_.load(std::memory_order_relaxed) > offered_.load(std::memory_order_relaxed);
    }

    void offer(std::shared_ptr<SharedFolder> folder);
    // The walker's own next subfolder of its offered folder; nothing when all are claimed.
    std::optional<ScanEntry> claimOwn(SharedFolder& folder);
    // For a worker without work: blocks until some subfolder can be claimed, or returns
    // nothing once no worker is walking anything (the scan is done).
    std::optional<Task> takeAny();
    // For a walker whose `folder` has deposits out: blocks until work below `folder` can be
    // claimed, or returns nothing once every deposit is in.
    std::optional<Task> helpWithin(SharedFolder& folder);
    // A helper's finished subfolder; `node` is empty when it was not entered.
    void deposit(SharedFolder& folder, std::optional<DiskNode> node, int64_t bytes,
                 bool incomplete);
    // Adds the deposits to the walker's totals of `folder` and withdraws the offer. Call
    // once helpWithin() returned nothing.
    void collect(SharedFolder& folder, int64_t& bytes, KeptChildren& children, bool& incomplete);
    // Reads the deposits so far, for a partial tree.
    void peek(const SharedFolder& folder, int64_t& bytes, KeptChildren& children) const;

private:
    // Claims a subfolder of the shallowest offer (below `under` when given); the caller
    // holds the lock.
    std::optional<Task> claim(const std::string* under);
    void withdraw(const SharedFolder& folder);  // the caller holds the lock

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::shared_ptr<SharedFolder>> offers_;  // those with unclaimed subfolders
    std::atomic<int> hungry_{0};
    std::atomic<int> offered_{0};  // the size of offers_
    int busy_ = 0;                 // workers that joined and are not waiting in takeAny()
};

}  // namespace veldan
