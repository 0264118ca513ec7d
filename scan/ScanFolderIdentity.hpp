#pragma once
// The identity of a folder at scan time, re-read before any cleanup to prove the
// folder is still the one that was measured. Equal only when all eight fields are.
//
// The birth time is part of it because inode numbers are handed out again at once on
// most Linux file systems: a folder deleted and recreated under the same name often gets
// the same device and inode. It is zero where the file system records none.

#include <cstdint>
#include <optional>
#include <string>

#include "platform/FileStatus.hpp"
#include "platform/ItemIdentity.hpp"

namespace veldan {

struct ScanFolderIdentity {
    int64_t device = 0;
    int64_t inode = 0;
    int64_t modifiedSeconds = 0;
    int64_t modifiedNanoseconds = 0;
    int64_t changedSeconds = 0;
    int64_t changedNanoseconds = 0;
    int64_t createdSeconds = 0;
    int64_t createdNanoseconds = 0;

    // lstat of the path; empty unless it is a folder (a link, a file or nothing is not).
    static std::optional<ScanFolderIdentity> read(const std::string& path);
    // The same from a status already read; empty unless it describes a folder.
    static std::optional<ScanFolderIdentity> of(const platform::FileStatus& status);

    // For the checks shared by every executor (platform::Trash among them).
    platform::ItemIdentity item() const;
    // The same folder (device, inode, birth time) as `now`, which must be a folder.
    bool isSameFolder(const platform::FileStatus& now) const;

    friend bool operator==(const ScanFolderIdentity&, const ScanFolderIdentity&) = default;
};

}  // namespace veldan
