#pragma once
// Measures a folder (or the whole startup disk) read-only into a tree of allocated
// sizes and a ScanSnapshot.
//
// Protocol:
//  - The root is listed once on the caller's thread, which measures its files on the way
//    (with progress, so a folder of a million files shows it is alive). Its subfolders
//    are ordered (EntryOrder) and handed out one at a time to four workers (dynamic
//    hand-out, no static split). Each worker walks its entry with a SubtreeWalker and
//    hands the result to ParallelRootState; workers out of entries help inside the ones
//    still under way (FolderSharing), which leaves every result unchanged.
//  - The walk never leaves the allowed devices, enters each folder (device, inode) once,
//    charges each hard-linked inode once, and never follows a symbolic link.
//  - Progress goes out at most every 0.25 s; partial roots, when asked for, at most every
//    0.4 s on one serial queue, and never after the result has been returned.
//  - Cancellation makes scan() return nothing; what was measured is discarded.
//
// Contract: a DiskScanner is immutable and may run several scans at once; each scan
// runs synchronously on the caller's thread plus its workers.

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "scan/ScanCallbacks.hpp"
#include "scan/ScanCancellation.hpp"
#include "scan/ScanEntry.hpp"
#include "scan/ScanOutcome.hpp"
#include "scan/ScanReuse.hpp"
#include "scan/ScanSettings.hpp"
#include "scan/SubtreeScan.hpp"

namespace veldan {

class DiskScanner {
public:
    static constexpr size_t maximumWorkers = 4;

    explicit DiskScanner(ScanSettings settings = ScanSettings::current(),
                         ScanReuse* reuse = nullptr);

    // A sentence naming why `path` cannot be scanned (missing, not a folder, unreadable),
    // or empty when it can.
    static std::optional<std::string> rootProblem(const std::string& path);

    // Scans `path` (made absolute and standardized). Returns nothing when cancelled, after
    // handing `stopped` the largest files measured until then. With a reuse hook, an
    // unchanged earlier snapshot of the same folder is returned at once.
    std::optional<ScanOutcome> scan(const std::string& path, const ScanCancellation& cancellation,
                                    const ScanProgress& progress = {},
                                    const ScanPartial& partial = {},
                                    const ScanStopped& stopped = {}) const;

    // Measures one folder by itself; nothing when cancelled.
    std::optional<SubtreeScan> scanSubtree(const std::string& path,
                                           const ScanCancellation& cancellation,
                                           const ScanProgress& progress = {}) const;

    // Completes a partial root (from a stopped scan): top-level children that were
    // finished are kept as they are, everything else is measured. Largest files of the
    // kept children are taken from `earlierLargestFiles`; their discovered folders and
    // visit counts are what their kept nodes show. A file hard-linked from a kept
    // child and from a measured one is charged in both, since the kept child's links
    // are not known without walking it again.
    std::optional<ScanOutcome> scanRemainder(
        const DiskNode& partialRoot, const std::string& path, const ScanCancellation& cancellation,
        const ScanProgress& progress = {},
        const std::vector<LargeFile>& earlierLargestFiles = {}) const;

    // The devices a scan of `path` may enter: the resolved path's own, plus the home
    // folder's when the path is "/" (the data volume of the startup disk).
    std::set<uint64_t> allowedDevices(const std::string& path) const;

    std::vector<ScanEntry> prioritizedEntries(const std::string& folder,
                                              std::vector<ScanEntry> entries) const;

    // The bytes charged for one file: allocated size, passed through the clone share.
    static std::optional<int64_t> allocatedBytes(const std::string& path,
                                                 const platform::FileStatus& status);

private:
    struct Walk;
    std::optional<Walk> walk(const std::string& root, const ScanCancellation& cancellation,
                             const ScanProgress& progress, const ScanPartial& partial,
                             const std::map<std::string, DiskNode>& reusable,
                             const ScanStopped& stopped = {}) const;
    std::optional<ScanOutcome> walkOutcome(const std::string& root,
                                           const ScanCancellation& cancellation,
                                           const ScanProgress& progress, const ScanPartial& partial,
                                           const std::map<std::string, DiskNode>& reusable,
                                           const std::vector<LargeFile>& carriedLargestFiles,
                                           const ScanStopped& stopped = {}) const;

    ScanSettings settings_;
    ScanReuse* reuse_;
};

}  // namespace veldan
