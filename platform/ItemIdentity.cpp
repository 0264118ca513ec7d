#include "platform/ItemIdentity.hpp"

namespace veldan::platform {

ItemIdentity ItemIdentity::of(const FileStatus& status) {
    return ItemIdentity{status.device, status.inode, status.created, status.modified,
                        status.changed};
}

bool ItemIdentity::isSameItem(const ItemIdentity& now) const {
    return device == now.device && inode == now.inode && created == now.created;
}

}  // namespace veldan::platform
