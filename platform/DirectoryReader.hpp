#pragma once
// Lists one open folder with getdents64 into a caller-owned buffer, so a walk of a
// million folders allocates nothing per folder. Names are raw bytes, NUL-terminated,
// valid until the next call to next(). "." and ".." are skipped.
//
// Contract: single-threaded; the descriptor stays owned by the caller and must stay
// open while the reader is used.

#include <cstddef>
#include <cstdint>
#include <vector>

namespace veldan::platform {

struct DirectoryEntryView {
    const char* name = nullptr;
    size_t length = 0;
    unsigned char type = 0;  // DT_* value; DT_UNKNOWN when the file system does not say
    uint64_t inode = 0;
};

class DirectoryReader {
public:
    DirectoryReader(int fd, std::vector<char>& buffer);

    // Fills `entry` and returns true, or returns false at the end of the listing or
    // on a failure; error() tells which (0 at a clean end).
    bool next(DirectoryEntryView& entry);
    int error() const { return error_; }
    // The inode number the listing gives for ".", looked up in the first batch without
    // consuming anything (0 when it is not there): it lets a caller check which folder it
    // opened without a status call. Call before the first next().
    uint64_t peekSelfInode();

private:
    int fd_;
    std::vector<char>& buffer_;
    size_t filled_ = 0;
    size_t offset_ = 0;
    bool fill();

    int error_ = 0;
    bool ended_ = false;
};

}  // namespace veldan::platform
