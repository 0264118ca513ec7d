#pragma once
// The small record the status readers show without scanning: the scope of the last map,
// its volume's free and total space, what it mapped, what is safe to clean and what needs
// review, whether it is outdated or a scan is running, and the bytes moved to Trash so
// far. Kept in $XDG_STATE_HOME/Veldan/Widget/Gist.plist; its readers are `veldan status`
// (text, JSON, and the object status bars such as waybar read) and the desktop app's tray
// icon. Veldan only writes it through the operations below; readers only read it.
//
// Every operation loads the digest as it is on disk (or starts one), changes it, and
// writes it back, on the serial queue "com.veldan.widget-digest" under the file's lock
// (LockedFileUpdate), so load-modify-write never interleaves, within a process or between
// two, and a reader never sees half a file. A failed write changes nothing else; readers
// keep the last file written.
//
// Contract: the operations may be called from any thread and return at once (callers on
// the main thread never wait for the file system); drain() waits until every queued one
// is written (a process must drain before it exits). load() reads on the caller's thread.

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "activity/WidgetScanState.hpp"
#include "scan/Recommendation.hpp"
#include "scan/ScanSnapshot.hpp"

namespace veldan {

struct WidgetDigest {
    using Clock = std::chrono::system_clock;
    // A "scanning" state whose heartbeat is older than this belongs to a scan that ended
    // without saying so (the process was killed): readers show it as stopped.
    static constexpr std::chrono::minutes staleHeartbeat{10};

    std::string scopeName;  // "Startup disk", "Home folder", or the folder's name
    bool isStartupDisk = false;
    bool isHomeFolder = false;
    int64_t freeBytes = 0;    // of the scope's volume
    int64_t totalBytes = 0;   // of the scope's volume
    int64_t mappedBytes = 0;  // what the map accounts for
    int64_t safeBytes = 0;    // "Safe to remove" total, nested folders counted once
    int64_t safeCount = 0;
    int64_t reviewCount = 0;
    std::optional<Clock::time_point> scannedAt;
    int64_t unreadableItems = 0;
    bool needsRefresh = false;  // files changed after the map was made
    bool isSavedMap = false;    // the map came from the scan cache
    std::optional<WidgetScanState> scanState;
    std::optional<Clock::time_point> scanStateChangedAt;  // the heartbeat
    bool hasCompletedScan = false;
    std::optional<std::string> activeScanScopeName;
    int64_t movedToTrashBytes = 0;
    // The folder the map covers, so that a cleanup elsewhere does not mark it outdated
    // ("" in a digest that does not say).
    std::string scopePath;

    // $XDG_STATE_HOME/Veldan/Widget/Gist.plist
    static std::string filePath();

    // Sets the scan state and its heartbeat; `scanning` also names the active scope.
    // Without a digest on disk, an initial one for `scope` is made first (its name and its
    // volume's figures), so readers show something before the first scan finishes.
    static void markScanState(WidgetScanState state, const std::optional<std::string>& scope);
    // Renews the heartbeat while the state is `scanning`.
    static void refreshActiveScanHeartbeat();
    // `scanning` becomes `stopped` (at exit: a reader must never show a scan that is over).
    static void markInterruptedScanStopped();
    static void markNeedsRefresh();
    // The same, only when one of `affectedPaths` is, holds or lies inside the digest's
    // scope: what a cleanup calls with the paths it moved.
    static void markNeedsRefresh(const std::vector<std::string>& affectedPaths);
    static void updateMovedToTrashBytes(int64_t total);
    // Writes a complete digest made from a finished or restored map (forMap).
    static void save(const WidgetDigest& digest);
    static void drain();

    // The digest on disk now; nothing when there is none or it cannot be read at all.
    static std::optional<WidgetDigest> load();

    // The initial digest of `scope`: its naming and volume figures, nothing mapped yet.
    static WidgetDigest initial(const std::string& scope);
    // The complete digest of a map of `scope`.
    static WidgetDigest forMap(const std::string& scope, const ScanSnapshot& snapshot,
                               const std::vector<Recommendation>& recommendations, bool isSavedMap,
                               bool needsRefresh, int64_t movedToTrashBytes);

    // The scan state a reader shows at `now`: a stale `scanning` is `stopped`.
    std::optional<WidgetScanState> shownScanState(Clock::time_point now) const;

    friend bool operator==(const WidgetDigest&, const WidgetDigest&) = default;
};

}  // namespace veldan
