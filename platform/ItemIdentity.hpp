#pragma once
// Which file-system object a path names, told apart strongly enough that a recreated one
// never passes for the one that was measured.
//
// Device and inode alone are not enough here: ext4, tmpfs and btrfs hand a freed inode
// number to the next new file at once (`rm -r d; mkdir d` often gets the same number
// back). The birth time tells the two apart where the file system records one; where it
// records none both sides read zero and device and inode decide. Modification and change
// times, to the nanosecond, tell whether the same object was changed since.
//
// Contract: plain values; `of` and the comparisons never touch the file system.

#include <cstdint>

#include "platform/FileStatus.hpp"

namespace veldan::platform {

struct ItemIdentity {
    uint64_t device = 0;
    uint64_t inode = 0;
    Timestamp created;  // zero when the file system keeps no birth time
    Timestamp modified;
    Timestamp changed;

    static ItemIdentity of(const FileStatus& status);

    // The same object: device, inode and birth time. Its contents may have changed.
    bool isSameItem(const ItemIdentity& now) const;
    bool isSameItem(const FileStatus& now) const { return isSameItem(of(now)); }
    // The same object, not modified and its status not changed since.
    bool isUnchanged(const ItemIdentity& now) const { return *this == now; }
    bool isUnchanged(const FileStatus& now) const { return isUnchanged(of(now)); }

    friend bool operator==(const ItemIdentity&, const ItemIdentity&) = default;
};

// How strictly a move proves that the item is still the one that was measured.
enum class IdentityCheck { sameItem, unchanged };

}  // namespace veldan::platform
