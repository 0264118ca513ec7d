#pragma once
// The local activity history: one free-space snapshot of the startup disk per day, the
// recent downloads, and the cleanups the user made with their totals, kept in
// $XDG_STATE_HOME/Veldan/Activity.plist (see ActivityArchiveCodec for the file), plus the
// daily check's preference "veldanDailyTrackingEnabled".
//
// Every change applies to the history in memory at once and is then written on the
// tracker's serial queue ("com.veldan.activity-tracker"): under the archive's file lock
// the file is read as it is now, the changes not yet written are applied to it, and the
// result replaces the file atomically. So two veldan processes (the app and a timer's
// `veldan activity check`, or two commands) never lose each other's entries, and after a
// write the history in memory holds theirs too. Read and write failures are silent: the
// history in memory stays, and the next change writes what was not written.
//
// Contract: every member is thread-safe; the desktop app calls them from its main thread.
// Changes are written asynchronously: drain() waits for them (a process must drain, or
// destroy the tracker, before it exits). The observer is called after each change of the
// history or of a flag: on the thread that made it, or on the queue after a write brought
// in other processes' entries; it must not call back into the tracker synchronously on
// the queue (hop to your own thread first).

#include <chrono>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "activity/ActivityArchive.hpp"
#include "activity/DownloadInventory.hpp"
#include "platform/SerialQueue.hpp"
#include "scan/ChangedPaths.hpp"
#include "scan/ScanSnapshot.hpp"

namespace veldan {

class ActivityTracker {
public:
    using Clock = std::chrono::system_clock;
    static constexpr const char* dailyPreferenceKey = "veldanDailyTrackingEnabled";
    static constexpr std::chrono::seconds dailyInterval{86'400};
    // Shown with the history.
    static constexpr const char* recordedLocallyNote =
        "Recorded on this computer from today onward. Files moved to Trash still use space "
        "until Trash is emptied.";

    // $XDG_STATE_HOME/Veldan/Activity.plist
    static std::string defaultArchivePath();
    // The process's tracker, created (and its file read) at first use and destroyed at
    // exit, after waiting for its writes.
    static ActivityTracker& shared();

    // Reads the archive at `archivePath` once; a missing or unreadable file starts an
    // empty history.
    explicit ActivityTracker(std::string archivePath = defaultArchivePath());
    ~ActivityTracker();  // waits for queued writes
    ActivityTracker(const ActivityTracker&) = delete;
    ActivityTracker& operator=(const ActivityTracker&) = delete;

    const std::string& archivePath() const { return path_; }
    ActivityArchive history() const;
    // Reads the file again (other processes may have recorded meanwhile), keeping the
    // changes of this process that are not written yet.
    void reload();

    // After a complete scan (and the daily check): replaces the Downloads list, sets the
    // last check; only a scan of "/" adds the day's snapshot.
    void recordScan(const ScanSnapshot& snapshot, std::vector<TrackedDownload> downloads,
                    Clock::time_point checkedAt);
    // After any move to Trash: a count below 1 records nothing. The widget digest is told
    // the new total.
    void recordTrash(const std::string& title, int64_t bytes, int64_t count);
    // After a tool's own cleanup command ran.
    void recordToolCleanup(const std::string& title, int64_t count);

    // Moves one listed download to the Trash (DownloadInventory::moveToTrash). On success
    // the path goes to `changed` (the application layer's after-move helper: session
    // cache, saved maps, widget digest), the download leaves the list and the move is
    // recorded; on refusal moveError() holds the reason. Blocks for the move.
    DownloadMoveOutcome moveDownloadToTrash(const TrackedDownload& download,
                                            const ChangedPathsSink& changed);

    bool dailyEnabled() const;
    // Writes the preference; false when it could not be written.
    bool setDailyEnabled(bool enabled);
    // Off, or a check running: not due. Never checked: due. Otherwise due once 24 hours
    // have passed since the last check (elapsed time, not calendar days), or when the last
    // check lies more than 24 hours in the future (the clock was set back: how long ago
    // it really was is unknown, and waiting could mean waiting for months).
    bool isDailyCheckDue(Clock::time_point now = Clock::now()) const;

    bool isChecking() const;
    void setChecking(bool checking);
    bool isMovingDownload() const;
    std::optional<std::string> moveError() const;

    void setObserver(std::function<void()> observer);
    void drain();

private:
    struct Pending {
        uint64_t sequence = 0;
        std::function<void(ActivityArchive&)> change;
        bool tellsWidget = false;
    };

    void change(std::function<void(ActivityArchive&)> apply, bool tellsWidget = false);
    void write();  // on the queue
    void notify();

    const std::string path_;
    mutable std::mutex mutex_;
    ActivityArchive history_;       // the file as last read or written, plus pending_
    std::vector<Pending> pending_;  // changes not written yet, in order
    uint64_t nextSequence_ = 1;
    ActivityArchive lastKnown_;  // queue only: the last whole history read or written
    bool checking_ = false;
    bool movingDownload_ = false;
    std::optional<std::string> moveError_;
    std::function<void()> observer_;
    platform::SerialQueue queue_{"com.veldan.activity-tracker"};
};

}  // namespace veldan
