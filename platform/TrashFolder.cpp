#include "platform/TrashFolder.hpp"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "platform/ErrorText.hpp"
#include "platform/FileStatus.hpp"
#include "platform/MountPoints.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"

namespace veldan::platform {

namespace {

constexpr mode_t privateFolder = 0700;

// Opens (creating when missing) the folder `name` of `parentFd`: a real folder, never a
// symbolic link, and, when `owner` is given, owned by that user.
UniqueFd openOwnedFolder(int parentFd, const char* name, std::optional<uid_t> owner,
                         std::string& problem) {
    if (::mkdirat(parentFd, name, privateFolder) != 0 && errno != EEXIST) {
        problem = errorText(errno);
        return {};
    }
    int error = 0;
    UniqueFd folder = openDirectoryAt(parentFd, name, error);
    if (!folder) {
        problem = errorText(error);
        return {};
    }
    if (owner) {
        struct stat status {};
        if (::fstat(folder.get(), &status) != 0 || status.st_uid != *owner) {
            problem = "the folder belongs to another user";
            return {};
        }
    }
    return folder;
}

std::optional<TrashFolder> openParts(std::string path, std::string topdir, UniqueFd folder,
                                     std::string& problem) {
    TrashFolder trash;
    trash.path = std::move(path);
    trash.topdir = std::move(topdir);
    trash.files = openOwnedFolder(folder.get(), "files", std::nullopt, problem);
    if (!trash.files) return std::nullopt;
    trash.info = openOwnedFolder(folder.get(), "info", std::nullopt, problem);
    if (!trash.info) return std::nullopt;
    trash.folder = std::move(folder);
    return trash;
}

bool makeFolders(const std::string& path, std::string& problem) {
    std::string prefix;
    for (auto part : pathComponents(path)) {
        prefix += '/';
        prefix += part;
        if (::mkdir(prefix.c_str(), privateFolder) != 0 && errno != EEXIST) {
            problem = errorText(errno);
            return false;
        }
    }
    return true;
}

}  // namespace

std::string homeTrashMountPoint() {
    std::string path = standardizePath(joinPath(dataHome(), "Trash"));
    while (path != "/" && !statPath(path, true))
        path = parentPath(path);
    return mountPointOf(resolveSymlinks(path));
}

std::optional<TrashFolder> openHomeTrash(std::string& problem) {
    const std::string path = joinPath(dataHome(), "Trash");
    if (!makeFolders(path, problem)) return std::nullopt;
    int error = 0;
    UniqueFd folder = openDirectory(path, error);
    if (!folder) {
        problem = errorText(error);
        return std::nullopt;
    }
    return openParts(path, {}, std::move(folder), problem);
}

std::optional<TrashFolder> openVolumeTrash(const std::string& topdir, uid_t uid,
                                           std::string& problem) {
    int error = 0;
    UniqueFd top = openDirectory(topdir, error);
    if (!top) {
        problem = errorText(error);
        return std::nullopt;
    }
    const std::string user = std::to_string(uid);

    // The shared folder counts only when an administrator made it sticky, so that users
    // cannot remove each other's folders, and only when it is not a link to elsewhere.
    auto shared = statAt(top.get(), ".Trash", false, error);
    if (shared && shared->isDirectory() && (shared->mode & S_ISVTX) != 0) {
        UniqueFd sharedFolder = openDirectoryAt(top.get(), ".Trash", error);
        std::string ignored;
        if (sharedFolder) {
            UniqueFd mine = openOwnedFolder(sharedFolder.get(), user.c_str(), uid, ignored);
            if (mine) {
                auto trash = openParts(joinPath(joinPath(topdir, ".Trash"), user), topdir,
                                       std::move(mine), ignored);
                if (trash) return trash;
            }
        }
    }

    const std::string own = ".Trash-" + user;
    UniqueFd mine = openOwnedFolder(top.get(), own.c_str(), uid, problem);
    if (!mine) return std::nullopt;
    return openParts(joinPath(topdir, own), topdir, std::move(mine), problem);
}

std::vector<std::string> homeTrashPaths() {
    std::vector<std::string> paths{standardizePath(dataHome() + "/Trash")};
    std::string resolved = resolveSymlinks(paths.front());
    if (resolved != paths.front()) paths.push_back(std::move(resolved));
    return paths;
}

bool isVolumeTrashName(std::string_view name) {
    constexpr std::string_view prefix = ".Trash-";
    return name.size() > prefix.size() && name.starts_with(prefix) &&
           std::all_of(name.begin() + prefix.size(), name.end(),
                       [](char c) { return c >= '0' && c <= '9'; });
}

bool isInsideTrash(std::string_view path, const std::vector<std::string>& homeTrashes) {
    for (const auto& trash : homeTrashes) {
        if (isSameOrUnder(path, trash)) return true;
    }
    for (const auto name : pathComponents(path)) {
        if (name == ".Trash" || isVolumeTrashName(name)) return true;
    }
    return false;
}

}  // namespace veldan::platform
