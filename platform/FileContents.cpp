#include "platform/FileContents.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/Paths.hpp"
#include "platform/UniqueFd.hpp"

namespace veldan::platform {

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

}  // namespace veldan::platform
