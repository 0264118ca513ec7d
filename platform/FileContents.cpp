#include "platform/FileContents.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <vector>

#include "platform/Paths.hpp"
#include "platform/UniqueFd.hpp"

namespace veldan::platform {

namespace {

int writeAll(int fd, std::string_view contents) {
    size_t written = 0;
    while (written < contents.size()) {
        const ssize_t n = ::write(fd, contents.data() + written, contents.size() - written);
        if (n < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        written += static_cast<size_t>(n);
    }
    return 0;
}

}  // namespace

std::optional<std::string> readRegularFile(const std::string& path, size_t maximumBytes) {
    struct stat before {};
    if (::lstat(path.c_str(), &before) != 0 || !S_ISREG(before.st_mode)) return std::nullopt;
    if (before.st_size < 0 || static_cast<uint64_t>(before.st_size) > maximumBytes) {
        return std::nullopt;
    }
    // O_NONBLOCK: a FIFO swapped in after the check must not stall the reader.
    UniqueFd fd(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (!fd) return std::nullopt;
    struct stat opened {};
    if (::fstat(fd.get(), &opened) != 0 || !S_ISREG(opened.st_mode)) return std::nullopt;
    if (opened.st_size < 0 || static_cast<uint64_t>(opened.st_size) > maximumBytes) {
        return std::nullopt;
    }
    std::string contents;
    contents.resize(static_cast<size_t>(opened.st_size));
    size_t used = 0;
    for (;;) {
        // The file may have grown since fstat; read one byte past the limit to notice.
        if (used == contents.size()) {
            if (contents.size() > maximumBytes) return std::nullopt;
            contents.resize(
                std::min(maximumBytes + 1, std::max<size_t>(contents.size() * 2, 4096)));
        }
        const ssize_t n = ::read(fd.get(), contents.data() + used, contents.size() - used);
        if (n < 0) {
            if (errno == EINTR) continue;
            return std::nullopt;
        }
        if (n == 0) break;
        used += static_cast<size_t>(n);
    }
    if (used > maximumBytes) return std::nullopt;
    contents.resize(used);
    return contents;
}

int replaceFileAtomically(const std::string& path, std::string_view contents, mode_t mode) {
    const std::string folder = parentPath(path);
    const std::string name(lastPathComponent(path));
    if (folder.empty() || name.empty()) return EINVAL;
    std::string pattern = joinPath(folder, "." + name + ".XXXXXX");
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back('\0');
    UniqueFd fd(::mkostemp(buffer.data(), O_CLOEXEC));
    if (!fd) return errno;
    const std::string temporary = buffer.data();
    int error = 0;
    if (::fchmod(fd.get(), mode) != 0) error = errno;
    if (error == 0) error = writeAll(fd.get(), contents);
    // The data must be on disk before the rename makes it the file: after a crash the
    // name then points at the old contents or the whole new ones, never at a hole.
    if (error == 0 && ::fsync(fd.get()) != 0) error = errno;
    if (error == 0 && ::close(fd.release()) != 0) error = errno;
    if (error == 0 && ::rename(temporary.c_str(), path.c_str()) != 0) error = errno;
    if (error != 0) {
        ::unlink(temporary.c_str());
        return error;
    }
    UniqueFd folderFd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folderFd) ::fsync(folderFd.get());
    return 0;
}

int createFolders(const std::string& path, mode_t mode) {
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) return S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
    const std::string parent = parentPath(path);
    if (!parent.empty() && parent != path) {
        if (int error = createFolders(parent, mode)) return error;
    }
    if (::mkdir(path.c_str(), mode) != 0 && errno != EEXIST) return errno;
    if (::stat(path.c_str(), &status) != 0) return errno;
    return S_ISDIR(status.st_mode) ? 0 : ENOTDIR;
}

mode_t documentFileMode() {
    // umask() can only be read by setting it, which races with other threads; the
    // kernel reports it in the status file instead.
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("Umask:", 0) == 0) {
            char* end = nullptr;
            const unsigned long mask = std::strtoul(line.c_str() + 6, &end, 8);
            if (end != line.c_str() + 6) return static_cast<mode_t>(0666 & ~mask);
            break;
        }
    }
    return 0644;
}

}  // namespace veldan::platform
