#include "platform/FileWatcher.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "platform/Paths.hpp"

namespace veldan::platform {

namespace {

// Everything that can change what a scan measures: entries coming and going, contents
// and permissions changing, and the watched folder itself going away.
constexpr uint32_t watchMask = IN_CREATE | IN_DELETE | IN_MODIFY | IN_ATTRIB | IN_CLOSE_WRITE |
                               IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF |
                               IN_ONLYDIR | IN_DONT_FOLLOW | IN_EXCL_UNLINK;

WatchGap gapForErrno(int error) {
    switch (error) {
        case ENOSPC:
            return WatchGap::watchLimit;
        case EACCES:
        case EPERM:
            return WatchGap::permission;
        default:
            return WatchGap::unavailable;
    }
}

// A folder that vanished or became something else between listing and watching was
// changed before the scan that follows could read it, so it is simply not there.
bool vanished(int error) {
    return error == ENOENT || error == ENOTDIR || error == ELOOP;
}

// inotify reports only what this machine's kernel does: on network and user-space file
// systems changes made elsewhere never arrive, so such a tree cannot be watched whole.
bool reportsEveryChange(const std::string& path) {
    struct statfs info {};
    if (::statfs(path.c_str(), &info) != 0) return true;  // gone: the walk will say so
    constexpr unsigned long remote[] = {
        0x6969,      // NFS
        0x517B,      // SMB
        0xFF534D42,  // CIFS
        0xFE534D42,  // SMB2
        0x65735546,  // FUSE (sshfs, cloud drives, ...)
        0x01021997,  // 9P
        0x00C36400,  // Ceph
        0x5346414F,  // AFS
        0x6B414653,  // kAFS
        0x47504653,  // GPFS
        0x0BD00BD0,  // Lustre
    };
    const auto type = static_cast<unsigned long>(info.f_type);
    return std::find(std::begin(remote), std::end(remote), type) == std::end(remote);
}

}  // namespace

size_t FileWatcher::defaultWatchBudget() {
    std::ifstream limitFile("/proc/sys/fs/inotify/max_user_watches");
    size_t limit = 0;
    if (!(limitFile >> limit) || limit == 0) limit = 8192;
    return std::min<size_t>(limit / 2, 65536);
}

FileWatcher::FileWatcher(std::vector<std::string> roots, FileWatchOptions options,
                         Callback callback)
    : options_(std::move(options)), callback_(std::move(callback)) {
    budget_ = options_.watchBudget != 0 ? options_.watchBudget : defaultWatchBudget();
    for (auto& path : roots) {
        struct stat status {};
        Root root{standardizePath(path), 0};
        if (::stat(root.path.c_str(), &status) == 0) root.device = status.st_dev;
        roots_.push_back(std::move(root));
    }
    for (const auto& folder : options_.ignoredFolders) {
        const std::string standardized = standardizePath(folder);
        const bool holdsRoot = std::any_of(roots_.begin(), roots_.end(), [&](const Root& root) {
            return isSameOrUnder(root.path, standardized);
        });
        if (!holdsRoot) ignored_.push_back(standardized);
    }

    inotify_.reset(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    wake_.reset(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    std::unique_lock lock(mutex_);
    if (!inotify_ || !wake_) {
        gap_.store(WatchGap::unavailable, std::memory_order_release);
        return;
    }
    for (const auto& root : roots_) {
        if (!reportsEveryChange(root.path)) gap_.store(WatchGap::unavailable);
        if (!complete()) break;
        watchTree(root.path, root.device);
    }
    // Setting up is not a change: nothing was delivered, nothing is pending.
    pending_ = 0;
    if (complete() && !options_.readOnlyWhenFlushed) thread_ = std::thread([this] { run(); });
}

FileWatcher::~FileWatcher() {
    {
        std::unique_lock lock(mutex_);
        stopping_ = true;
    }
    if (wake_) {
        const uint64_t one = 1;
        [[maybe_unused]] auto written = ::write(wake_.get(), &one, sizeof one);
    }
    if (thread_.joinable()) thread_.join();
    queue_.drain();
}

size_t FileWatcher::watchCount() const {
    std::unique_lock lock(mutex_);
    return paths_.size();
}

void FileWatcher::flush() {
    {
        std::unique_lock lock(mutex_);
        if (complete()) pending_ += readEvents();
        if (pending_ > 0) post();
    }
    queue_.drain();
}

void FileWatcher::run() {
    std::unique_lock lock(mutex_);
    while (!stopping_) {
        int timeout = -1;
        if (pending_ > 0) {
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(
                deadline_ - std::chrono::steady_clock::now());
            timeout = static_cast<int>(std::max<int64_t>(left.count(), 0));
        }
        pollfd fds[2] = {{inotify_.get(), POLLIN, 0}, {wake_.get(), POLLIN, 0}};
        lock.unlock();
        const int ready = ::poll(fds, 2, timeout);
        lock.lock();
        if (stopping_) break;
        if (ready < 0 && errno != EINTR) break;
        if (complete() && (fds[0].revents & POLLIN)) {
            const size_t events = readEvents();
            if (events > 0 && pending_ == 0) {
                deadline_ = std::chrono::steady_clock::now() + options_.latency;
            }
            pending_ += events;
        }
        if (pending_ > 0 && std::chrono::steady_clock::now() >= deadline_) post();
        if (!complete() && pending_ == 0) break;  // nothing is watched any more
    }
}

void FileWatcher::post() {
    const size_t count = pending_;
    pending_ = 0;
    queue_.async([this, count] { callback_(count); });
}

void FileWatcher::markGap(WatchGap gap) {
    WatchGap expected = WatchGap::none;
    if (!gap_.compare_exchange_strong(expected, gap, std::memory_order_acq_rel)) return;
    for (const auto& [wd, path] : paths_)
        ::inotify_rm_watch(inotify_.get(), wd);
    paths_.clear();
    watches_.clear();
    // Whatever was kept on the strength of this watcher can no longer be trusted.
    pending_ += 1;
    deadline_ = std::chrono::steady_clock::now();
}

bool FileWatcher::isIgnored(const std::string& path) const {
    return std::any_of(ignored_.begin(), ignored_.end(),
                       [&](const std::string& folder) { return isSameOrUnder(path, folder); });
}

// The innermost root holding `path`: the startup disk's data volume is a root of its own
// below "/".
const FileWatcher::Root* FileWatcher::rootFor(const std::string& path) const {
    const Root* found = nullptr;
    for (const auto& root : roots_) {
        if (isSameOrUnder(path, root.path) && (!found || root.path.size() > found->path.size())) {
            found = &root;
        }
    }
    return found;
}

void FileWatcher::watchTree(const std::string& top, uint64_t device) {
    std::vector<std::string> stack{top};
    while (!stack.empty() && complete()) {
        const std::string path = std::move(stack.back());
        stack.pop_back();
        if (isIgnored(path)) continue;
        if (paths_.size() >= budget_) {
            markGap(WatchGap::watchLimit);
            return;
        }
        const int wd = ::inotify_add_watch(inotify_.get(), path.c_str(), watchMask);
        if (wd < 0) {
            if (vanished(errno)) continue;
            markGap(gapForErrno(errno));
            return;
        }
        // The same folder reached under a new name (moved back in) keeps its descriptor.
        if (auto known = paths_.find(wd); known != paths_.end()) watches_.erase(known->second);
        paths_[wd] = path;
        watches_[path] = wd;

        DIR* dir = ::opendir(path.c_str());
        if (!dir) {
            if (vanished(errno)) continue;
            markGap(gapForErrno(errno));
            return;
        }
        while (auto* entry = ::readdir(dir)) {
            const char* name = entry->d_name;
            if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
            if (entry->d_type != DT_DIR && entry->d_type != DT_UNKNOWN) continue;
            struct stat status {};
            if (::fstatat(::dirfd(dir), name, &status, AT_SYMLINK_NOFOLLOW) != 0) continue;
            if (!S_ISDIR(status.st_mode) || status.st_dev != device) continue;
            stack.push_back(joinPath(path, name));
        }
        ::closedir(dir);
    }
}

void FileWatcher::unwatchTree(const std::string& top) {
    auto it = watches_.lower_bound(top);
    while (it != watches_.end() && it->first.compare(0, top.size(), top) == 0) {
        if (!isSameOrUnder(it->first, top)) {
            ++it;
            continue;
        }
        ::inotify_rm_watch(inotify_.get(), it->second);
        paths_.erase(it->second);
        it = watches_.erase(it);
    }
}

size_t FileWatcher::readEvents() {
    alignas(inotify_event) char buffer[64 * 1024];
    size_t counted = 0;
    while (complete()) {
        const ssize_t got = ::read(inotify_.get(), buffer, sizeof buffer);
        if (got <= 0) {
            if (got < 0 && errno == EINTR) continue;
            break;  // EAGAIN: nothing more queued
        }
        for (ssize_t at = 0; at < got;) {
            const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
            const std::string name =
                event->len > 0 ? std::string(event->name, ::strnlen(event->name, event->len)) : "";
            counted += handle(event->wd, event->mask, name);
            at += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
            if (!complete()) break;
        }
    }
    return counted;
}

size_t FileWatcher::handle(int wd, uint32_t mask, const std::string& name) {
    if (mask & IN_Q_OVERFLOW) {
        markGap(WatchGap::overflow);
        return 0;  // markGap made the change pending already
    }
    auto known = paths_.find(wd);
    if (mask & IN_IGNORED) {
        // The watch is gone (its folder was removed, or we removed it); the change that
        // caused it was reported by its own event.
        if (known != paths_.end()) {
            watches_.erase(known->second);
            paths_.erase(known);
        }
        return 0;
    }
    // A folder whose watch is being removed after a move: its events are still changes.
    if (known == paths_.end()) return 1;
    const std::string path = name.empty() ? known->second : joinPath(known->second, name);
    if (isIgnored(path)) return 0;
    if (mask & IN_UNMOUNT) {
        markGap(WatchGap::unavailable);
        return 0;
    }
    if (mask & IN_ISDIR) {
        if (mask & (IN_MOVED_FROM | IN_DELETE)) unwatchTree(path);
        if (mask & (IN_CREATE | IN_MOVED_TO)) {
            if (const Root* root = rootFor(path)) {
                struct stat status {};
                if (::lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
                    status.st_dev == root->device) {
                    watchTree(path, root->device);
                }
            }
        }
    }
    return 1;
}

}  // namespace veldan::platform
