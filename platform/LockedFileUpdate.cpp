#include "platform/LockedFileUpdate.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <thread>

#include "platform/AtomicFile.hpp"
#include "platform/ErrorText.hpp"
#include "platform/FileContents.hpp"
#include "platform/Paths.hpp"
#include "platform/UniqueFd.hpp"

namespace veldan::platform {

namespace {

// A separate lock file, because the data file itself is replaced by each write: a lock
// on the old inode would not exclude a writer that opened the new one.
UniqueFd lockFile(const std::string& path, std::chrono::milliseconds wait) {
    UniqueFd fd(::open((path + ".lock").c_str(),
                       O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY, 0600));
    if (!fd) return fd;
    // Polled rather than blocking so that a stuck holder (a process stopped in a
    // debugger, a hung network home) delays a write instead of losing it for good.
    const auto giveUp = std::chrono::steady_clock::now() + wait;
    while (::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) {
        if ((errno != EWOULDBLOCK && errno != EINTR) ||
            std::chrono::steady_clock::now() >= giveUp) {
            return UniqueFd();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return fd;
}

}  // namespace

LockedFileContents readStateFile(const std::string& path, size_t maximumBytes) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        return {errno == ENOENT ? LockedFileContents::State::missing
                                : LockedFileContents::State::unreadable,
                {}};
    }
    auto bytes = readRegularFile(path, maximumBytes);
    if (!bytes) return {LockedFileContents::State::unreadable, {}};
    return {LockedFileContents::State::read, std::move(*bytes)};
}

std::optional<std::string> updateFileLocked(
    const std::string& path,
    const std::function<std::optional<std::string>(const LockedFileContents& current)>& change,
    const LockedFileUpdateOptions& options) {
    if (int error = createFolders(parentPath(path), 0700)) return errorText(error);
    // Without a lock (full disk, read-only folder) the write is still tried: losing a
    // concurrent change is rare, losing every change is certain.
    const UniqueFd lock = lockFile(path, options.lockWait);
    auto contents = change(readStateFile(path, options.maximumBytes));
    if (!contents) return std::nullopt;
    auto failure = writeFileAtomically(path, *contents, Durability::flushed, LinkAtPath::replace);
    // What Veldan records about the user's files is the user's business alone.
    if (!failure) ::chmod(path.c_str(), 0600);
    return failure;
}

}  // namespace veldan::platform
