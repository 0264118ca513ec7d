#include "devcleanup/DevFolderAccess.hpp"

#include <fcntl.h>
#include <limits.h>

#include <cerrno>

#include "platform/DirectoryWithoutLinks.hpp"
#include "platform/Paths.hpp"

namespace veldan {

platform::UniqueFd openFolderAtPath(const std::string& path, int& error) {
    if (path.size() < PATH_MAX) {
        platform::UniqueFd fd(
            ::openat(AT_FDCWD, path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        error = fd ? 0 : errno;
        if (fd || error != ENAMETOOLONG) return fd;
    }
    return platform::openDirectoryWithoutLinks(path, error);
}

std::optional<platform::FileStatus> statusAtPath(const std::string& path) {
    int error = 0;
    if (path.size() < PATH_MAX) {
        auto status = platform::statPath(path, false, error);
        if (status || error != ENAMETOOLONG) return status;
    }
    const auto parent = platform::openDirectoryWithoutLinks(platform::parentPath(path), error);
    if (!parent) return std::nullopt;
    const std::string name(platform::lastPathComponent(path));
    return platform::statAt(parent.get(), name.c_str(), false, error);
}

}  // namespace veldan
