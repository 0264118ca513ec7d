#pragma once
// The daily check of the activity history: a scan of the startup disk and a listing of
// the Downloads folder, recorded as the day's snapshot. It runs when due (the daily check
// is on and a day has passed since the last one, see ActivityTracker::isDailyCheckDue)
// or when forced. Because "due" is elapsed time since the last check, a day missed while
// nothing ran is caught up by the next run: the systemd timer's, or the app's at launch.
//
// The scan is not saved as the startup disk's map and does not touch the widget digest:
// the check records history, it does not replace the map the user looks at.
//
// Contract: synchronous on the caller's thread (the desktop app runs it on a
// utility-priority worker); the tracker is thread-safe. The cancellation stops the scan,
// and then nothing is recorded.

#include <chrono>
#include <cstdint>
#include <optional>

#include "activity/ActivityTracker.hpp"
#include "scan/ScanCallbacks.hpp"
#include "scan/ScanCancellation.hpp"

namespace veldan {

struct DailyCheckResult {
    enum class Outcome {
        checked,
        off,         // not forced, and the daily check is off
        notDue,      // not forced, and the last check is less than a day old
        running,     // another check of this tracker is under way
        stopped,     // cancelled during the scan
        unreadable,  // "/" could not be scanned
    };
    Outcome outcome = Outcome::checked;
    std::optional<ActivitySnapshot> snapshot;  // when checked
    int64_t downloads = 0;                     // listed, when checked
};

class DailyCheck {
public:
    static DailyCheckResult run(
        ActivityTracker& tracker, const ScanCancellation& cancellation, bool force,
        const ScanProgress& progress = {},
        std::chrono::system_clock::time_point now = std::chrono::system_clock::now());
};

}  // namespace veldan
