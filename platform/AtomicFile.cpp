#include "platform/AtomicFile.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/Paths.hpp"
#include "platform/UniqueFd.hpp"
#include "platform/Uuid.hpp"

namespace veldan::platform {

namespace {

std::string reason(int error) {
    return std::strerror(error);
}

// The errno value of the failed write, or 0.
int writeAll(int fd, std::string_view contents) {
    while (!contents.empty()) {
        const ssize_t written = ::write(fd, contents.data(), contents.size());
        if (written < 0) {
            if (errno == EINTR) continue;
            return errno;
        }
        contents.remove_prefix(static_cast<size_t>(written));
    }
    return 0;
}

}  // namespace

std::optional<std::string> writeFileAtomically(const std::string& path, std::string_view contents,
                                               Durability durability, LinkAtPath links) {
    return writeFileAtomically(
        path, [&](const ContentSink& write) { return write(contents); }, durability, links);
}

std::optional<std::string> writeFileAtomically(
    const std::string& path, const std::function<bool(const ContentSink&)>& produce,
    Durability durability, LinkAtPath links) {
    std::string target = absolutePath(path);
    struct stat status {};
    const bool isLink = ::lstat(target.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
    if (isLink && links == LinkAtPath::follow) {
        // Renaming over the link would replace the link itself, not the file it names.
        target = resolveSymlinks(target);
    }
    std::optional<mode_t> keptMode;
    if (isLink && links == LinkAtPath::replace) {
        // The rename replaces the link itself; the file it names is never touched.
    } else if (::lstat(target.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) return reason(EISDIR);
        if (!S_ISREG(status.st_mode)) return std::string("Not a regular file");
        keptMode = status.st_mode & 07777;
    }

    const std::string folder = parentPath(target);
    const std::string temporary = joinPath(folder, ".veldan-" + randomUuid() + ".tmp");
    UniqueFd fd(
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0666));
    if (!fd) return reason(errno);
    int error = 0;
    if (keptMode && ::fchmod(fd.get(), *keptMode) != 0) error = errno;
    if (error == 0) {
        const bool produced = produce([&](std::string_view piece) {
            error = writeAll(fd.get(), piece);
            return error == 0;
        });
        if (!produced && error == 0) error = ECANCELED;
    }
    if (error == 0 && durability == Durability::flushed && ::fsync(fd.get()) != 0) error = errno;
    if (::close(fd.release()) != 0 && error == 0) error = errno;
    if (error == 0 && ::rename(temporary.c_str(), target.c_str()) != 0) error = errno;
    if (error != 0) {
        ::unlink(temporary.c_str());
        return reason(error);
    }
    return std::nullopt;
}

}  // namespace veldan::platform
