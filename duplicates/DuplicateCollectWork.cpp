#include "duplicates/DuplicateCollectWork.hpp"

#include <numeric>
#include <utility>

#include "platform/Uptime.hpp"

namespace veldan {

DuplicateCollectWork::DuplicateCollectWork(std::string root, DuplicateIdentity rootIdentity,
                                           size_t workers, int sharedFolderLimit,
                                           DuplicateScanProgress progress)
    : progress_(std::move(progress)),
      sharedFolderLimit_(sharedFolderLimit),
      fileCounts_(workers, 0),
      lastProgress_(platform::uptimeSeconds()),
      workerResults_(workers) {
    queued_.push_back({std::move(root), rootIdentity, nullptr});
}

std::optional<DuplicateDirectory> DuplicateCollectWork::takeDirectory(
    const ScanCancellation& cancellation) {
    std::unique_lock guard(lock_);
    for (;;) {
        if (cancellation.cancelled()) return std::nullopt;
        if (!queued_.empty()) {
            DuplicateDirectory directory = std::move(queued_.back());
            queued_.pop_back();
            ++activeWorkers_;
            return directory;
        }
        if (activeWorkers_ == 0) return std::nullopt;
        condition_.wait(guard);
    }
}

void DuplicateCollectWork::offerDirectories(std::vector<DuplicateDirectory>& directories) {
    size_t offered = 0;
    {
        std::lock_guard guard(lock_);
        while (!directories.empty() && queued_.size() < sharedQueueLimit) {
            queued_.push_back(std::move(directories.back()));
            directories.pop_back();
            ++offered;
        }
    }
    for (size_t i = 0; i < offered; ++i)
        condition_.notify_one();
}

DuplicateSharedFolder DuplicateCollectWork::share(platform::UniqueFd& fd) {
    if (sharedFolders_.fetch_add(1, std::memory_order_relaxed) >= sharedFolderLimit_) {
        sharedFolders_.fetch_sub(1, std::memory_order_relaxed);
        return nullptr;
    }
    return DuplicateSharedFolder(new platform::UniqueFd(std::move(fd)),
                                 [this](const platform::UniqueFd* folder) {
                                     delete folder;
                                     sharedFolders_.fetch_sub(1, std::memory_order_relaxed);
                                 });
}

void DuplicateCollectWork::directoryDone() {
    {
        std::lock_guard guard(lock_);
        --activeWorkers_;
    }
    // Everyone waiting must look again: the walk may be over.
    condition_.notify_all();
}

bool DuplicateCollectWork::claimDirectory(const DuplicateIdentity& identity) {
    std::lock_guard guard(lock_);
    return seenDirectories_.insert(identity).second;
}

bool DuplicateCollectWork::claimHardlinkedFile(const DuplicateIdentity& identity) {
    std::lock_guard guard(lock_);
    return seenHardlinkedFiles_.insert(identity).second;
}

void DuplicateCollectWork::report(size_t worker, int64_t files, bool force) {
    int64_t sum = 0;
    {
        std::lock_guard guard(lock_);
        fileCounts_[worker] = files;
        const double now = platform::uptimeSeconds();
        if (!force && now - lastProgress_ < progressInterval) return;
        lastProgress_ = now;
        sum = std::accumulate(fileCounts_.begin(), fileCounts_.end(), int64_t{0});
    }
    if (progress_) progress_(DuplicateScanPhase::collecting, sum, 0);
}

void DuplicateCollectWork::finishWorker(DuplicateCollectResult result, size_t worker) {
    std::lock_guard guard(lock_);
    fileCounts_[worker] = result.filesVisited;
    workerResults_[worker] = std::move(result);
}

std::vector<DuplicateCollectResult> DuplicateCollectWork::takeResults() {
    std::vector<DuplicateCollectResult> results;
    int64_t sum = 0;
    {
        std::lock_guard guard(lock_);
        sum = std::accumulate(fileCounts_.begin(), fileCounts_.end(), int64_t{0});
        for (auto& slot : workerResults_) {
            if (slot && (slot->filesVisited > 0 || slot->unreadable > 0 || !slot->bySize.empty())) {
                results.push_back(std::move(*slot));
            }
            slot.reset();
        }
        queued_.clear();
        queued_.shrink_to_fit();
        seenDirectories_ = {};
        seenHardlinkedFiles_ = {};
    }
    if (progress_) progress_(DuplicateScanPhase::collecting, sum, 0);
    return results;
}

}  // namespace veldan
