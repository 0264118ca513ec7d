#pragma once
// Status records of files and folders, read with statx so that birth times are
// available where the file system keeps them.
//
// Contract: every call is a single system call on the caller's thread; failures
// come back as an empty optional with the errno value in `error` (never thrown).

#include <cstdint>
#include <optional>
#include <string>

namespace veldan::platform {

struct Timestamp {
    int64_t seconds = 0;
    int64_t nanoseconds = 0;
    friend bool operator==(const Timestamp&, const Timestamp&) = default;
};

struct FileStatus {
    uint64_t device = 0;
    uint64_t inode = 0;
    uint32_t mode = 0;
    uint64_t linkCount = 0;
    int64_t size = 0;    // logical bytes (st_size)
    int64_t blocks = 0;  // 512-byte blocks allocated (st_blocks)
    Timestamp modified;
    Timestamp changed;
    Timestamp created;  // zero when the file system keeps no birth time

    bool isDirectory() const;
    bool isSymbolicLink() const;
    bool isRegularFile() const;
    friend bool operator==(const FileStatus&, const FileStatus&) = default;
};

// Which values a caller needs; the scanner asks for less than the duplicate finder.
enum class StatDetail { sizes, full };

// `name` is relative to `directoryFd` (AT_FDCWD for the working folder). Never follows
// a final symbolic link unless `follow` is set. statPath also takes paths of PATH_MAX
// bytes or more (looked up in pieces).
std::optional<FileStatus> statAt(int directoryFd, const char* name, bool follow, int& error,
                                 StatDetail detail = StatDetail::full);
std::optional<FileStatus> statPath(const std::string& path, bool follow, int& error);
std::optional<FileStatus> statPath(const std::string& path, bool follow = false);
std::optional<FileStatus> statDescriptor(int fd, int& error);

}  // namespace veldan::platform
