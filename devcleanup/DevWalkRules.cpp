#include "devcleanup/DevWalkRules.hpp"

#include <algorithm>
#include <array>

#include "duplicates/DuplicateWalkRules.hpp"
#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/TrashFolder.hpp"

namespace veldan {

namespace {

constexpr std::array<std::string_view, 8> skippedNames{".Trash", ".git", ".hg",     ".svn",
                                                       ".cache", ".npm", ".rustup", ".cargo"};

// What "/System", "/dev" and "/Volumes" are on a Mac: the kernel's virtual file systems,
// runtime state, and the places where other disks are mounted.
constexpr std::array<std::string_view, 6> startupDiskSkippedRoots{"/proc", "/sys",   "/dev",
                                                                  "/run",  "/media", "/mnt"};

}  // namespace

bool DevWalkRules::isSkippedName(std::string_view name) {
    return std::find(skippedNames.begin(), skippedNames.end(), name) != skippedNames.end();
}

bool DevWalkRules::isSkippedPackage(std::string_view name) {
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot + 1 == name.size()) return false;
    return DuplicateWalkRules::isSkippedPackage(platform::pathExtension(name));
}

bool DevWalkRules::isStartupDiskSkippedRoot(std::string_view path) {
    return std::find(startupDiskSkippedRoots.begin(), startupDiskSkippedRoots.end(), path) !=
           startupDiskSkippedRoots.end();
}

DevWalkRules::DevWalkRules(const std::string& scope, uint64_t scopeDevice, const std::string& home)
    : wholeDisk_(scope == "/"),
      devices_{scopeDevice},
      homeLibrary_(platform::joinPath(home, "Library")),
      trashFolders_(platform::homeTrashPaths()) {
    if (wholeDisk_) {
        // Followed: a home folder reached through a link lives on its target's device.
        if (auto status = platform::statPath(home, true)) {
            if (!allowsDevice(status->device)) devices_.push_back(status->device);
        }
    }
}

bool DevWalkRules::allowsDevice(uint64_t device) const {
    return std::find(devices_.begin(), devices_.end(), device) != devices_.end();
}

bool DevWalkRules::skipsFolder(std::string_view path, std::string_view name) const {
    if (isSkippedName(name) || isSkippedPackage(name)) return true;
    // What the user already threw away is never offered again: the home trash lives in
    // the data folder under a plain name, and a volume's trash is ".Trash-" and a user id.
    if (platform::isVolumeTrashName(name)) return true;
    if (name == "Trash" &&
        std::find(trashFolders_.begin(), trashFolders_.end(), path) != trashFolders_.end()) {
        return true;
    }
    if (wholeDisk_ && isStartupDiskSkippedRoot(path)) return true;
    return path == homeLibrary_;
}

}  // namespace veldan
