#pragma once
// A folder one walker offers to the others (FolderSharing): the subfolders it has not
// entered yet, and what helpers measured of them.
//
// Contract: the first group of fields is fixed once offered; the rest is guarded by the
// lock of the FolderSharing it was offered to.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/UniqueFd.hpp"
#include "scan/DiskCategory.hpp"
#include "scan/FolderRole.hpp"
#include "scan/KeptChildren.hpp"
#include "scan/ScanEntry.hpp"

namespace veldan {

struct SharedFolder {
    // Fixed when offered.
    std::string path;
    int depth = 0;
    FolderRole role = FolderRole::inner;
    CategoryFlags flags = 0;
    platform::UniqueFd fd;  // the walker's descriptor of the folder, handed over with it
    std::vector<ScanEntry> subfolders;

    // Guarded by the sharing lock.
    size_t next = 0;      // the first subfolder not yet claimed
    int outstanding = 0;  // subfolders claimed by helpers and not yet deposited
    int64_t bytes = 0;    // what the helpers deposited
    KeptChildren children;
    bool incomplete = false;
};

}  // namespace veldan
