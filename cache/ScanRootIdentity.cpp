#include "cache/ScanRootIdentity.hpp"

#include "cache/ScanSessionCache.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"

namespace veldan {

namespace {

std::optional<FolderIdentity> identityOf(const std::string& path) {
    auto status = platform::statPath(path, false);
    if (!status) return std::nullopt;
    return FolderIdentity{status->device, status->inode};
}

}  // namespace

std::optional<ScanRootIdentity> ScanRootIdentity::read(const std::string& path) {
    ScanRootIdentity root;
    root.path = platform::absolutePath(path);
    auto named = identityOf(root.path);
    if (!named) return std::nullopt;
    root.identity = *named;
    root.watchedPath = platform::resolveSymlinks(root.path);
    auto watched = identityOf(root.watchedPath);
    if (!watched) return std::nullopt;
    root.watchedIdentity = *watched;
    root.additionalWatchedPath =
        ScanSessionCache::additionalVolumePath(root.path, root.watchedPath);
    if (root.additionalWatchedPath) {
        root.additionalWatchedIdentity = identityOf(*root.additionalWatchedPath);
        if (!root.additionalWatchedIdentity) root.additionalWatchedPath.reset();
    }
    return root;
}

bool ScanRootIdentity::isUnchanged() const {
    if (identityOf(path) != identity) return false;
    if (identityOf(watchedPath) != watchedIdentity) return false;
    if (additionalWatchedPath && identityOf(*additionalWatchedPath) != additionalWatchedIdentity) {
        return false;
    }
    return platform::resolveSymlinks(path) == watchedPath;
}

}  // namespace veldan
