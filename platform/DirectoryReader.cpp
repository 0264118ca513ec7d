#include "platform/DirectoryReader.hpp"

#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace veldan::platform {

namespace {

// Layout of struct linux_dirent64: d_ino (8), d_off (8), d_reclen (2), d_type (1), d_name.
constexpr size_t reclenOffset = 16;
constexpr size_t typeOffset = 18;
constexpr size_t nameOffset = 19;
constexpr size_t minimumBuffer = 64 * 1024;

}  // namespace

DirectoryReader::DirectoryReader(int fd, std::vector<char>& buffer) : fd_(fd), buffer_(buffer) {
    if (buffer_.size() < minimumBuffer) buffer_.resize(minimumBuffer);
}

bool DirectoryReader::fill() {
    while (!ended_) {
        const long got = ::syscall(SYS_getdents64, fd_, buffer_.data(), buffer_.size());
        if (got < 0) {
            if (errno == EINTR) continue;
            error_ = errno;
            ended_ = true;
            return false;
        }
        if (got == 0) {
            ended_ = true;
            return false;
        }
        filled_ = static_cast<size_t>(got);
        offset_ = 0;
        return true;
    }
    return false;
}

uint64_t DirectoryReader::peekSelfInode() {
    if (offset_ >= filled_ && !fill()) return 0;
    for (size_t at = offset_; at < filled_;) {
        const char* record = buffer_.data() + at;
        unsigned short reclen = 0;
        std::memcpy(&reclen, record + reclenOffset, sizeof reclen);
        const char* name = record + nameOffset;
        if (name[0] == '.' && name[1] == '\0') {
            uint64_t inode = 0;
            std::memcpy(&inode, record, sizeof inode);
            return inode;
        }
        at += reclen;
    }
    return 0;
}

bool DirectoryReader::next(DirectoryEntryView& entry) {
    for (;;) {
        if (offset_ >= filled_ && !fill()) return false;
        const char* record = buffer_.data() + offset_;
        unsigned short reclen = 0;
        std::memcpy(&reclen, record + reclenOffset, sizeof reclen);
        offset_ += reclen;
        const char* name = record + nameOffset;
        if (name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'))) continue;
        entry.name = name;
        entry.length = std::strlen(name);
        entry.type = static_cast<unsigned char>(record[typeOffset]);
        std::memcpy(&entry.inode, record, sizeof entry.inode);
        return true;
    }
}

}  // namespace veldan::platform
