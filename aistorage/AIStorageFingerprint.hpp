#pragma once
// The identity of a measured location: device and inode, plus the birth time, because
// Linux file systems hand a freed inode number to the next folder created (a cache
// deleted and re-created by its tool often comes back with the same number). Modification
// times are left out on purpose: a tool writes into its cache all the time, and that
// does not make it another folder.

#include <cstdint>
#include <optional>
#include <string>

namespace veldan {

struct AIStorageFingerprint {
    uint64_t device = 0;
    uint64_t inode = 0;
    int64_t createdSeconds = 0;  // 0 when the file system keeps no birth time
    int64_t createdNanoseconds = 0;

    // Of the folder at `path` itself (a final link is not followed); nothing unless the
    // path names a folder.
    static std::optional<AIStorageFingerprint> read(const std::string& path);
    // Of an open folder.
    static std::optional<AIStorageFingerprint> ofDescriptor(int fd);
    friend bool operator==(const AIStorageFingerprint&, const AIStorageFingerprint&) = default;
};

}  // namespace veldan
