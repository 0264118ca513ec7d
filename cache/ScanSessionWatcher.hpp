#pragma once
// Keeps the latest snapshot of one scanned folder for as long as nothing inside it
// changes. A FileWatcher watches the folder's tree; every delivery of events increases
// `generation` and drops the snapshot, so a snapshot is only ever handed out again when no
// change could have gone unseen. A scan records the generation when it starts, and its
// result is kept only if the generation is still the same when it finishes.
//
// When the tree cannot be watched completely (watch limit, permission, lost events), the
// watcher keeps nothing at all: a reused map must never hide a change.
//
// Contract: shared between the session cache and the tickets of scans under way
// (std::shared_ptr); every member is thread-safe. Events arrive on the file watcher's
// queue and take the same lock.

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>

#include "cache/ScanRootIdentity.hpp"
#include "platform/FileWatcher.hpp"
#include "scan/ScanSnapshot.hpp"

namespace veldan {

class ScanSessionWatcher {
public:
    // Starts watching `root` (its watched path, and the additional path when there is
    // one); returns once every folder is watched or the watch is known to be incomplete.
    ScanSessionWatcher(ScanRootIdentity root, platform::FileWatchOptions options);
    ScanSessionWatcher(const ScanSessionWatcher&) = delete;
    ScanSessionWatcher& operator=(const ScanSessionWatcher&) = delete;

    const ScanRootIdentity& root() const { return root_; }
    uint64_t generation() const;
    bool isWatchComplete() const { return watcher_->complete(); }

    // Keeps `snapshot`, made with access level `access`, if the generation still equals
    // `startedAt`. Pending events are read first, so a change made before this call always
    // counts. Returns whether it was kept.
    bool store(const ScanSnapshot& snapshot, int access, uint64_t startedAt);
    // The kept snapshot, if there is one made with `access`, the watch is complete and the
    // root is unchanged.
    std::optional<ScanSnapshot> reuse(int access) const;
    // Drops the kept snapshot and moves the generation on, as an event would.
    void invalidate();
    // Delivers the events the kernel holds now; then returns the generation.
    uint64_t flush();

private:
    void changed();

    const ScanRootIdentity root_;
    mutable std::mutex lock_;
    uint64_t generation_ = 0;
    struct Kept {
        ScanSnapshot snapshot;
        int access = 0;
    };
    std::optional<Kept> cached_;
    // Last, so that it stops (and its queue drains) before the fields above are destroyed.
    std::unique_ptr<platform::FileWatcher> watcher_;
};

}  // namespace veldan
