#include "app/DailyCheck.hpp"

#include "activity/DownloadInventory.hpp"
#include "app/ScanJob.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan {

DailyCheckResult DailyCheck::run(ActivityTracker& tracker, const ScanCancellation& cancellation,
                                 bool force, const ScanProgress& progress,
                                 std::chrono::system_clock::time_point now) {
    using Outcome = DailyCheckResult::Outcome;
    if (tracker.isChecking()) return {Outcome::running, {}, 0};
    if (!force && !tracker.dailyEnabled()) return {Outcome::off, {}, 0};
    if (!force && !tracker.isDailyCheckDue(now)) return {Outcome::notDue, {}, 0};
    if (DiskScanner::rootProblem("/")) return {Outcome::unreadable, {}, 0};

    tracker.setChecking(true);
    ScanJobOptions options;
    options.progress = progress;
    options.useSavedMaps = false;
    options.reuseWithinSession = false;
    const auto outcome = ScanJob::run("/", cancellation, options);
    if (!outcome) {
        tracker.setChecking(false);
        return {Outcome::stopped, {}, 0};
    }
    // Recorded as of the end of the scan: that is when the figures were true.
    const auto checkedAt = std::chrono::system_clock::now();
    auto downloads = DownloadInventory::collect(checkedAt);
    const auto listed = static_cast<int64_t>(downloads.size());
    const auto& snapshot = outcome->snapshot;
    tracker.recordScan(snapshot, std::move(downloads), checkedAt);
    tracker.setChecking(false);
    return {Outcome::checked,
            ActivitySnapshot{checkedAt, snapshot.volume.free, snapshot.root.bytes,
                             snapshot.unreadableItems},
            listed};
}

}  // namespace veldan
