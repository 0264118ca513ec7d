#include "platform/FileStatus.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <cstdint>

#include "platform/PathAnchor.hpp"

namespace veldan::platform {

namespace {

constexpr unsigned sizeMask =
    STATX_TYPE | STATX_MODE | STATX_NLINK | STATX_INO | STATX_SIZE | STATX_BLOCKS;
constexpr unsigned fullMask = sizeMask | STATX_MTIME | STATX_CTIME | STATX_BTIME;

Timestamp toTimestamp(const struct statx_timestamp& t) {
    return Timestamp{t.tv_sec, static_cast<int64_t>(t.tv_nsec)};
}

FileStatus toStatus(const struct statx& sx) {
    FileStatus s;
    s.device = makedev(sx.stx_dev_major, sx.stx_dev_minor);
    s.inode = sx.stx_ino;
    s.mode = sx.stx_mode;
    s.linkCount = sx.stx_nlink;
    s.size = static_cast<int64_t>(sx.stx_size);
    // A corrupt or hostile file system can report any count; saturating keeps a huge one
    // huge (it is then reported as unavailable) instead of wrapping to a negative size.
    s.blocks = sx.stx_blocks > static_cast<uint64_t>(INT64_MAX)
                   ? INT64_MAX
                   : static_cast<int64_t>(sx.stx_blocks);
    if (sx.stx_mask & STATX_MTIME) s.modified = toTimestamp(sx.stx_mtime);
    if (sx.stx_mask & STATX_CTIME) s.changed = toTimestamp(sx.stx_ctime);
    if (sx.stx_mask & STATX_BTIME) s.created = toTimestamp(sx.stx_btime);
    return s;
}

}  // namespace

bool FileStatus::isDirectory() const {
    return S_ISDIR(mode);
}
bool FileStatus::isSymbolicLink() const {
    return S_ISLNK(mode);
}
bool FileStatus::isRegularFile() const {
    return S_ISREG(mode);
}

std::optional<FileStatus> statAt(int directoryFd, const char* name, bool follow, int& error,
                                 StatDetail detail) {
    struct statx sx {};
    const int flags = (follow ? 0 : AT_SYMLINK_NOFOLLOW) | AT_STATX_SYNC_AS_STAT |
                      (name[0] == '\0' ? AT_EMPTY_PATH : 0);
    const unsigned mask = detail == StatDetail::full ? fullMask : sizeMask;
    if (::statx(directoryFd, name, flags, mask, &sx) != 0) {
        error = errno;
        return std::nullopt;
    }
    error = 0;
    return toStatus(sx);
}

std::optional<FileStatus> statPath(const std::string& path, bool follow, int& error) {
    if (path.empty()) {
        error = ENOENT;
        return std::nullopt;
    }
    // A path too long for one call is looked up in pieces, so items deeper than PATH_MAX
    // can be checked like any other.
    const auto anchor = PathAnchor::of(path, error);
    if (!anchor) return std::nullopt;
    return statAt(anchor->folder(), anchor->rest(), follow, error);
}

std::optional<FileStatus> statPath(const std::string& path, bool follow) {
    int error = 0;
    return statPath(path, follow, error);
}

std::optional<FileStatus> statDescriptor(int fd, int& error) {
    return statAt(fd, "", false, error);
}

}  // namespace veldan::platform
