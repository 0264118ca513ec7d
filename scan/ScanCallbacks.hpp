#pragma once
// The callbacks through which a scan reports while it runs.
//
// Both are called from worker threads or the scan's partial queue, never under a lock
// of the scanner; the receiver hops to its own thread if it needs to.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "scan/DiskNode.hpp"
#include "scan/LargeFile.hpp"

namespace veldan {

// The folder being listed, and the folders and files visited so far.
using ScanProgress =
    std::function<void(const std::string& currentItem, int64_t folders, int64_t files)>;
// A partial root (isPartial set) of a scan under way.
using ScanPartial = std::function<void(const DiskNode& root)>;
// Called once when a scan is stopped, with the largest files it had measured: a stopped
// scan returns no snapshot, yet a report of what it measured lists them.
using ScanStopped = std::function<void(const std::vector<LargeFile>& largestFiles)>;

}  // namespace veldan
