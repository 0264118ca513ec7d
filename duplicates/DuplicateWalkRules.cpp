#include "duplicates/DuplicateWalkRules.hpp"

#include <algorithm>
#include <array>

#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/TrashFolder.hpp"
#include "platform/UserFolders.hpp"

namespace veldan {

namespace {

constexpr std::array<std::string_view, 10> skippedPackages = {
    "app",       "bundle",       "framework", "photoslibrary", "photolibrary",
    "aplibrary", "musiclibrary", "tvlibrary", "ituneslibrary", "sparsebundle",
};

// Name-based part of pathExtension(): lower-cased text after the last dot of a name that
// does not start with its only dot. Kept here so the hot path builds no string for
// names without an extension.
bool hasSkippedExtension(std::string_view name) {
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size()) return false;
    if (name.size() - dot - 1 > 13) return false;  // longer than any package extension
    return DuplicateWalkRules::isSkippedPackage(platform::pathExtension(name));
}

// The folder open as `fd` (at `path`) is the top of a mounted file system: it is "/", or
// its parent lies on another device ("..", at a mount's top, leads out of the mount).
bool isMountTop(std::string_view path, int fd) {
    if (path == "/") return true;
    int error = 0;
    const auto folder = platform::statDescriptor(fd, error);
    const auto parent = platform::statAt(fd, "..", false, error);
    return folder && parent && folder->device != parent->device;
}

}  // namespace

bool DuplicateWalkRules::isSkippedPackage(std::string_view lowercaseExtension) {
    return std::find(skippedPackages.begin(), skippedPackages.end(), lowercaseExtension) !=
           skippedPackages.end();
}

DuplicateWalkRules::DuplicateWalkRules(const std::string& root, uint64_t rootDevice)
    : rootScan_(root == "/"), devices_{rootDevice} {
    if (rootScan_) {
        // Followed: a home folder reached through a link lives on its target's device.
        if (auto home = platform::statPath(platform::homeFolder(), true)) {
            if (!allowsDevice(home->device)) devices_.push_back(home->device);
        }
    }
    // The home trash of the freedesktop.org Trash layout lives in the data folder rather
    // than in a folder named ".Trash".
    trashFolders_ = platform::homeTrashPaths();
}

bool DuplicateWalkRules::allowsDevice(uint64_t device) const {
    return std::find(devices_.begin(), devices_.end(), device) != devices_.end();
}

bool DuplicateWalkRules::skipsDirectory(std::string_view path, std::string_view name,
                                        int parentFd) const {
    if (rootScan_ && (path == "/System/Volumes" || path == "/Volumes")) return true;
    if (name == ".Trash") return true;
    // A volume's trash sits at the volume's top folder; that name anywhere else is the
    // user's own folder.
    if (platform::isVolumeTrashName(name)) {
        const auto slash = path.rfind('/');
        const std::string_view parent = slash == 0 ? "/" : path.substr(0, slash);
        if (isMountTop(parent, parentFd)) return true;
    }
    if (hasSkippedExtension(name)) return true;
    if (name == "Trash") {
        return std::find(trashFolders_.begin(), trashFolders_.end(), path) != trashFolders_.end();
    }
    return false;
}

}  // namespace veldan
