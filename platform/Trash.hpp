#pragma once
// Moving items to the freedesktop.org Trash, the only way Veldan ever removes anything.
//
// The home trash is $XDG_DATA_HOME/Trash; an item on another file system goes to that
// file system's $topdir/.Trash/$uid (only when .Trash is a sticky folder, not a link)
// or else $topdir/.Trash-$uid. The info file (files are listed and restorable by
// trash-list and trash-restore) is created first with O_EXCL and holds the original path
// percent-encoded byte for byte. The item is then renamed with renameat2(RENAME_NOREPLACE)
// relative to the caller's already-verified parent folder descriptor, so nothing can be
// swapped in between the caller's last check and the move. What arrived in the Trash is
// checked once more: an entry put under the name between the last check and the rename
// is renamed back (without replacing anything) and its info file removed, and the move
// is refused; should the name have been taken again meanwhile, that entry stays in the
// Trash, restorable, and the refusal says so. When no trash is usable on the item's file
// system the move is refused; nothing is ever copied and deleted.
//
// Contract: thread-safe (no shared state besides the file system). Failures are values:
// `reason` is one sentence ending with a period.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace veldan::platform {

struct TrashOutcome {
    bool moved = false;
    std::string trashedPath;  // where the item now lies, when moved
    std::string reason;       // why it stayed, when not moved
};

struct ItemIdentity {
    uint64_t device = 0;
    uint64_t inode = 0;
};

class Trash {
public:
    // Moves `name`, an entry of the open folder `parentFd` whose absolute path is
    // `parentPath`. With `expected`, the entry's device and inode are checked once more
    // (fstatat on `parentFd`) immediately before the rename and a mismatch refuses.
    // `beforeRename` runs between that last check and the rename; tests change the
    // folder there to prove that only the checked entry ever stays in the Trash.
    static TrashOutcome moveItem(int parentFd, const std::string& parentPath,
                                 const std::string& name,
                                 std::optional<ItemIdentity> expected = std::nullopt,
                                 const std::function<void()>& beforeRename = {});

    // Convenience for callers without a descriptor: opens the parent folder of the
    // absolute `path` and moves its last component.
    static TrashOutcome moveItem(const std::string& path,
                                 std::optional<ItemIdentity> expected = std::nullopt);
};

}  // namespace veldan::platform
