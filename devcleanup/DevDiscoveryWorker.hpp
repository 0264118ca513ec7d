#pragma once
// One of the discovery workers of a search for generated folders: takes folders from the
// shared DevDiscoveryState and searches each with everything below it, recognising
// generated folders by name and by the marker files beside or inside them. A generated
// folder becomes a candidate and is not entered.
//
// Contract: one object per worker thread; run() returns when the walk is over or the
// search is cancelled. Progress is called on this thread, outside every lock.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "devcleanup/DevCleanupScanPhase.hpp"
#include "devcleanup/DevDiscoveryState.hpp"
#include "devcleanup/DevFolderChain.hpp"
#include "devcleanup/DevWalkRules.hpp"
#include "scan/ScanCancellation.hpp"

namespace veldan {

class DevDiscoveryWorker {
public:
    DevDiscoveryWorker(DevDiscoveryState& state, const DevWalkRules& rules,
                       const ScanCancellation& cancellation,
                       const DevCleanupScanProgress& progress);

    void run();

private:
    struct Folder {
        std::vector<std::string> subfolders;  // kept here rather than queued for others
        size_t next = 0;
        size_t pathLength = 0;
        int depth = 0;
        uint8_t markers = 0;  // sibling marker bits of the files this folder holds
    };
    using Link = DevFolderChain<Folder>::Link;

    void search(DevQueuedFolder folder);
    // Looks at the folder `name` of `parent`, whose path is in path_: a candidate is
    // recorded, any other folder to search is pushed and listed (true).
    bool enter(const SharedFd& parent, const std::string& name, int depth, uint8_t parentMarkers);
    void list(Link& folder);
    void share(Link& folder);

    DevDiscoveryState& state_;
    const DevWalkRules& rules_;
    const ScanCancellation& cancellation_;
    const DevCleanupScanProgress& progress_;
    DevFolderChain<Folder> chain_;
    std::string path_;
    std::vector<char> listing_;
};

}  // namespace veldan
