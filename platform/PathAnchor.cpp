#include "platform/PathAnchor.hpp"

#include <fcntl.h>
#include <limits.h>

#include <cerrno>

namespace veldan::platform {

std::optional<PathAnchor> PathAnchor::of(const std::string& absolutePath, int& error) {
    PathAnchor anchor;
    size_t start = 0;
    // A piece ends at a slash and stays shorter than PATH_MAX; a name is at most NAME_MAX
    // bytes, so every long path splits this way.
    while (absolutePath.size() - start >= PATH_MAX) {
        const size_t slash = absolutePath.rfind('/', start + PATH_MAX - 2);
        if (slash == std::string::npos || slash <= start) {
            error = ENAMETOOLONG;
            return std::nullopt;
        }
        const std::string piece = absolutePath.substr(start, slash - start + 1);
        const int from = anchor.folder_ ? anchor.folder_.get() : AT_FDCWD;
        UniqueFd next(::openat(from, piece.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!next) {
            error = errno;
            return std::nullopt;
        }
        anchor.folder_ = std::move(next);
        start = slash + 1;
    }
    anchor.rest_ = absolutePath.substr(start);
    error = 0;
    return anchor;
}

int PathAnchor::folder() const {
    return folder_ ? folder_.get() : AT_FDCWD;
}

}  // namespace veldan::platform
