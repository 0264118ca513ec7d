#pragma once
// Reading and replacing whole files the careful way: bounded reads that never follow a
// link or wait on a device, and replacements that a crash cannot leave half written.
//
// Contract: thread-safe (no shared state besides the file system). Failures come back as
// empty optionals or errno values, never as exceptions.

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace veldan::platform {

// The contents of `path` when it is a regular file (not a link) of at most `maximumBytes`,
// both before and while reading; nothing otherwise.
std::optional<std::string> readRegularFile(const std::string& path, size_t maximumBytes);

// Replaces `path` with `contents`: a temporary file ("." + name + ".XXXXXX") is written in
// the same folder with `mode`, flushed to disk, renamed over `path`, and the folder is
// flushed. Readers see the old file or the new one, whole. On failure the temporary file
// is removed, `path` is untouched, and the errno value is returned; 0 on success.
int replaceFileAtomically(const std::string& path, std::string_view contents, mode_t mode);

// Creates `path` and any missing parents with `mode` (folders that exist keep theirs).
// Returns 0, or the errno value of the step that failed.
int createFolders(const std::string& path, mode_t mode);

// 0666 less the process's umask, the mode a new document of the user's gets.
mode_t documentFileMode();

}  // namespace veldan::platform
