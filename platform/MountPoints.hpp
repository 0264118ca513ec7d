#pragma once
// What is mounted where: the "top directory" that per-volume Trash folders live in, and
// the check that nothing is mounted inside an item about to be moved or removed.
//
// Renaming a folder carries every file system mounted inside it along (a bind mount of
// the same device included); emptying the Trash, or `rm -rf`, would then delete files
// that were never measured. So every executor refuses such an item right before its move
// (Trash does it for all of them), and every generated script right before its `rm`.
//
// Contract: reads /proc/self/mountinfo (this process's mount namespace) on every call;
// thread-safe.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace veldan::platform {

// The one sentence for an item with a mount point at or below it.
inline constexpr std::string_view holdsMountReason =
    "This folder holds another mounted file system; unmount it first.";

// The mount points of the table, decoded, in table order; nothing when it cannot be read.
std::optional<std::vector<std::string>> mountPoints();

// The mount point of the file system that holds `resolvedPath`, an absolute path
// without symbolic links. When the mount table cannot be read, the highest ancestor on
// the same device is used instead.
std::string mountPointOf(const std::string& resolvedPath);

// Why `resolvedPath` (absolute, without symbolic links) must not be moved or removed
// because of mounts: `holdsMountReason` when a mount point lies at or below it, another
// sentence when the table cannot be read (nothing is proven then); nothing when no mount
// point lies there.
std::optional<std::string> mountRefusal(const std::string& resolvedPath);

// The mount point field of /proc/self/mountinfo decoded: the kernel writes space, tab,
// newline and backslash as three octal digits after a backslash.
std::string decodeMountInfoField(std::string_view field);
// `path` written the way that field writes it, for scripts that read the table.
std::string encodeMountInfoField(std::string_view path);

}  // namespace veldan::platform
