#pragma once
// What one scan leaves besides its map, the same for every front end: the widget digest
// follows it (scanning, a heartbeat while it runs, stopped, changed during the scan, and
// the finished map with its safe and review totals), and a complete scan of "/" adds the
// day's free-space snapshot and the Downloads list to the activity history.
//
// Contract: the constructor marks the scan as running. heartbeat() is thread-safe (call it
// from progress callbacks; it writes at most once a minute). Exactly one of stopped(),
// changedDuringScan() and finished() ends the recording, on any one thread. Writes are
// queued; a process calls CleanupAftermath::finishWriting() before it exits.

#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "activity/TrackedDownload.hpp"
#include "scan/Recommendation.hpp"
#include "scan/ScanSnapshot.hpp"

namespace veldan {

class ScanRecording {
public:
    // `root` is the scanned folder: absolute, links resolved.
    explicit ScanRecording(std::string root);

    void heartbeat();
    // The user stopped the scan (or it was interrupted): the digest says stopped and its
    // map, when it covers this folder, outdated.
    void stopped();
    // The folder was replaced or changed while it was measured: the map is not used.
    void changedDuringScan();
    // The map is complete. For "/", `downloads` (collected now when not given) and the day's
    // figures go to the activity history.
    void finished(const ScanSnapshot& snapshot, const std::vector<Recommendation>& recommendations,
                  std::optional<std::vector<TrackedDownload>> downloads = std::nullopt);

private:
    std::string root_;
    std::atomic<int64_t> lastHeartbeat_;  // steady-clock ticks
};

}  // namespace veldan
