#pragma once
// One file of a duplicate search and its identity snapshot: the ten values every later
// check (sampling, verification, the move to Trash) compares a fresh status against.

#include <cstdint>
#include <string>

#include "platform/FileStatus.hpp"

namespace veldan {

struct DuplicateFile {
    std::string path;   // absolute; raw bytes, not necessarily UTF-8
    int64_t bytes = 0;  // logical size (st_size)
    uint64_t device = 0;
    uint64_t inode = 0;
    int64_t modifiedSeconds = 0;
    int64_t modifiedNanoseconds = 0;
    int64_t changedSeconds = 0;
    int64_t changedNanoseconds = 0;
    int64_t createdSeconds = 0;  // birth time; 0 where the file system keeps none
    int64_t createdNanoseconds = 0;

    // The snapshot of `path` as `status` describes it.
    static DuplicateFile snapshot(std::string path, const platform::FileStatus& status);

    friend bool operator==(const DuplicateFile&, const DuplicateFile&) = default;
};

}  // namespace veldan
