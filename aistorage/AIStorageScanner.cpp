#include "aistorage/AIStorageScanner.hpp"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <numeric>
#include <thread>
#include <unordered_set>

#include "aistorage/AIStorageCatalogue.hpp"
#include "aistorage/AIStorageWalker.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"

namespace veldan {

namespace {

using Clock = std::chrono::steady_clock;
constexpr auto progressInterval = std::chrono::milliseconds(250);

struct AIStorageJob {
    size_t toolIndex = 0;
    AIStorageSource source;
    std::unordered_set<std::string> excluded;  // locations strictly inside this one
};

// Shared by the workers; every field is guarded by `lock`.
struct AIStorageWork {
    std::mutex lock;
    size_t nextIndex = 0;
    int64_t completed = 0;
    int64_t visitedItems = 0;
    std::vector<AIStorageLocation> locations;  // one per job
    int64_t unreadableCount = 0;
    Clock::time_point lastProgress;
};

bool overlaps(const std::string& a, const std::string& b) {
    return platform::isSameOrUnder(a, b) || platform::isSameOrUnder(b, a);
}

// The added folders that can be measured: absolute ones, standardized.
std::vector<AIStorageCustomLocation> usable(const std::vector<AIStorageCustomLocation>& custom) {
    std::vector<AIStorageCustomLocation> out;
    for (const auto& location : custom) {
        if (location.path.empty() || location.path.front() != '/') continue;
        out.push_back({platform::standardizePath(location.path), location.tool, location.kind});
    }
    return out;
}

std::vector<AIStorageJob> makeJobs(std::vector<AIStorageTool> tools,
                                   const std::vector<AIStorageCustomLocation>& custom) {
    for (const auto& location : custom) {
        const auto name = platform::lastPathComponent(location.path);
        tools[static_cast<size_t>(location.tool)].sources.push_back(
            {location.path, name.empty() ? location.path : std::string(name), location.kind, true,
             false});
    }
    std::vector<AIStorageJob> jobs;
    std::unordered_set<std::string> paths;
    for (size_t toolIndex = 0; toolIndex < tools.size(); ++toolIndex) {
        for (auto& source : tools[toolIndex].sources) {
            source.path = platform::standardizePath(source.path);
            // One measurement per folder, even when a variable points two rows at it.
            if (!paths.insert(source.path).second) continue;
            jobs.push_back({toolIndex, std::move(source), {}});
        }
    }
    for (auto& job : jobs) {
        for (const auto& other : jobs) {
            if (platform::isStrictlyUnder(other.source.path, job.source.path)) {
                job.excluded.insert(other.source.path);
            }
        }
    }
    return jobs;
}

// Jobs nested in one another (directly or through a third) form one group, measured by
// one worker, so that each folder's walk can leave the others out.
std::vector<std::vector<size_t>> groupJobs(const std::vector<AIStorageJob>& jobs) {
    std::vector<size_t> parent(jobs.size());
    std::iota(parent.begin(), parent.end(), size_t{0});
    const auto root = [&](size_t i) {
        while (parent[i] != i)
            i = parent[i] = parent[parent[i]];
        return i;
    };
    for (size_t i = 0; i < jobs.size(); ++i) {
        for (size_t j = 0; j < jobs.size(); ++j) {
            if (jobs[i].excluded.contains(jobs[j].source.path)) parent[root(j)] = root(i);
        }
    }
    std::vector<std::vector<size_t>> groups;
    std::vector<size_t> groupOf(jobs.size(), SIZE_MAX);
    for (size_t i = 0; i < jobs.size(); ++i) {
        size_t& group = groupOf[root(i)];
        if (group == SIZE_MAX) {
            group = groups.size();
            groups.emplace_back();
        }
        groups[group].push_back(i);
    }
    return groups;
}

}  // namespace

AIStorageScanner::AIStorageScanner() : AIStorageScanner(AIStorageCatalogue::tools()) {}

AIStorageScanner::AIStorageScanner(std::vector<AIStorageTool> catalogue)
    : catalogue_(std::move(catalogue)) {}

std::optional<AIStorageSnapshot> AIStorageScanner::scan(
    const std::vector<AIStorageCustomLocation>& custom, const ScanCancellation& cancellation,
    const AIStorageProgress& progress) const {
    const auto added = usable(custom);
    std::vector<AIStorageJob> jobs = makeJobs(catalogue_, added);
    const auto groups = groupJobs(jobs);
    const auto total = static_cast<int64_t>(jobs.size());

    AIStorageWork work;
    for (const auto& job : jobs) {
        AIStorageLocation location;
        location.path = job.source.path;
        location.label = job.source.label;
        location.kind = job.source.kind;
        location.isCustom = job.source.isCustom;
        location.overlapsCustomLocation =
            !job.source.isCustom &&
            std::any_of(added.begin(), added.end(), [&](const AIStorageCustomLocation& folder) {
                return overlaps(job.source.path, folder.path);
            });
        location.cleanable = job.source.cleanable && !location.overlapsCustomLocation;
        work.locations.push_back(std::move(location));
    }
    if (progress) progress(progressTitle, 0, total, 0);

    // Called without the lock held; `force` reports even within the interval.
    const auto report = [&](std::unique_lock<std::mutex>& held, bool force) {
        const auto now = Clock::now();
        if (!progress || (!force && now - work.lastProgress < progressInterval)) return;
        work.lastProgress = now;
        const int64_t completed = work.completed;
        const int64_t visited = work.visitedItems;
        held.unlock();
        progress(progressTitle, completed, total, visited);
    };

    const auto worker = [&] {
        AIStorageWalker walker([&](int64_t entries) {
            std::unique_lock held(work.lock);
            work.visitedItems += entries;
            report(held, false);
            return !cancellation.cancelled();
        });
        for (;;) {
            size_t groupIndex = 0;
            {
                std::lock_guard held(work.lock);
                if (work.nextIndex >= groups.size()) return;
                groupIndex = work.nextIndex++;
            }
            for (size_t jobIndex : groups[groupIndex]) {
                if (cancellation.cancelled()) return;
                AIStorageLocation location;
                {
                    std::lock_guard held(work.lock);
                    location = work.locations[jobIndex];
                }
                const int64_t unreadableBefore = walker.unreadableEntries();
                if (!walker.measure(location, jobs[jobIndex].excluded)) return;
                std::unique_lock held(work.lock);
                work.locations[jobIndex] = std::move(location);
                work.unreadableCount += walker.unreadableEntries() - unreadableBefore;
                ++work.completed;
                report(held, true);
            }
        }
    };
    // More walkers than cores only add switching: the walk is system calls, not waiting.
    const size_t cores = std::max(1u, std::thread::hardware_concurrency());
    const size_t workerCount =
        std::min({groups.size(), cores, static_cast<size_t>(maximumWorkers)});
    std::vector<std::thread> threads;
    for (size_t i = 1; i < workerCount; ++i)
        threads.emplace_back(worker);
    worker();
    for (auto& thread : threads)
        thread.join();
    if (cancellation.cancelled()) return std::nullopt;

    AIStorageSnapshot snapshot;
    snapshot.scannedAt = std::chrono::system_clock::now();
    snapshot.unreadableItems = work.unreadableCount;
    std::unordered_set<std::string> present;
    for (const auto& location : work.locations) {
        if (location.status != AIStorageStatus::missing) present.insert(location.path);
    }
    std::vector<AIStorageGroup> byTool(catalogue_.size());
    for (size_t i = 0; i < jobs.size(); ++i) {
        AIStorageLocation& location = work.locations[i];
        if (location.status == AIStorageStatus::missing && !location.isCustom) continue;
        // Only a nested location that is there makes the containing size partial.
        location.hasExcludedLocations =
            location.status == AIStorageStatus::measured &&
            std::any_of(jobs[i].excluded.begin(), jobs[i].excluded.end(),
                        [&](const std::string& path) { return present.contains(path); });
        byTool[jobs[i].toolIndex].locations.push_back(std::move(location));
    }
    for (size_t toolIndex = 0; toolIndex < byTool.size(); ++toolIndex) {
        AIStorageGroup& group = byTool[toolIndex];
        if (group.locations.empty()) continue;
        group.tool = catalogue_[toolIndex];
        group.tool.sources.clear();
        std::stable_sort(group.locations.begin(), group.locations.end(),
                         [](const AIStorageLocation& a, const AIStorageLocation& b) {
                             return a.bytes > b.bytes;
                         });
        snapshot.groups.push_back(std::move(group));
    }
    std::stable_sort(
        snapshot.groups.begin(), snapshot.groups.end(),
        [](const AIStorageGroup& a, const AIStorageGroup& b) { return a.bytes() > b.bytes(); });
    return snapshot;
}

bool AIStorageScanner::isApprovedCleanupLocation(const AIStorageLocation& location) {
    return location.cleanable && location.status == AIStorageStatus::measured &&
           location.fingerprint && location.bytes >= 1 && !location.isCustom &&
           (location.kind == AIStorageKind::cache || location.kind == AIStorageKind::logs) &&
           AIStorageCatalogue::isCleanablePath(location.path);
}

bool AIStorageScanner::stillMatches(const AIStorageLocation& location) {
    if (!location.fingerprint) return false;
    // Links are followed here on purpose: a folder moved away and linked back is still the
    // measured folder, and the executor's own link check then names what happened.
    const auto status = platform::statPath(platform::standardizePath(location.path), true);
    return status && status->isDirectory() && location.fingerprint->isSameItem(*status);
}

}  // namespace veldan
