#pragma once
// The "directorysizes" cache of a Trash folder: one line per trashed folder with its
// disk usage, the modification time of its info file and its percent-encoded name, so
// that file managers can show the Trash's size without walking it.
//
// Contract: single calls on the caller's thread; failures only leave the cache without
// the entry (it is a cache: readers fall back to measuring).

#include <cstdint>
#include <string>

namespace veldan::platform {

// Disk usage in bytes of the entry `name` of the open folder `parentFd`, counted the way
// `du -B1` does (allocated blocks, hard-linked files once), without following links.
// Folders deeper than a few hundred levels are counted down to that depth only.
int64_t diskUsageAt(int parentFd, const char* name);

// Adds or replaces the line for `trashedName` in `directorysizes` of the Trash folder
// `trashFd`, writing a temporary file and renaming it over the old one.
bool recordDirectorySize(int trashFd, const std::string& trashedName, int64_t bytes,
                         int64_t infoModifiedSeconds);

}  // namespace veldan::platform
