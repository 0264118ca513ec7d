#pragma once
// Which mounted file system holds a path: the "top directory" that per-volume Trash
// folders live in.
//
// Contract: reads /proc/self/mountinfo (this process's mount namespace) on every call;
// thread-safe.

#include <string>
#include <string_view>

namespace veldan::platform {

// The mount point of the file system that holds `resolvedPath`, an absolute path
// without symbolic links. When the mount table cannot be read, the highest ancestor on
// the same device is used instead.
std::string mountPointOf(const std::string& resolvedPath);

// The mount point field of /proc/self/mountinfo decoded: the kernel writes space, tab,
// newline and backslash as three octal digits after a backslash.
std::string decodeMountInfoField(std::string_view field);

}  // namespace veldan::platform
