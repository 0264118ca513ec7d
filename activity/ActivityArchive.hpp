#pragma once
// The activity history as it is stored in Activity.plist, with the rules that keep it
// small: one free-space snapshot per local calendar day (the latest of the day wins), at
// most 60 of them, 80 downloads and 100 cleanup activities; totals that saturate instead
// of overflowing.
//
// Every change is a member function, so that a writer can apply the changes it made to
// the history as another process left it on disk (ActivityTracker does that under a file
// lock) and no process loses the other's entries.
//
// Contract: a plain value; the member functions are pure apart from the local time zone
// used for "the same day".

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "activity/ActivitySnapshot.hpp"
#include "activity/CleanupActivity.hpp"
#include "activity/TrackedDownload.hpp"

namespace veldan {

struct ActivityArchive {
    using Clock = std::chrono::system_clock;

    static constexpr size_t maximumSnapshots = 60;
    static constexpr size_t maximumDownloads = 80;
    static constexpr size_t maximumActivities = 100;

    std::vector<ActivitySnapshot> snapshots;  // oldest first
    std::vector<TrackedDownload> downloads;
    std::vector<CleanupActivity> activities;  // newest first
    std::optional<Clock::time_point> lastDailyCheckAt;
    int64_t totalMovedToTrashBytes = 0;
    int64_t totalMovedToTrashItems = 0;
    int64_t totalToolCleanups = 0;

    // The figures of a check: `downloads` replaces the list, `checkedAt` becomes the last
    // check, and `snapshot` (given only for a scan of "/") replaces any snapshot of the same
    // local day.
    void recordScan(const std::optional<ActivitySnapshot>& snapshot,
                    std::vector<TrackedDownload> newDownloads, Clock::time_point checkedAt);
    // Adds `activity` at the front and to the totals (a tool cleanup counts once, its bytes
    // are not counted). An activity with a count below 1 changes nothing: returns false.
    bool recordCleanup(const CleanupActivity& activity);
    // Drops the download listed under `path`, if any.
    void removeDownload(const std::string& path);

    // `freeBytes` of the last snapshot less that of the one before: "… free since the
    // previous check". Nothing with fewer than two snapshots.
    std::optional<int64_t> latestChangeInFreeSpace() const;

    // Applies the limits and orders to lists that came from elsewhere (a file).
    void keepWithinLimits();

    friend bool operator==(const ActivityArchive&, const ActivityArchive&) = default;
};

// Whether two moments fall on the same calendar day of the local time zone.
bool isSameLocalDay(std::chrono::system_clock::time_point a,
                    std::chrono::system_clock::time_point b);

}  // namespace veldan
