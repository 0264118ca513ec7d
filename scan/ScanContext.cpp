#include "scan/ScanContext.hpp"

#include <dirent.h>
#include <sys/resource.h>

#include <algorithm>

#include "platform/Paths.hpp"

namespace veldan {

namespace {

constexpr std::string_view startupAliases[] = {"/.nofollow", "/.resolve", "/System/Volumes",
                                               "/Volumes"};

constexpr std::string_view recommendationSuffixes[] = {"/Library/pnpm/store",
                                                       "/.local/share/pnpm/store",
                                                       "/.npm/_cacache",
                                                       "/.cache/uv",
                                                       "/Library/Caches/ms-playwright",
                                                       "/go/pkg/mod",
                                                       "/.codex",
                                                       "/.claude",
                                                       "/Library/Containers/com.docker.docker",
                                                       "/.cache/huggingface",
                                                       "/Library/Caches"};

constexpr size_t maximumWorkers = 4;
constexpr size_t maximumOpenFolders = 48;
// Kept for the scanned folder itself and for the rest of the program while it scans.
constexpr size_t reservedDescriptors = 4;

size_t openDescriptors() {
    DIR* folder = ::opendir("/proc/self/fd");
    if (!folder) return 16;
    size_t count = 0;
    while (auto* entry = ::readdir(folder)) {
        if (entry->d_name[0] != '.') ++count;
    }
    ::closedir(folder);
    return count > 0 ? count - 1 : 0;  // not the listing's own descriptor
}

size_t freeDescriptors() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
        return maximumWorkers * maximumOpenFolders;
    }
    const size_t used = openDescriptors() + reservedDescriptors;
    const auto allowed = static_cast<size_t>(limit.rlim_cur);
    return allowed > used ? allowed - used : 0;
}

}  // namespace

ScanContext::ScanContext(std::string rootPath, ScanSettings settings,
                         std::set<uint64_t> allowedDevices, const ScanCancellation& cancellation)
    : rootPath_(std::move(rootPath)),
      settings_(std::move(settings)),
      allowedDevices_(std::move(allowedDevices)),
      cancellation_(cancellation) {
    for (auto& path : recommendationPaths(settings_.home))
        recommendationPaths_.insert(path);
    // A walk needs two descriptors at the least (a folder and the one being opened in it).
    const size_t free = freeDescriptors();
    workerBudget_ = std::clamp<size_t>(free / 4, 1, maximumWorkers);
    openFolderBudget_ = std::clamp<size_t>(free / workerBudget_, 2, maximumOpenFolders);
}

std::vector<std::string> ScanContext::recommendationPaths(const std::string& home) {
    std::vector<std::string> paths;
    const std::string base = home == "/" ? std::string() : home;
    for (auto suffix : recommendationSuffixes)
        paths.push_back(base + std::string(suffix));
    return paths;
}

bool ScanContext::deviceAllowed(uint64_t device) const {
    return allowedDevices_.count(device) != 0;
}

bool ScanContext::isStartupAlias(std::string_view path) const {
    if (!isStartupDisk()) return false;
    for (auto alias : startupAliases) {
        if (path == alias) return true;
    }
    return false;
}

bool ScanContext::claimFolder(FolderIdentity identity) {
    const size_t hash = FolderIdentityHash{}(identity);
    // The low bits pick the bucket inside a shard, so the shard comes from the high ones.
    VisitedShard& shard = visited_[(hash >> 32) % visitedShardCount];
    std::lock_guard lock(shard.mutex);
    return shard.folders.insert(identity).second;
}

void ScanContext::discover(std::string_view path, std::string_view name, int64_t bytes) {
    bool tracked = false;
    for (const char* trackedName : trackedDirectoryNames) {
        if (name == trackedName) tracked = true;
    }
    if (!tracked && recommendationPaths_.find(path) == recommendationPaths_.end()) return;
    std::lock_guard lock(discoveredMutex_);
    discovered_[std::string(path)] = bytes;
}

std::map<std::string, int64_t> ScanContext::discovered() const {
    std::lock_guard lock(discoveredMutex_);
    return discovered_;
}

}  // namespace veldan
