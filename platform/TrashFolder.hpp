#pragma once
// The Trash folders an item can go to, opened (and created when missing) the way the
// freedesktop.org Trash specification describes: the home trash for items on the mount
// that holds it, otherwise a per-volume folder in the top directory of the item's mount.
//
// Contract: single calls on the caller's thread; a folder that cannot be used comes back
// empty with `problem` set to why (errno text), never half-open.

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/UniqueFd.hpp"

namespace veldan::platform {

struct TrashFolder {
    std::string path;    // the Trash folder itself
    std::string topdir;  // the volume's top directory; empty for the home trash
    UniqueFd folder;     // `path`
    UniqueFd files;      // `path`/files
    UniqueFd info;       // `path`/info
};

// The mount point that holds $XDG_DATA_HOME/Trash, or its nearest existing ancestor when
// it does not exist yet (it is created there when first used). Only items under this very
// mount can be renamed into it: a bind mount of the same device is another mount.
std::string homeTrashMountPoint();

// $XDG_DATA_HOME/Trash with files/ and info/, created with mode 700 where missing.
std::optional<TrashFolder> openHomeTrash(std::string& problem);

// $topdir/.Trash/$uid when $topdir/.Trash is a folder with the sticky bit and not a
// symbolic link; otherwise $topdir/.Trash-$uid. Either is used only when it is a real
// folder owned by `uid`; missing ones are created with mode 700.
std::optional<TrashFolder> openVolumeTrash(const std::string& topdir, uid_t uid,
                                           std::string& problem);

// The home trash, $XDG_DATA_HOME/Trash, as written and (when different) resolved: walked
// paths may name it either way.
std::vector<std::string> homeTrashPaths();

// A volume's trash folder name: ".Trash-" followed by a user id.
bool isVolumeTrashName(std::string_view name);

// True when `path` (standardized) is a Trash folder or lies inside one: one of
// `homeTrashes` (from homeTrashPaths()), or anything below a folder named ".Trash" or a
// volume's trash name. What the user already threw away is never offered for cleaning.
bool isInsideTrash(std::string_view path, const std::vector<std::string>& homeTrashes);

}  // namespace veldan::platform
