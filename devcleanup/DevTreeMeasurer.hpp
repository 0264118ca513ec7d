#pragma once
// Measures one generated folder whole: the allocated bytes of every entry inside, how
// many entries could not be read, and a fingerprint of the contents.
//
// Protocol: depth-first, every folder opened relative to its parent's descriptor without
// following links; every entry's status read once (lstat). Entries on another device are
// neither counted nor entered; a folder already seen (device, inode) within this walk is
// not walked again; a file with two or more links is counted once per walk. A block count
// too large to charge counts as unreadable instead. The fingerprint folds, for every
// entry whose status could be read, its name, its parent folder, its identity, size,
// blocks, mode, link count and times, so adding, removing, renaming or rewriting
// anything inside changes it (a folder's own status is the caller's to compare).
//
// Contract: one measurer per thread, reused for walk after walk (it keeps its buffers);
// measure() blocks for the whole walk. `tick` is called every 128 entries.

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

#include "devcleanup/DevFolderChain.hpp"
#include "platform/FileStatus.hpp"
#include "scan/FileTreeFingerprint.hpp"
#include "scan/FolderIdentity.hpp"
#include "scan/ScanCancellation.hpp"

namespace veldan {

struct DevTreeMeasurement {
    int64_t bytes = 0;
    int64_t unreadableItems = 0;
    FileTreeFingerprint fingerprint;
    bool cancelled = false;  // the walk stopped early; the rest is not known
};

class DevTreeMeasurer {
public:
    static constexpr unsigned entriesPerTick = 128;

    DevTreeMeasurer(const ScanCancellation& cancellation, std::function<void()> tick = {});

    // Walks the open folder `folder` (already checked to be the one wanted) at `path`,
    // whose status is `status`.
    DevTreeMeasurement measure(platform::UniqueFd folder, const std::string& path,
                               const platform::FileStatus& status);

private:
    struct Pending {
        std::string name;
        FolderIdentity identity;
    };
    struct Folder {
        std::vector<Pending> subfolders;
        size_t next = 0;
        size_t pathLength = 0;
    };

    void list(DevFolderChain<Folder>::Link& folder);
    void measureEntry(DevFolderChain<Folder>::Link& folder, const char* name, size_t length,
                      const platform::FileStatus& status);
    void enter(DevFolderChain<Folder>::Link& parent, const Pending& subfolder);

    const ScanCancellation& cancellation_;
    std::function<void()> tick_;
    unsigned sinceTick_ = 0;
    uint64_t device_ = 0;
    DevTreeMeasurement result_;
    DevFolderChain<Folder> chain_;
    std::unordered_set<FolderIdentity, FolderIdentityHash> visited_;
    std::unordered_set<FolderIdentity, FolderIdentityHash> hardLinked_;
    std::vector<char> listing_;
    std::string path_;
};

}  // namespace veldan
