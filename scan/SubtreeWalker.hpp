#pragma once
// The per-directory walk of one top-level entry of a scan, on one worker's thread.
//
// Protocol:
//  - Folders are walked depth-first with an explicit stack of frames. A frame lists its
//    folder once, measuring every file at once and remembering subfolders; then it
//    enters the subfolders one by one. All opens are relative to the parent's
//    descriptor (openat, O_NOFOLLOW), so trees deeper than PATH_MAX are measured and a
//    folder swapped for a link is never followed.
//  - Frames at depth 1 to 5 are mapped: they keep their 17 largest children as nodes
//    plus one "Other" summary, and offer their files to the largest-file list. A folder
//    at depth 6, an opaque folder and an unauthorised media library become a node
//    without children measured as a whole; everything below them is only summed.
//  - At most `maximumOpenFolders` descriptors stay open per worker. Deeper frames park
//    the descriptor of the frame `maximumOpenFolders` below, and a parked frame is
//    reopened through ".." of its child and checked against its recorded identity.
//  - Failures become issues in the scan's collector; the walk always goes on.
//
// Contract: one walker per worker thread; the context is shared and thread-safe.

#include <cstdint>
#include <string>
#include <vector>

#include "platform/FileStatus.hpp"
#include "platform/UniqueFd.hpp"
#include "scan/DiskCategory.hpp"
#include "scan/FolderIdentity.hpp"
#include "scan/KeptChildren.hpp"
#include "scan/ParallelChildResult.hpp"
#include "scan/ScanContext.hpp"
#include "scan/ScanEntry.hpp"
#include "scan/ScanProgressThrottle.hpp"
#include "scan/WalkReporter.hpp"

namespace veldan {

class SubtreeWalker {
public:
    static constexpr int mappedDepth = 5;
    static constexpr size_t maximumOpenFolders = 48;

    SubtreeWalker(ScanContext& context, WalkReporter& reporter);

    // Measures `entry` of the open folder `parentFd` whose path is `parentPath` and whose
    // path components carry `parentFlags`; the entry is at depth 1.
    ParallelChildResult measure(int parentFd, const std::string& parentPath,
                                CategoryFlags parentFlags, const ScanEntry& entry);

    // Bytes charged for a file before clone sharing: the allocated size from the listing's
    // values when they still agree with the status, else blocks x 512. Empty when the size
    // is unavailable (a block count of 2^54 or more).
    static std::optional<int64_t> allocatedBeforeSharing(const platform::FileStatus& status);

private:
    enum class Role { mapped, boundary, inner };

    struct Frame {
        platform::UniqueFd fd;
        FolderIdentity identity;
        size_t nameOffset = 0;  // where this folder's name starts in path_
        size_t pathLength = 0;  // length of this folder's path in path_
        int depth = 0;
        Role role = Role::inner;
        bool listed = false;
        bool parked = false;
        bool incomplete = false;
        CategoryFlags flags = 0;
        int64_t bytes = 0;
        KeptChildren children;
        std::vector<ScanEntry> pending;
        size_t next = 0;
    };

    bool enter(int parentFd, const ScanEntry& entry, Role parentRole, int depth,
               CategoryFlags parentFlags);
    Role roleFor(int parentFd, const std::string& name, Role parentRole, int depth);
    // Records and answers whether `name` (the folder at path_) is a photo or music library
    // the user has not authorised Veldan to read.
    bool isUnauthorisedLibrary(const std::string& name);
    void list(Frame& frame);
    // Whether the open folder is the one claimed when it was listed: the inode the listing
    // gave for "." settles it for free; otherwise one status call on the descriptor does.
    bool isClaimedFolder(const Frame& frame, uint64_t listedSelf) const;
    void measureFile(Frame& frame, const char* name, size_t length,
                     const platform::FileStatus& status);
    void finishTop(ParallelChildResult& result);
    void reopenParked(Frame& parked, int childFd);
    void parkDeepFrames();
    void maybeReport();
    DiskNode partialSnapshot() const;
    std::string childPath(const char* name, size_t length) const;

    ScanContext& context_;
    WalkReporter& reporter_;
    ScanProgressThrottle throttle_;
    std::vector<Frame> frames_;
    std::string path_;
    size_t basePathLength_ = 0;
    std::vector<char> buffer_;
    int64_t folders_ = 0;
    int64_t files_ = 0;
    bool measuredSincePartial_ = false;
    unsigned entriesSinceReport_ = 0;
};

}  // namespace veldan
