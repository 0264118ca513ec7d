#pragma once
// Watches whole folder trees for changes with inotify: one watch per folder, added for
// every folder of the trees when the watcher is made and for every folder created or
// moved in later. Events are coalesced: the first one opens a window of `latency`, and
// everything that arrives within it is delivered as one batch on the serial queue
// "com.veldan.scan-events".
//
// A watcher that cannot see every change says so, for good: `complete()` turns false
// when a folder cannot be watched (the watch budget or the kernel's limit is reached, or
// permission is refused), when the kernel's event queue overflowed, or when a watched
// file system was unmounted. Its watches are then released, since nothing can be
// concluded from them any more, and one last batch is delivered.
//
// Events at or below `ignoredFolders` (Veldan's own cache, state and preference folders)
// are dropped, so the program's own writes do not count as changes; folders that contain
// a watched root are never ignored. Watches stay on each root's file system.
//
// Contract: the callback runs on the event queue, never concurrently with itself, and
// never after the destructor returned. flush() may be called from any thread except the
// event queue; the other members from any thread.

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <unordered_map>
#include <vector>

#include "platform/SerialQueue.hpp"
#include "platform/UniqueFd.hpp"

namespace veldan::platform {

// Why a watcher is not complete.
enum class WatchGap { none, watchLimit, permission, overflow, unavailable };

struct FileWatchOptions {
    std::chrono::milliseconds latency{250};
    std::vector<std::string> ignoredFolders;
    // Most watches this watcher may hold; 0 means defaultWatchBudget().
    size_t watchBudget = 0;
    // No reading thread: events wait in the kernel until flush(). For tests that need
    // the kernel's queue to fill up.
    bool readOnlyWhenFlushed = false;
};

class FileWatcher {
public:
    using Callback = std::function<void(size_t eventCount)>;

    // Watches the folder trees at `roots` (absolute paths, links resolved). Returns once
    // every folder is watched or the watcher is known to be incomplete.
    FileWatcher(std::vector<std::string> roots, FileWatchOptions options, Callback callback);
    ~FileWatcher();
    FileWatcher(const FileWatcher&) = delete;
    FileWatcher& operator=(const FileWatcher&) = delete;

    bool complete() const { return gap() == WatchGap::none; }
    WatchGap gap() const { return gap_.load(std::memory_order_acquire); }
    size_t watchCount() const;

    // Reads every event the kernel holds now and delivers what is pending at once,
    // returning after the callback ran. Changes made before the call are always seen.
    void flush();

    // Half of the user's inotify watch limit, at most 65,536: enough for large trees while
    // leaving the rest of the user's programs room to watch their own folders.
    static size_t defaultWatchBudget();

private:
    struct Root {
        std::string path;
        uint64_t device = 0;
    };

    void run();
    // Callers hold mutex_.
    void watchTree(const std::string& path, uint64_t device);
    void unwatchTree(const std::string& path);
    size_t readEvents();
    size_t handle(int wd, uint32_t mask, const std::string& name);
    void markGap(WatchGap gap);
    void post();
    bool isIgnored(const std::string& path) const;
    const Root* rootFor(const std::string& path) const;

    FileWatchOptions options_;
    Callback callback_;
    std::vector<Root> roots_;
    std::vector<std::string> ignored_;
    size_t budget_ = 0;

    mutable std::mutex mutex_;
    UniqueFd inotify_;
    UniqueFd wake_;
    std::unordered_map<int, std::string> paths_;  // watch descriptor to folder
    std::map<std::string, int> watches_;          // folder to watch descriptor
    size_t pending_ = 0;                          // events not yet delivered
    std::chrono::steady_clock::time_point deadline_;
    bool stopping_ = false;
    std::atomic<WatchGap> gap_{WatchGap::none};

    SerialQueue queue_{"com.veldan.scan-events"};
    std::thread thread_;
};

}  // namespace veldan::platform
