#include "app/ScanStartCheck.hpp"

#include <sys/stat.h>

#include <cerrno>

#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan {

namespace {

std::string resolved(const std::string& path) {
    return platform::standardizePath(platform::resolveSymlinks(path));
}

}  // namespace

ScanStartCheck::Answer ScanStartCheck::check(const std::string& path,
                                             const std::function<void()>& beforeIdentity) {
    const auto named = platform::statPath(path, true);
    if (!named || !named->isDirectory()) return {std::nullopt, unavailablePrefix + path};
    if (beforeIdentity) beforeIdentity();

    const std::string root = resolved(path);
    auto identity = ScanFolderIdentity::read(root);
    const auto status = platform::statPath(root, false);
    // The path may have been swapped for another folder since it was looked at: device and
    // inode alone are not enough on Linux, where a freed inode number is handed out again
    // at once, so every time must agree too.
    if (!identity || !status || status->device != named->device || status->inode != named->inode ||
        !(status->modified == named->modified) || !(status->changed == named->changed) ||
        !(status->created == named->created)) {
        return {std::nullopt, changedBeforeStart};
    }
    if (auto problem = DiskScanner::rootProblem(root)) return {std::nullopt, *problem};
    return {ScanRoot{root, *identity}, {}};
}

bool ScanStartCheck::isUnchanged(const std::string& path, const ScanRoot& root) {
    if (resolved(path) != root.path) return false;
    const auto identity = ScanFolderIdentity::read(root.path);
    return identity && *identity == root.identity;
}

void ScanStartCheck::prepareOwnFolders() {
    for (const std::string& folder :
         {platform::joinPath(platform::cacheHome(), "Veldan"),
          platform::joinPath(platform::stateHome(), "Veldan/Widget"),
          platform::joinPath(platform::configHome(), "Veldan"), platform::dataHome()}) {
        // Outermost first: mkdir makes one level at a time.
        std::string path;
        for (const auto component : platform::pathComponents(folder)) {
            path = platform::joinPath(path.empty() ? "/" : path, component);
            ::mkdir(path.c_str(), 0700);
        }
    }
}

bool ScanStartCheck::isFolder(const std::string& path) {
    const auto status = platform::statPath(path, true);
    return status && status->isDirectory();
}

}  // namespace veldan
