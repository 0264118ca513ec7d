#pragma once
// Read-modify-write of a small state file that several veldan processes may change at
// once (the activity record, the widget digest). Each update takes an exclusive lock
// (flock on "<file>.lock" beside it), reads the file as it is now, lets the caller compute
// the new contents from that, and replaces the file atomically before the lock is
// released: two writers never lose each other's changes, and a reader without the lock
// still sees either the old file or the new one, never half of one.
//
// Contract: synchronous on the caller's thread; blocks while another process holds the
// lock, for at most `lockWait` (then it goes ahead without it rather than never writing).
// Thread-safe across processes; within a process, callers serialise their updates (a
// serial queue). Failures are values, never exceptions.

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace veldan::platform {

// What the file held when the lock was taken.
struct LockedFileContents {
    enum class State {
        missing,     // no file (yet)
        read,        // `bytes` holds the whole file
        unreadable,  // it exists but is not a regular file we may read, or is too large
    };
    State state = State::missing;
    std::string bytes;
};

struct LockedFileUpdateOptions {
    size_t maximumBytes = 8 * 1024 * 1024;
    std::chrono::milliseconds lockWait{10'000};
};

// `change` returns the new contents, or nothing to leave the file as it is. Returns the
// reason the file could not be written, or nothing (also when `change` wrote nothing).
// The folder is created (mode 700) when missing and the file is private (mode 600); a
// symbolic link at `path` is replaced, never written through.
std::optional<std::string> updateFileLocked(
    const std::string& path,
    const std::function<std::optional<std::string>(const LockedFileContents& current)>& change,
    const LockedFileUpdateOptions& options = {});

// The file as it is now, read without the lock (the atomic replace makes that safe).
LockedFileContents readStateFile(const std::string& path, size_t maximumBytes);

}  // namespace veldan::platform
