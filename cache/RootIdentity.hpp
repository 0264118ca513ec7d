#pragma once
// The identity of a scanned folder when its map was saved: device, inode and birth time of
// the path as named and of the path with its links resolved. A saved map is only shown for
// the very folder it was made of; a folder replaced, moved or remounted under the same
// path has another identity. The birth time tells a folder deleted and recreated apart
// even when it got its inode number back, as it often does on Linux file systems. Keys
// "device", "inode", "resolvedPath", "resolvedDevice", "resolvedInode",
// "createdSeconds", "createdNanoseconds", "resolvedCreatedSeconds",
// "resolvedCreatedNanoseconds", in that order.

#include <cstdint>
#include <optional>
#include <string>

namespace veldan {

struct RootIdentity {
    int64_t device = 0;
    int64_t inode = 0;
    std::string resolvedPath;
    int64_t resolvedDevice = 0;
    int64_t resolvedInode = 0;
    int64_t createdSeconds = 0;  // birth times: zero where the file system keeps none
    int64_t createdNanoseconds = 0;
    int64_t resolvedCreatedSeconds = 0;
    int64_t resolvedCreatedNanoseconds = 0;

    // Status of `path` without following a final link, and of its resolved path; nothing
    // when either cannot be read.
    static std::optional<RootIdentity> read(const std::string& path);

    friend bool operator==(const RootIdentity&, const RootIdentity&) = default;
};

}  // namespace veldan
