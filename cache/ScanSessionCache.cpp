#include "cache/ScanSessionCache.hpp"

#include "platform/FileStatus.hpp"
#include "platform/MediaAuthorization.hpp"
#include "platform/MountPoints.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"
#include "scan/FullDiskAccess.hpp"

namespace veldan {

namespace {

// Veldan's own folders: what it writes there (saved maps, preferences, its activity
// record) is not a change of the user's files.
// Both as written and resolved: events name the resolved paths of the watched tree, and a
// home folder reached through a link is common.
std::vector<std::string> ownFolders() {
    std::vector<std::string> folders;
    for (const auto& base :
         {platform::cacheHome(), platform::stateHome(), platform::configHome()}) {
        folders.push_back(platform::joinPath(base, "Veldan"));
        std::string resolved = platform::joinPath(platform::resolveSymlinks(base), "Veldan");
        if (resolved != folders.back()) folders.push_back(std::move(resolved));
    }
    return folders;
}

bool related(const std::string& a, const std::string& b) {
    return platform::isSameOrUnder(a, b) || platform::isSameOrUnder(b, a);
}

}  // namespace

class ScanSessionCache::Lease final : public ScanReuse::Lease {
public:
    explicit Lease(Ticket ticket) : ticket_(std::move(ticket)) {}
    void store(const ScanSnapshot& snapshot) override { ticket_.store(snapshot); }

private:
    Ticket ticket_;
};

bool ScanSessionCache::Ticket::store(const ScanSnapshot& snapshot) const {
    return watcher && watcher->store(snapshot, access, generation);
}

ScanSessionCache::ScanSessionCache() : accessLevelSource_(&ScanSessionCache::accessLevel) {}

ScanSessionCache& ScanSessionCache::shared() {
    static ScanSessionCache cache;
    return cache;
}

int ScanSessionCache::accessLevel() {
    const auto disk = static_cast<int>(FullDiskAccess::check());
    const auto photos = static_cast<int>(platform::photoLibraryAuthorization());
    const auto music = static_cast<int>(platform::musicLibraryAuthorization());
    return disk + 4 * photos + 16 * music;
}

void ScanSessionCache::setAccessLevelSource(std::function<int()> source) {
    std::unique_lock lock(mutex_);
    accessLevelSource_ = std::move(source);
}

void ScanSessionCache::setWatchOptions(platform::FileWatchOptions options) {
    std::unique_lock lock(mutex_);
    watchOptions_ = std::move(options);
}

ScanSessionCache::Preparation ScanSessionCache::prepare(const std::string& path, int access) {
    auto root = ScanRootIdentity::read(path);
    std::unique_lock lock(mutex_);
    if (!root) {
        current_.reset();
        return Preparation{Ticket{nullptr, 0, access}, std::nullopt};
    }
    if (current_ && current_->root() == *root) {
        const uint64_t generation = current_->flush();
        if (auto snapshot = current_->reuse(access)) {
            return Preparation{Ticket{current_, generation, access}, std::move(snapshot)};
        }
    }
    // Watching starts before the walk does, so every change the walk could miss is seen.
    current_.reset();
    platform::FileWatchOptions options = watchOptions_;
    for (auto& folder : ownFolders())
        options.ignoredFolders.push_back(std::move(folder));
    current_ = std::make_shared<ScanSessionWatcher>(std::move(*root), std::move(options));
    return Preparation{Ticket{current_, current_->generation(), access}, std::nullopt};
}

ScanReuse::Prepared ScanSessionCache::prepare(const std::string& path) {
    std::function<int()> source;
    {
        std::unique_lock lock(mutex_);
        source = accessLevelSource_;
    }
    auto preparation = prepare(path, source());
    Prepared prepared;
    if (preparation.snapshot) {
        prepared.reusable = std::move(preparation.snapshot);
    } else {
        prepared.lease = std::make_unique<Lease>(std::move(preparation.ticket));
    }
    return prepared;
}

void ScanSessionCache::invalidateCurrent(const std::vector<std::string>& affectedPaths) {
    std::shared_ptr<ScanSessionWatcher> watcher;
    {
        std::unique_lock lock(mutex_);
        watcher = current_;
    }
    if (!watcher) return;
    const ScanRootIdentity& root = watcher->root();
    for (const auto& affected : affectedPaths) {
        const std::string path = platform::standardizePath(affected);
        if (related(path, root.watchedPath) || related(path, root.path) ||
            (root.additionalWatchedPath && related(path, *root.additionalWatchedPath))) {
            watcher->invalidate();
            return;
        }
    }
}

std::optional<uint64_t> ScanSessionCache::flushedGeneration(const std::string& path) {
    std::shared_ptr<ScanSessionWatcher> watcher;
    {
        std::unique_lock lock(mutex_);
        watcher = current_;
    }
    if (!watcher || watcher->root().path != platform::absolutePath(path)) return std::nullopt;
    return watcher->flush();
}

std::optional<std::string> ScanSessionCache::additionalVolumePath(const std::string& path,
                                                                  const std::string& watchedPath) {
    if (platform::standardizePath(path) != "/") return std::nullopt;
    const std::string home = platform::resolveSymlinks(platform::homeFolder());
    auto homeStatus = platform::statPath(home, true);
    auto watchedStatus = platform::statPath(watchedPath, true);
    if (!homeStatus || !watchedStatus || homeStatus->device == watchedStatus->device) {
        return std::nullopt;
    }
    return platform::mountPointOf(home);
}

}  // namespace veldan
