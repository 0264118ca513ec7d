#pragma once
// How a command scans: Ctrl-C stops the scan through its cancellation, progress shows on
// standard error when it is a terminal, and the session watcher is left out (a command
// scans once and exits). The caller checks the folder first (DiskScanner::rootProblem).
//
// Contract: blocks until the scan ends; null when it was stopped.

#include <memory>
#include <string>

#include "app/ScanJob.hpp"

namespace veldan::cli {

// The folder a command maps, as the user named it: absolute and standardized, links kept.
// A folder named through a symbolic link is measured, saved and reported under that name;
// the saved map keeps the resolved path beside it.
std::string commandScope(const std::string& path);

// The folder a command that moves files works on: absolute, with symbolic links resolved,
// so that what it cleans is named by the path that the checks before a move see.
std::string commandRoot(const std::string& path);

// True, after printing why as one sentence, when `root` cannot be scanned (missing, not
// a folder, unreadable).
bool reportRootProblem(const std::string& root);

// `job.progress`, when set, is called besides the progress line.
std::shared_ptr<const ScanOutcome> scanForCommand(const std::string& root, ScanJobOptions job);

// Waits, when it goes out of scope, until the saved map the scan queued is written: it
// is encoded while the command prints, and must be whole before the process exits.
struct SavedMapFlush {
    SavedMapFlush() = default;
    SavedMapFlush(const SavedMapFlush&) = delete;
    SavedMapFlush& operator=(const SavedMapFlush&) = delete;
    ~SavedMapFlush() { ScanJob::finishSaving(); }
};

}  // namespace veldan::cli
