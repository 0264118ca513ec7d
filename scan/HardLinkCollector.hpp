#pragma once
// Files with more than one link that a scan already charged, so each inode is counted
// once however many names lead to it.
//
// Contract: shared by all scan workers; insert() takes the collector's lock.

#include <mutex>
#include <unordered_set>

#include "scan/FolderIdentity.hpp"

namespace veldan {

class HardLinkCollector {
public:
    // True when the file was not seen before (and is now charged here).
    bool insert(FolderIdentity identity);

private:
    std::mutex mutex_;
    std::unordered_set<FolderIdentity, FolderIdentityHash> seen_;
};

}  // namespace veldan
