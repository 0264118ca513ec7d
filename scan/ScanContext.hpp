#pragma once
// The state one scan shares between its workers: the devices it may enter, the folders
// already visited, the hard-link, largest-file and issue collectors, and the map of
// discovered folders.
//
// Contract: created by the scanner for one walk and discarded with it. Every mutable
// member is guarded by its own lock; the rest is read-only after construction.

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "scan/FolderIdentity.hpp"
#include "scan/HardLinkCollector.hpp"
#include "scan/LargestFileCollector.hpp"
#include "scan/ScanCancellation.hpp"
#include "scan/ScanIssueCollector.hpp"
#include "scan/ScanSettings.hpp"

namespace veldan {

class ScanContext {
public:
    ScanContext(std::string rootPath, ScanSettings settings, std::set<uint64_t> allowedDevices,
                const ScanCancellation& cancellation);

    const std::string& rootPath() const { return rootPath_; }
    const ScanSettings& settings() const { return settings_; }
    bool isStartupDisk() const { return rootPath_ == "/"; }
    bool cancelled() const { return cancellation_.cancelled(); }

    bool deviceAllowed(uint64_t device) const;
    // How many workers walk, and how many folder descriptors each may keep open: shares of
    // what the process may still open when the scan starts, so that a low limit parks
    // folders (and runs fewer workers) instead of failing to open them.
    size_t workerBudget() const { return workerBudget_; }
    size_t openFolderBudget() const { return openFolderBudget_; }
    // Paths skipped on the startup disk because they reach the same data again.
    bool isStartupAlias(std::string_view path) const;
    // True the first time a folder is claimed; later claims (loops, bind mounts, the
    // same folder reached twice) return false and the folder is not entered again.
    bool claimFolder(FolderIdentity identity);

    // Records the bytes of a folder when its name or path is one the feature tools look up.
    void discover(std::string_view path, std::string_view name, int64_t bytes);
    std::map<std::string, int64_t> discovered() const;

    HardLinkCollector& hardLinks() { return hardLinks_; }
    LargestFileCollector& largestFiles() { return largestFiles_; }
    ScanIssueCollector& issues() { return issues_; }

    static constexpr const char* trackedDirectoryNames[] = {".next", ".build", "DerivedData",
                                                            "node_modules"};
    static std::vector<std::string> recommendationPaths(const std::string& home);

private:
    std::string rootPath_;
    ScanSettings settings_;
    std::set<uint64_t> allowedDevices_;
    size_t workerBudget_ = 1;
    size_t openFolderBudget_ = 2;
    const ScanCancellation& cancellation_;
    std::set<std::string, std::less<>> recommendationPaths_;

    // Every worker claims every folder it enters; one lock for all of them made the
    // workers queue on each other, so the set is split into independently locked shards.
    struct VisitedShard {
        std::mutex mutex;
        std::unordered_set<FolderIdentity, FolderIdentityHash> folders;
    };
    static constexpr size_t visitedShardCount = 64;
    std::array<VisitedShard, visitedShardCount> visited_;
    HardLinkCollector hardLinks_;
    LargestFileCollector largestFiles_;
    ScanIssueCollector issues_;
    mutable std::mutex discoveredMutex_;
    std::map<std::string, int64_t> discovered_;
};

}  // namespace veldan
