#pragma once
// Device and inode of a folder or file, for the visited-folder and hard-link sets.

#include <cstddef>
#include <cstdint>
#include <functional>

namespace veldan {

struct FolderIdentity {
    uint64_t device = 0;
    uint64_t inode = 0;
    friend bool operator==(const FolderIdentity&, const FolderIdentity&) = default;
};

struct FolderIdentityHash {
    size_t operator()(const FolderIdentity& id) const noexcept {
        return std::hash<uint64_t>{}(id.inode * 0x9E3779B97F4A7C15ULL ^ id.device);
    }
};

}  // namespace veldan
