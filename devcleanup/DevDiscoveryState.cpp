#include "devcleanup/DevDiscoveryState.hpp"

#include <utility>

#include "platform/Uptime.hpp"

namespace veldan {

DevDiscoveryState::DevDiscoveryState(std::vector<DevQueuedFolder> roots)
    : roots_(std::move(roots)), lastProgress_(platform::uptimeSeconds()) {
    queued_.reserve(sharedLimit);
}

std::optional<DevQueuedFolder> DevDiscoveryState::takePath(const ScanCancellation& cancellation) {
    std::unique_lock guard(lock_);
    for (;;) {
        if (cancellation.cancelled()) return std::nullopt;
        if (!queued_.empty()) {
            DevQueuedFolder folder = std::move(queued_.back());
            queued_.pop_back();
            ++activeWorkers_;
            return folder;
        }
        if (nextRoot_ < roots_.size()) {
            ++activeWorkers_;
            return std::move(roots_[nextRoot_++]);
        }
        if (activeWorkers_ == 0) return std::nullopt;
        workAvailable_.wait(guard);
    }
}

bool DevDiscoveryState::offer(DevQueuedFolder& folder) {
    if (folder.depth > sharedDepth) return false;
    {
        std::lock_guard guard(lock_);
        if (queued_.size() >= sharedLimit) return false;
        queued_.push_back(std::move(folder));
    }
    workAvailable_.notify_one();
    return true;
}

void DevDiscoveryState::done() {
    {
        std::lock_guard guard(lock_);
        --activeWorkers_;
    }
    // Everyone waiting must look again: the walk may be over.
    workAvailable_.notify_all();
}

std::optional<DevDiscoveryState::Visit> DevDiscoveryState::visit(
    const platform::FileStatus& status) {
    std::lock_guard guard(lock_);
    if (!visitedDirectories_.insert({status.device, status.inode}).second) return std::nullopt;
    Visit visit{++visitedCount_, static_cast<int64_t>(candidates_.size()), false};
    const double now = platform::uptimeSeconds();
    if (now - lastProgress_ >= progressInterval) {
        lastProgress_ = now;
        visit.shouldReport = true;
    }
    return visit;
}

void DevDiscoveryState::add(DevCandidate candidate) {
    std::lock_guard guard(lock_);
    candidates_.push_back(std::move(candidate));
}

void DevDiscoveryState::addUnreadable() {
    std::lock_guard guard(lock_);
    ++unreadableCount_;
}

std::vector<DevCandidate> DevDiscoveryState::takeCandidates() {
    std::lock_guard guard(lock_);
    visitedDirectories_ = {};
    roots_ = {};
    queued_ = {};
    return std::move(candidates_);
}

int64_t DevDiscoveryState::unreadableCount() const {
    std::lock_guard guard(lock_);
    return unreadableCount_;
}

}  // namespace veldan
