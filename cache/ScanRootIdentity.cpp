#include "cache/ScanRootIdentity.hpp"

#include "cache/ScanSessionCache.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"

namespace veldan {

namespace {

std::optional<platform::ItemIdentity> identityOf(const std::string& path) {
    auto status = platform::statPath(path, false);
    if (!status) return std::nullopt;
    return platform::ItemIdentity::of(*status);
}

bool sameItem(const std::optional<platform::ItemIdentity>& a,
              const std::optional<platform::ItemIdentity>& b) {
    if (!a || !b) return !a && !b;
    return a->isSameItem(*b);
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
    if (!sameItem(identityOf(path), identity)) return false;
    if (!sameItem(identityOf(watchedPath), watchedIdentity)) return false;
    if (additionalWatchedPath &&
        !sameItem(identityOf(*additionalWatchedPath), additionalWatchedIdentity)) {
        return false;
    }
    return platform::resolveSymlinks(path) == watchedPath;
}

bool operator==(const ScanRootIdentity& a, const ScanRootIdentity& b) {
    return a.path == b.path && a.watchedPath == b.watchedPath &&
           a.additionalWatchedPath == b.additionalWatchedPath &&
           a.identity.isSameItem(b.identity) && a.watchedIdentity.isSameItem(b.watchedIdentity) &&
           sameItem(a.additionalWatchedIdentity, b.additionalWatchedIdentity);
}

}  // namespace veldan
