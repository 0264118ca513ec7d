#pragma once
// The identity of a folder at scan time, re-read before any cleanup to prove the
// folder is still the one that was measured. Equal only when all six fields are.

#include <cstdint>
#include <optional>
#include <string>

namespace veldan {

struct ScanFolderIdentity {
    int64_t device = 0;
    int64_t inode = 0;
    int64_t modifiedSeconds = 0;
    int64_t modifiedNanoseconds = 0;
    int64_t changedSeconds = 0;
    int64_t changedNanoseconds = 0;

    // lstat of the path; empty unless it is a folder (a link, a file or nothing is not).
    static std::optional<ScanFolderIdentity> read(const std::string& path);
    friend bool operator==(const ScanFolderIdentity&, const ScanFolderIdentity&) = default;
};

}  // namespace veldan
