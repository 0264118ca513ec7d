#pragma once
// Measures AI storage locations one after another on one worker's thread, read-only.
//
// A location is first classified: missing (nothing there, or a file on the way),
// unreadable, or linked (the path or a folder above it is a symbolic link, which is
// never followed). A folder is then walked without following links, relative to folder
// descriptors so that trees deeper than PATH_MAX are measured, staying on the location's
// own file system; its bytes are the allocated sizes of its regular files. Folders this
// worker already walked (same device and inode, from a bind mount or a repeated path) and
// the paths of locations nested inside it are skipped, and a file with several hard links
// is counted once. Entries that cannot be read are counted, not reported one by one.
//
// Contract: one walker per worker thread; it keeps its visit state (the folders and
// hard-linked files seen) across the locations it measures. `entries` is called from that
// thread with the entries checked since its last call, at least every few thousand
// entries and at the end of each location; returning false stops the walk (cancelled).

#include <cstdint>
#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

#include "aistorage/AIStorageLocation.hpp"
#include "platform/UniqueFd.hpp"
#include "scan/FolderIdentity.hpp"

namespace veldan {

class AIStorageWalker {
public:
    using EntriesSink = std::function<bool(int64_t newEntries)>;
    static constexpr size_t maximumOpenFolders = 48;

    explicit AIStorageWalker(EntriesSink entries);

    // Sets status, bytes, fingerprint and isLinkedPath of `location`, whose path is set.
    // `excluded` holds the paths of locations nested in it. Returns false when stopped.
    bool measure(AIStorageLocation& location, const std::unordered_set<std::string>& excluded);

    int64_t unreadableEntries() const { return unreadable_; }

private:
    struct Frame {
        platform::UniqueFd fd;
        FolderIdentity identity;
        size_t pathLength = 0;             // of this folder's path in path_
        std::vector<std::string> folders;  // subfolder names still to visit
        size_t next = 0;
    };

    bool walk(platform::UniqueFd root, const FolderIdentity& identity, int64_t& bytes,
              const std::unordered_set<std::string>& excluded);
    // Lists an open folder: sums its files and remembers its subfolders.
    bool list(Frame& frame, int64_t& bytes);
    void addFile(int directoryFd, const char* name, Frame& frame, int64_t& bytes);
    bool reopen(Frame& frame);
    bool count();

    EntriesSink entries_;
    std::unordered_set<FolderIdentity, FolderIdentityHash> seenFolders_;
    std::unordered_set<FolderIdentity, FolderIdentityHash> seenLinkedFiles_;
    std::vector<Frame> frames_;
    std::vector<char> buffer_;
    std::string path_;
    uint64_t device_ = 0;
    int64_t pendingEntries_ = 0;
    int64_t unreadable_ = 0;
};

}  // namespace veldan
