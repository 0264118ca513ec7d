#pragma once
// A generated folder found while searching, not yet measured: its path, kind, and the
// identity and times of the folder itself (not following a link), which every later
// step compares a fresh status against.

#include <cstdint>
#include <string>

#include "devcleanup/DevCleanupKind.hpp"
#include "platform/FileStatus.hpp"
#include "platform/ItemIdentity.hpp"

namespace veldan {

struct DevCandidate {
    std::string path;  // absolute; raw bytes, not necessarily UTF-8
    DevCleanupKind kind = DevCleanupKind::node;
    int64_t device = 0;
    int64_t inode = 0;
    int64_t modifiedSeconds = 0;
    int64_t modifiedNanoseconds = 0;
    int64_t changedSeconds = 0;
    int64_t changedNanoseconds = 0;
    // Birth time, 0 where the file system keeps none. Inode numbers are handed out again
    // at once on Linux, so device and inode alone do not prove "the same folder".
    int64_t createdSeconds = 0;
    int64_t createdNanoseconds = 0;

    static DevCandidate from(std::string path, DevCleanupKind kind,
                             const platform::FileStatus& status);
    platform::ItemIdentity identity() const;
    // `status` is a folder with this candidate's identity, unchanged since (all three
    // times equal to the nanosecond).
    bool isSameFolder(const platform::FileStatus& status) const;

    friend bool operator==(const DevCandidate&, const DevCandidate&) = default;
};

}  // namespace veldan
