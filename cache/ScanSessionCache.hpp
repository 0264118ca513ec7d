#pragma once
// Within one run of the program, a finished scan of a folder stays valid for as long as
// nothing inside the folder changes: scanning the same folder again then returns the kept
// snapshot at once instead of walking the disk. The cache holds one ScanSessionWatcher at
// a time; preparing a scan of another folder (or a scan that cannot reuse) replaces it.
// Any file event, a cleanup that touched the folder, a changed access level, or a root
// that was replaced prevents reuse; so does a tree that cannot be watched completely.
//
// Scans reach it through the ScanReuse hook of DiskScanner; cleanups report what they
// moved with invalidateCurrent().
//
// Contract: every member is thread-safe. shared() lives until the process exits.

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "cache/ScanSessionWatcher.hpp"
#include "platform/FileWatcher.hpp"
#include "scan/ScanReuse.hpp"

namespace veldan {

class ScanSessionCache final : public ScanReuse {
public:
    // What prepare() hands to a scan that walks: the watcher and its generation when the
    // scan started, so the result is only kept if nothing changed while it was measured.
    struct Ticket {
        std::shared_ptr<ScanSessionWatcher> watcher;  // none when the folder cannot be read
        uint64_t generation = 0;
        int access = 0;

        // Keeps the snapshot if the generation did not move; returns whether it was kept.
        bool store(const ScanSnapshot& snapshot) const;
    };
    struct Preparation {
        Ticket ticket;
        std::optional<ScanSnapshot> snapshot;  // set: use it, no walk is needed
    };

    ScanSessionCache();
    static ScanSessionCache& shared();

    // `access` stands for the access level in force (accessLevel()), so that a snapshot
    // made with less access is not reused after more was granted.
    Preparation prepare(const std::string& path, int access);
    // The scanner's hook: prepare() with the current access level.
    Prepared prepare(const std::string& path) override;

    // Called with the paths a cleanup moved: drops the kept snapshot when any of them is,
    // contains or lies under the watched folder or the additional location.
    void invalidateCurrent(const std::vector<std::string>& affectedPaths);
    // Delivers pending events and returns the generation, when the current watcher is for
    // `path`; nothing otherwise.
    std::optional<uint64_t> flushedGeneration(const std::string& path);

    // For the scope "/" only: the mount point of the home folder's volume when it lies on
    // another device than `watchedPath`, so that changes there are seen too.
    static std::optional<std::string> additionalVolumePath(const std::string& path,
                                                           const std::string& watchedPath);

    // The access level in force: full disk access and the photo and music authorisations,
    // one number that changes whenever any of the three does.
    static int accessLevel();

    // For tests: where the access level comes from, and how watchers watch.
    void setAccessLevelSource(std::function<int()> source);
    void setWatchOptions(platform::FileWatchOptions options);

private:
    class Lease;

    std::mutex mutex_;
    std::shared_ptr<ScanSessionWatcher> current_;
    std::function<int()> accessLevelSource_;
    platform::FileWatchOptions watchOptions_;
};

}  // namespace veldan
