#include "cache/ScanSessionWatcher.hpp"

namespace veldan {

ScanSessionWatcher::ScanSessionWatcher(ScanRootIdentity root, platform::FileWatchOptions options)
    : root_(std::move(root)) {
    std::vector<std::string> watched{root_.watchedPath};
    if (root_.additionalWatchedPath) watched.push_back(*root_.additionalWatchedPath);
    watcher_ = std::make_unique<platform::FileWatcher>(std::move(watched), std::move(options),
                                                       [this](size_t) { changed(); });
}

void ScanSessionWatcher::changed() {
    std::unique_lock guard(lock_);
    ++generation_;
    cached_.reset();
}

uint64_t ScanSessionWatcher::generation() const {
    std::unique_lock guard(lock_);
    return generation_;
}

bool ScanSessionWatcher::store(const ScanSnapshot& snapshot, int access, uint64_t startedAt) {
    watcher_->flush();
    std::unique_lock guard(lock_);
    if (generation_ != startedAt || !watcher_->complete()) return false;
    cached_ = Kept{snapshot, access};
    return true;
}

std::optional<ScanSnapshot> ScanSessionWatcher::reuse(int access) const {
    {
        std::unique_lock guard(lock_);
        if (!cached_ || cached_->access != access || !watcher_->complete()) return std::nullopt;
    }
    // Reading the root's identity touches the disk: not under the lock.
    if (!root_.isUnchanged()) return std::nullopt;
    std::unique_lock guard(lock_);
    if (!cached_ || cached_->access != access || !watcher_->complete()) return std::nullopt;
    return cached_->snapshot;
}

void ScanSessionWatcher::invalidate() {
    changed();
}

uint64_t ScanSessionWatcher::flush() {
    watcher_->flush();
    return generation();
}

}  // namespace veldan
