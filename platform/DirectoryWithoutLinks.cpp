#include "platform/DirectoryWithoutLinks.hpp"

#include <fcntl.h>

#include <cerrno>

#include "platform/Paths.hpp"

namespace veldan::platform {

namespace {

// Folders on the way are opened for path resolution only, so one that may be passed
// through but not listed is no obstacle; only the last one is opened for reading.
UniqueFd openStep(int parentFd, const char* name, bool last, int& error) {
    const int fd =
        ::openat(parentFd, name, (last ? O_RDONLY : O_PATH) | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    error = fd < 0 ? errno : 0;
    return UniqueFd(fd);
}

}  // namespace

UniqueFd openDirectoryWithoutLinks(const std::string& absolutePath, int& error) {
    if (absolutePath.empty() || absolutePath.front() != '/') {
        error = EINVAL;
        return {};
    }
    const auto components = pathComponents(absolutePath);
    UniqueFd current = openStep(AT_FDCWD, "/", components.empty(), error);
    for (size_t i = 0; current && i < components.size(); ++i) {
        if (components[i] == "." || components[i] == "..") {
            error = EINVAL;
            return {};
        }
        const std::string name(components[i]);
        current = openStep(current.get(), name.c_str(), i + 1 == components.size(), error);
    }
    return current;
}

}  // namespace veldan::platform
