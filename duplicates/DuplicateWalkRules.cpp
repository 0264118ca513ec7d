#include "duplicates/DuplicateWalkRules.hpp"

#include <algorithm>
#include <array>

#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
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

// The freedesktop.org per-volume trash folders, ".Trash-" followed by a user id, hold
// what the user already threw away, just as ".Trash" does.
bool isVolumeTrashName(std::string_view name) {
    constexpr std::string_view prefix = ".Trash-";
    if (name.size() <= prefix.size() || name.substr(0, prefix.size()) != prefix) return false;
    return std::all_of(name.begin() + prefix.size(), name.end(),
                       [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

bool DuplicateWalkRules::isSkippedPackage(std::string_view lowercaseExtension) {
    return std::find(skippedPackages.begin(), skippedPackages.end(), lowercaseExtension) !=
           skippedPackages.end();
}

DuplicateWalkRules::DuplicateWalkRules(const std::string& root, uint64_t rootDevice)
    : rootScan_(root == "/"), devices_{rootDevice} {
    if (rootScan_) {
        if (auto home = platform::statPath(platform::homeFolder(), false)) {
            if (!allowsDevice(home->device)) devices_.push_back(home->device);
        }
    }
    // The home trash lives in the data folder rather than in a folder named ".Trash"; both
    // its written and its resolved path are matched, since walked paths are built from
    // the root as given.
    const std::string homeTrash = platform::standardizePath(platform::dataHome() + "/Trash");
    trashFolders_.push_back(homeTrash);
    const std::string resolved = platform::resolveSymlinks(homeTrash);
    if (resolved != homeTrash) trashFolders_.push_back(resolved);
}

bool DuplicateWalkRules::allowsDevice(uint64_t device) const {
    return std::find(devices_.begin(), devices_.end(), device) != devices_.end();
}

bool DuplicateWalkRules::skipsDirectory(std::string_view path, std::string_view name) const {
    if (rootScan_ && (path == "/System/Volumes" || path == "/Volumes")) return true;
    if (name == ".Trash" || isVolumeTrashName(name)) return true;
    if (hasSkippedExtension(name)) return true;
    if (name == "Trash") {
        return std::find(trashFolders_.begin(), trashFolders_.end(), path) != trashFolders_.end();
    }
    return false;
}

}  // namespace veldan
