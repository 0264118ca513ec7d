#pragma once
// The per-directory walk of a scan, on one worker's thread.
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
//  - When another worker is out of work, the walker shares its shallowest folder that
//    still has subfolders to enter (FolderSharing); helpers measure some of them and the
//    folder folds their nodes in before it finishes, so the result is the same whoever
//    measured what. A walker with nothing of its own helps others (help()).
//  - At most `maximumOpenFolders` descriptors stay open per worker, fewer when the
//    process may open few files. Deeper frames park the descriptor of the frame that
//    many below; a parked frame is opened again through ".." of its child, or name by
//    name from the nearest open folder above it, and checked against its recorded
//    identity. Running out of descriptors parks every frame but the one in use.
//  - Failures become issues in the scan's collector; the walk always goes on.
//
// Contract: one walker per worker thread; the context and the sharing are shared and
// thread-safe. Counts are running totals over everything the walker measured.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/FileStatus.hpp"
#include "platform/UniqueFd.hpp"
#include "scan/DiskCategory.hpp"
#include "scan/FolderIdentity.hpp"
#include "scan/FolderRole.hpp"
#include "scan/FolderSharing.hpp"
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

    SubtreeWalker(ScanContext& context, WalkReporter& reporter, FolderSharing& sharing);

    // The scanned folder's own listing: its files measured as its kept children and
    // bytes, and its subfolders in visiting order, to be handed out.
    struct Listing {
        KeptChildren files;
        int64_t bytes = 0;
        std::vector<ScanEntry> subfolders;
    };
    // Lists the open folder `rootFd` at `rootPath` (already claimed as `identity`).
    Listing listRoot(int rootFd, const std::string& rootPath, CategoryFlags flags,
                     FolderIdentity identity);

    // Measures the subfolder `entry` of the open folder `parentFd` whose path is
    // `parentPath` and whose path components carry `parentFlags`; it is at depth 1.
    ParallelChildResult measure(int parentFd, const std::string& parentPath,
                                CategoryFlags parentFlags, const ScanEntry& entry);
    // Measures subfolders other walkers share until the scan has no work left.
    void help();

    int64_t folders() const { return folders_; }
    int64_t files() const { return files_; }

    // Bytes charged for a file before clone sharing: the allocated size from the listing's
    // values when they still agree with the status, else blocks x 512. Empty when the size
    // is unavailable (a block count of 2^54 or more).
    static std::optional<int64_t> allocatedBeforeSharing(const platform::FileStatus& status);

private:
    struct Frame {
        platform::UniqueFd fd;  // empty when parked, failed, or handed to `shared`
        FolderIdentity identity;
        size_t nameOffset = 0;  // where this folder's name starts in its chain's path
        size_t pathLength = 0;  // length of this folder's path in its chain's path
        int depth = 0;
        FolderRole role = FolderRole::inner;
        bool listed = false;
        bool parked = false;
        bool incomplete = false;
        CategoryFlags flags = 0;
        int64_t bytes = 0;
        KeptChildren children;
        std::vector<ScanEntry> pending;
        size_t next = 0;
        // Set once offered: the subfolders left and the descriptor moved there.
        std::shared_ptr<SharedFolder> shared;
        // Set on the first frame of a chain: a subfolder taken from another walker's
        // folder, whose result goes back there. Chains stack on top of each other.
        std::shared_ptr<SharedFolder> returnTo;
        std::string resumePath;  // path_ of the chain below, given back when this one ends
        int baseFd = -1;         // first frame of a chain: its parent folder's descriptor
    };

    void run(ParallelChildResult* result);
    void step(ParallelChildResult* result);
    bool enter(int parentFd, const ScanEntry& entry, FolderRole parentRole, int depth,
               CategoryFlags parentFlags);
    bool startTask(FolderSharing::Task task);
    FolderRole roleFor(int parentFd, const std::string& name, FolderRole parentRole, int depth);
    // Records and answers whether `name` (the folder at path_) is a photo or music library
    // the user has not authorised Veldan to read.
    bool isUnauthorisedLibrary(const std::string& name);
    void list(Frame& frame, int fd);
    // Whether the open folder is the one claimed when it was listed: the inode the listing
    // gave for "." settles it for free; otherwise one status call on the descriptor does.
    bool isClaimedFolder(int fd, const FolderIdentity& identity, uint64_t listedSelf) const;
    void measureFile(Frame& frame, const char* name, size_t length,
                     const platform::FileStatus& status);
    void finishTop(ParallelChildResult* result);
    void shareFolder();
    // Ends every frame after an exception: helpers' results are given back empty, so no
    // other worker waits for them.
    void abandon();

    static int folderFd(const Frame& frame);
    size_t chainStart(size_t index) const;
    void reopenParked(size_t index, int childFd);
    platform::UniqueFd openAlongChain(size_t index);
    void parkDeepFrames();
    bool parkAllBut(int keptFd);
    void maybeReport();
    DiskNode partialSnapshot() const;
    std::string childPath(const char* name, size_t length) const;

    ScanContext& context_;
    WalkReporter& reporter_;
    FolderSharing& sharing_;
    ScanProgressThrottle throttle_;
    std::vector<Frame> frames_;
    std::string path_;  // the path of the top frame's chain, up to the top frame
    std::vector<char> buffer_;
    size_t openLimit_;
    int64_t folders_ = 0;
    int64_t files_ = 0;
    bool measuredSincePartial_ = false;
    unsigned entriesSinceReport_ = 0;
};

}  // namespace veldan
