#pragma once
// One scan run the way every front end runs it, so the command line and the desktop app
// agree on what a scan does besides walking the disk: it first asks the session cache for
// an unchanged snapshot of the same folder, and a finished scan becomes the folder's saved
// map (a stopped one marks the saved map outdated instead).
//
// Contract: run() is synchronous on the caller's thread (the scanner adds its workers);
// the saved map is written afterwards on the cache's queue, so a process must call
// finishSaving() before it exits.

#include <memory>
#include <optional>
#include <string>

#include "scan/ChangedPaths.hpp"
#include "scan/ScanCallbacks.hpp"
#include "scan/ScanCancellation.hpp"
#include "scan/ScanOutcome.hpp"

namespace veldan {

struct ScanJobOptions {
    ScanProgress progress;
    ScanPartial partial;
    ScanStopped stopped;
    bool useSavedMaps = true;  // false: neither save the map nor mark the saved one outdated
    // Whether the scan goes through the session cache, which watches the scanned tree so a
    // later scan in the same process can reuse the map. A command that scans once and
    // exits gains nothing from it and would pay for watching every folder.
    bool reuseWithinSession = true;
};

class ScanJob {
public:
    // Scans `path`; null when cancelled. Shared because the saved map is encoded from
    // the same snapshot on the cache's queue while the caller prints it: a large map is
    // never held twice.
    static std::shared_ptr<const ScanOutcome> run(const std::string& path,
                                                  const ScanCancellation& cancellation,
                                                  const ScanJobOptions& options = {});

    // Waits until every saved map queued so far is written.
    static void finishSaving();

    // Where a cleanup reports the paths it moved: CleanupAftermath::changedPathsSink(), which
    // new code uses directly.
    static ChangedPathsSink changedPathsSink();
};

}  // namespace veldan
