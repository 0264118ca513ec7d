#include "activity/ActivityArchive.hpp"

#include <algorithm>
#include <ctime>

#include "scan/SaturatingAdd.hpp"

namespace veldan {

namespace {

bool olderSnapshot(const ActivitySnapshot& a, const ActivitySnapshot& b) {
    return a.checkedAt < b.checkedAt;
}

}  // namespace

bool isSameLocalDay(std::chrono::system_clock::time_point a,
                    std::chrono::system_clock::time_point b) {
    const std::time_t at = std::chrono::system_clock::to_time_t(a);
    const std::time_t bt = std::chrono::system_clock::to_time_t(b);
    std::tm ad{};
    std::tm bd{};
    if (!::localtime_r(&at, &ad) || !::localtime_r(&bt, &bd)) return false;
    return ad.tm_year == bd.tm_year && ad.tm_yday == bd.tm_yday;
}

void ActivityArchive::recordScan(const std::optional<ActivitySnapshot>& snapshot,
                                 std::vector<TrackedDownload> newDownloads,
                                 Clock::time_point checkedAt) {
    downloads = std::move(newDownloads);
    if (downloads.size() > maximumDownloads) downloads.resize(maximumDownloads);
    lastDailyCheckAt = checkedAt;
    if (!snapshot) return;
    std::erase_if(snapshots, [&](const ActivitySnapshot& kept) {
        return isSameLocalDay(kept.checkedAt, snapshot->checkedAt);
    });
    // Kept in date order even when the clock was set back: the chart reads left to right
    // and "the newest 60" must mean the newest days, not the last ones written.
    snapshots.insert(std::upper_bound(snapshots.begin(), snapshots.end(), *snapshot, olderSnapshot),
                     *snapshot);
    if (snapshots.size() > maximumSnapshots) {
        snapshots.erase(snapshots.begin(),
                        snapshots.end() - static_cast<std::ptrdiff_t>(maximumSnapshots));
    }
}

bool ActivityArchive::recordCleanup(const CleanupActivity& activity) {
    if (activity.count < 1) return false;
    if (activity.kind == CleanupActivity::Kind::movedToTrash) {
        totalMovedToTrashBytes =
            saturatingAdd(totalMovedToTrashBytes, std::max<int64_t>(activity.bytes, 0));
        totalMovedToTrashItems = saturatingAdd(totalMovedToTrashItems, activity.count);
    } else {
        totalToolCleanups = saturatingAdd(totalToolCleanups, 1);
    }
    CleanupActivity added = activity;
    if (added.kind == CleanupActivity::Kind::toolCleanup) added.bytes = 0;
    activities.insert(activities.begin(), std::move(added));
    if (activities.size() > maximumActivities) activities.resize(maximumActivities);
    return true;
}

void ActivityArchive::removeDownload(const std::string& path) {
    std::erase_if(downloads,
                  [&](const TrackedDownload& download) { return download.path == path; });
}

std::optional<int64_t> ActivityArchive::latestChangeInFreeSpace() const {
    if (snapshots.size() < 2) return std::nullopt;
    const int64_t last = snapshots.back().freeBytes;
    const int64_t before = snapshots[snapshots.size() - 2].freeBytes;
    int64_t change = 0;
    if (__builtin_sub_overflow(last, before, &change)) {
        return last > before ? INT64_MAX : INT64_MIN;
    }
    return change;
}

void ActivityArchive::keepWithinLimits() {
    std::stable_sort(snapshots.begin(), snapshots.end(), olderSnapshot);
    // One per day: the latest of each day.
    std::vector<ActivitySnapshot> daily;
    for (const auto& snapshot : snapshots) {
        if (!daily.empty() && isSameLocalDay(daily.back().checkedAt, snapshot.checkedAt)) {
            daily.back() = snapshot;
        } else {
            daily.push_back(snapshot);
        }
    }
    snapshots = std::move(daily);
    if (snapshots.size() > maximumSnapshots) {
        snapshots.erase(snapshots.begin(),
                        snapshots.end() - static_cast<std::ptrdiff_t>(maximumSnapshots));
    }
    if (downloads.size() > maximumDownloads) downloads.resize(maximumDownloads);
    if (activities.size() > maximumActivities) activities.resize(maximumActivities);
    totalMovedToTrashBytes = std::max<int64_t>(totalMovedToTrashBytes, 0);
    totalMovedToTrashItems = std::max<int64_t>(totalMovedToTrashItems, 0);
    totalToolCleanups = std::max<int64_t>(totalToolCleanups, 0);
}

}  // namespace veldan
