#pragma once
// Moving items to the freedesktop.org Trash, the only way Veldan ever removes anything,
// and the last checks every executor relies on before an item moves.
//
// The home trash is $XDG_DATA_HOME/Trash for items on the mount that holds it; an item on
// any other mount (another file system, or a bind mount of the same one) goes to that
// mount's $topdir/.Trash/$uid (only when .Trash is a sticky folder, not a link) or else
// $topdir/.Trash-$uid. The info file (files are listed and restorable by trash-list and
// trash-restore) is created first with O_EXCL and holds the original path percent-encoded
// byte for byte. Right before the rename the item is checked once more: it must still be
// the expected item, and no mount point may lie at or below it (the mounted files would
// go along and be deleted with the Trash). The rename is renameat2(RENAME_NOREPLACE)
// relative to a parent folder descriptor that was opened from "/" without following any
// link, so nothing can be swapped in between. What arrived in the Trash is checked once
// more: an entry put under the name between the last check and the rename is renamed back
// (without replacing anything) and its info file removed, and the move is refused; should
// the name have been taken again meanwhile, that entry stays in the Trash, restorable, and
// the refusal says so. When no trash is usable on the item's mount the move is refused;
// nothing is ever copied and deleted.
//
// Contract: thread-safe (no shared state besides the file system). Failures are values:
// `refusal` says what kind, `reason` is one sentence ending with a period that executors
// show as it is or replace with their own wording for that kind.

#include <functional>
#include <optional>
#include <string>

#include "platform/ItemIdentity.hpp"

namespace veldan::platform {

enum class TrashRefusal {
    none,                // moved
    notAnItem,           // not a named item inside a folder
    redirected,          // a folder on the way is a link now, or no longer the folder looked at
    missing,             // nothing is there any more
    changed,             // not the expected item, or replaced just before the move
    replacementInTrash,  // a replacement moved instead and could not be put back
    holdsMount,          // a mount point lies at or below the item (or the table was unreadable)
    noTrash,             // no usable Trash on the item's mount
    failed,              // the info file or the rename failed
};

struct TrashOutcome {
    bool moved = false;
    std::string trashedPath;  // where the item now lies, when moved
    TrashRefusal refusal = TrashRefusal::none;
    std::string reason = {};  // why it stayed, when not moved
};

struct TrashMove {
    // The item that was measured; without it, whatever the first look finds must stay.
    std::optional<ItemIdentity> expected;
    IdentityCheck check = IdentityCheck::sameItem;
    // Runs between the last check and the rename; tests change the folder there to prove
    // that only the checked entry ever stays in the Trash.
    std::function<void()> beforeRename = {};
};

class Trash {
public:
    // The move every executor makes: `path` is absolute; its parent folder is opened from
    // "/" without following any link (a link on the way refuses as `redirected`), then
    // the item moves as below.
    static TrashOutcome moveItem(const std::string& path, const TrashMove& move = {});

    // Moves `name`, an entry of the open folder `parentFd` whose absolute path is
    // `parentPath` (that path must still lead to that very folder).
    static TrashOutcome moveItem(int parentFd, const std::string& parentPath,
                                 const std::string& name, const TrashMove& move = {});
};

}  // namespace veldan::platform
