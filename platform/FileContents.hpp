#pragma once
// Whole files read the careful way (bounded, never through a link), and folders made
// with the mode they need.
//
// Contract: thread-safe (no shared state besides the file system). Failures come back as
// empty optionals or errno values, never as exceptions.

#include <sys/types.h>

#include <cstddef>
#include <optional>
#include <string>

namespace veldan::platform {

// The contents of `path` when it is a regular file (not a link) of at most `maximumBytes`,
// both before and while reading; nothing otherwise.
std::optional<std::string> readRegularFile(const std::string& path, size_t maximumBytes);

// Creates `path` and any missing parents with `mode` (folders that exist keep theirs).
// Returns 0, or the errno value of the step that failed.
int createFolders(const std::string& path, mode_t mode);

}  // namespace veldan::platform
