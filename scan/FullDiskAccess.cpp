#include "scan/FullDiskAccess.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"

namespace veldan {

namespace {

constexpr const char* probes[] = {"Application Support/com.apple.TCC/TCC.db", "Safari/History.db",
                                  "Messages/chat.db", "Mail"};

bool isPermissionError(int error) {
    return error == EACCES || error == EPERM;
}

// Opens the probe the way a reader would: folders for listing, files read-only.
int tryOpen(const std::string& path, bool directory) {
    if (directory) {
        DIR* dir = ::opendir(path.c_str());
        if (!dir) return errno;
        ::closedir(dir);
        return 0;
    }
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return errno;
    ::close(fd);
    return 0;
}

}  // namespace

FullDiskAccessState FullDiskAccess::check() {
    return check(platform::homeFolder());
}

FullDiskAccessState FullDiskAccess::check(const std::string& home) {
    const std::string library = platform::joinPath(home, "Library");
    bool refused = false;
    for (const char* probe : probes) {
        const std::string path = platform::joinPath(library, probe);
        int error = 0;
        auto status = platform::statPath(path, false, error);
        if (!status) {
            refused = refused || isPermissionError(error);
            continue;
        }
        const int openError = tryOpen(path, status->isDirectory());
        if (openError == 0) return FullDiskAccessState::granted;
        refused = refused || isPermissionError(openError);
    }
    return refused ? FullDiskAccessState::denied : FullDiskAccessState::unknown;
}

}  // namespace veldan
