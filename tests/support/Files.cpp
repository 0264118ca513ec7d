#include "tests/support/Files.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "tests/support/TempDir.hpp"

namespace veldan::test {

namespace {

[[noreturn]] void fail(const std::string& what, const std::string& path) {
    throw std::runtime_error(what + " " + path + ": " + std::strerror(errno));
}

void writeAll(int fd, const char* data, size_t size, const std::string& path) {
    while (size > 0) {
        const ssize_t written = ::write(fd, data, size);
        if (written < 0) fail("write", path);
        data += written;
        size -= static_cast<size_t>(written);
    }
}

}  // namespace

void makeFolders(const std::string& path) {
    for (size_t slash = 1; slash != std::string::npos;) {
        slash = path.find('/', slash + 1);
        const std::string prefix = path.substr(0, slash);
        if (::mkdir(prefix.c_str(), 0755) != 0 && errno != EEXIST) fail("mkdir", prefix);
    }
}

void writeFile(const std::string& path, const std::string& contents) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) fail("open", path);
    writeAll(fd, contents.data(), contents.size(), path);
    ::close(fd);
}

void writeFileOfSize(const std::string& path, int64_t bytes, unsigned seed) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) fail("open", path);
    std::vector<char> block(1 << 16);
    uint32_t state = seed * 2654435761u + 1;
    for (auto& byte : block) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<char>(state >> 24);
    }
    while (bytes > 0) {
        const size_t chunk =
            static_cast<size_t>(std::min<int64_t>(bytes, static_cast<int64_t>(block.size())));
        writeAll(fd, block.data(), chunk, path);
        bytes -= static_cast<int64_t>(chunk);
    }
    ::close(fd);
}

void writeSparseFile(const std::string& path, int64_t bytes) {
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (fd < 0) fail("open", path);
    if (::ftruncate(fd, bytes) != 0) fail("ftruncate", path);
    ::close(fd);
}

std::string readFile(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) fail("open", path);
    std::string out;
    char buffer[65536];
    for (;;) {
        const ssize_t got = ::read(fd, buffer, sizeof buffer);
        if (got < 0) fail("read", path);
        if (got == 0) break;
        out.append(buffer, static_cast<size_t>(got));
    }
    ::close(fd);
    return out;
}

void makeSymlink(const std::string& target, const std::string& link) {
    if (::symlink(target.c_str(), link.c_str()) != 0) fail("symlink", link);
}

void makeHardLink(const std::string& existing, const std::string& link) {
    if (::link(existing.c_str(), link.c_str()) != 0) fail("link", link);
}

bool exists(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

int64_t allocatedBytes(const std::string& path) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) fail("lstat", path);
    return static_cast<int64_t>(status.st_blocks) * 512;
}

}  // namespace veldan::test

namespace veldan::test {

bool recreateWithSameInode(const std::string& path) {
    struct stat before {};
    if (::lstat(path.c_str(), &before) != 0) fail("lstat", path);
    removeTree(path);
    // The file system hands out its lowest free number in the folder's group, which is
    // normally the one just freed; a number freed meanwhile by someone else is taken by a
    // placeholder kept aside, so the next try comes closer.
    std::vector<std::string> aside;
    bool same = false;
    for (int attempt = 0; attempt < 64 && !same; ++attempt) {
        if (::mkdir(path.c_str(), 0755) != 0) fail("mkdir", path);
        struct stat now {};
        if (::lstat(path.c_str(), &now) != 0) fail("lstat", path);
        same = now.st_ino == before.st_ino && now.st_dev == before.st_dev;
        if (!same) {
            aside.push_back(path + ".aside" + std::to_string(attempt));
            if (::rename(path.c_str(), aside.back().c_str()) != 0) fail("rename", path);
        }
    }
    for (const auto& placeholder : aside)
        removeTree(placeholder);
    // Someone else took the number: the folder is still replaced, with a new one.
    if (!same && ::mkdir(path.c_str(), 0755) != 0) fail("mkdir", path);
    return same;
}

}  // namespace veldan::test
