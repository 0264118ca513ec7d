#pragma once
// What every front end does after a cleanup moved items to the Trash or ran a tool's own
// cleanup, in one place, so the command line, the desktop app and every tool (generated
// folders, AI storage, duplicates, downloads) leave the same traces:
//  - the session snapshot that measured a changed path is dropped
//    (ScanSessionCache::invalidateCurrent),
//  - every saved map that holds one is marked outdated (ScanCache::markStaleHolding),
//  - the widget digest is marked outdated when its map holds one,
//  - the action is added to the activity history (ActivityTracker::shared()).
//
// Contract: every function is thread-safe. changedPathsSink() is what executors take and
// call from their own thread with the paths that moved; the record functions are called
// once per action after the run. Writes are queued: a process calls finishWriting()
// before it exits.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "recommendations/CleanupReport.hpp"
#include "scan/ChangedPaths.hpp"

namespace veldan {

class CleanupAftermath {
public:
    // For an executor: forwards the changed paths to pathsChanged().
    static ChangedPathsSink changedPathsSink();
    // Session cache, saved maps and widget digest, for `paths` that moved or changed.
    static void pathsChanged(const std::vector<std::string>& paths);

    // `count` items taking `bytes` went to the Trash; a count below 1 records nothing.
    static void recordTrash(const std::string& title, int64_t bytes, int64_t count);
    // A tool's own cleanup ran; `count` is the number of cleanups (normally 1).
    static void recordToolCleanup(const std::string& title, int64_t count);
    // Each result of a cleanup run: folders moved to the Trash (their measured sizes
    // from `sizes`, nested ones counted once) or a tool cleanup that finished.
    static void recordCleanupReport(const CleanupReport& report,
                                    const std::map<std::string, int64_t>& sizes);

    // Waits until the activity history and the widget digest are written.
    static void finishWriting();
};

}  // namespace veldan
