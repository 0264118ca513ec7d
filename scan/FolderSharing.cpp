#include "scan/FolderSharing.hpp"

#include <algorithm>

#include "platform/Paths.hpp"
#include "scan/SaturatingAdd.hpp"

namespace veldan {

void FolderSharing::join() {
    std::lock_guard lock(mutex_);
    ++busy_;
}

void FolderSharing::offer(std::shared_ptr<SharedFolder> folder) {
    {
        std::lock_guard lock(mutex_);
        offers_.push_back(std::move(folder));
        offered_.store(static_cast<int>(offers_.size()), std::memory_order_relaxed);
    }
    changed_.notify_all();
}

std::optional<ScanEntry> FolderSharing::claimOwn(SharedFolder& folder) {
    std::lock_guard lock(mutex_);
    if (folder.next >= folder.subfolders.size()) return std::nullopt;
    ScanEntry entry = std::move(folder.subfolders[folder.next++]);
    if (folder.next == folder.subfolders.size()) withdraw(folder);
    return entry;
}

std::optional<FolderSharing::Task> FolderSharing::takeAny() {
    std::unique_lock lock(mutex_);
    --busy_;
    ++hungry_;
    for (;;) {
        if (auto task = claim(nullptr)) {
            --hungry_;
            ++busy_;
            return task;
        }
        if (busy_ == 0) {
            // Nobody walks anything, so nothing can be offered any more.
            --hungry_;
            changed_.notify_all();
            return std::nullopt;
        }
        changed_.wait(lock);
    }
}

std::optional<FolderSharing::Task> FolderSharing::helpWithin(SharedFolder& folder) {
    std::unique_lock lock(mutex_);
    if (folder.outstanding == 0) return std::nullopt;
    ++hungry_;
    for (;;) {
        // Only work below the folder waited for: whoever holds the rest may be waiting on
        // this walker, and work below never waits on anything above it.
        if (auto task = claim(&folder.path)) {
            --hungry_;
            return task;
        }
        if (folder.outstanding == 0) {
            --hungry_;
            return std::nullopt;
        }
        changed_.wait(lock);
    }
}

void FolderSharing::deposit(SharedFolder& folder, std::optional<DiskNode> node, int64_t bytes,
                            bool incomplete) {
    {
        std::lock_guard lock(mutex_);
        // Counted in first: the walker waiting for it must wake even if keeping the node
        // fails.
        --folder.outstanding;
        folder.bytes = saturatingAdd(folder.bytes, bytes);
        folder.incomplete = folder.incomplete || incomplete;
        try {
            if (node) folder.children.keepLargest(std::move(*node));
        } catch (...) {
            folder.incomplete = true;
        }
    }
    changed_.notify_all();
}

void FolderSharing::collect(SharedFolder& folder, int64_t& bytes, KeptChildren& children,
                            bool& incomplete) {
    std::lock_guard lock(mutex_);
    // A stopped walk may leave subfolders unclaimed; nobody is to take them now.
    withdraw(folder);
    folder.next = folder.subfolders.size();
    bytes = saturatingAdd(bytes, folder.bytes);
    children.absorb(std::move(folder.children));
    folder.children = {};
    folder.bytes = 0;
    incomplete = incomplete || folder.incomplete;
}

void FolderSharing::peek(const SharedFolder& folder, int64_t& bytes, KeptChildren& children) const {
    std::lock_guard lock(mutex_);
    bytes = saturatingAdd(bytes, folder.bytes);
    children.absorb(folder.children);
}

std::optional<FolderSharing::Task> FolderSharing::claim(const std::string* under) {
    // The shallowest offer holds the largest pieces of work, as a rule.
    SharedFolder* best = nullptr;
    std::shared_ptr<SharedFolder> owner;
    for (const auto& offered : offers_) {
        if (under && !platform::isStrictlyUnder(offered->path, *under)) continue;
        if (!best || offered->depth < best->depth) {
            best = offered.get();
            owner = offered;
        }
    }
    if (!best) return std::nullopt;
    Task task{owner, std::move(best->subfolders[best->next++])};
    ++best->outstanding;
    if (best->next == best->subfolders.size()) withdraw(*best);
    return task;
}

void FolderSharing::withdraw(const SharedFolder& folder) {
    std::erase_if(offers_, [&](const auto& offered) { return offered.get() == &folder; });
    offered_.store(static_cast<int>(offers_.size()), std::memory_order_relaxed);
}

}  // namespace veldan
