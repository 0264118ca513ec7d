#pragma once
// The locations chosen for a move to the Trash, and whether storage must be measured
// again first. Only approved locations (AIStorageScanner::isApprovedCleanupLocation) can
// be chosen; after a move, nothing can be chosen until the next scan, because the sizes
// and folders shown no longer describe the disk.
//
// Contract: a plain value; the owner (the screen's model, a command) keeps it beside the
// snapshot it was made for and calls scanned() whenever a new snapshot replaces it.

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "aistorage/AIStorageSnapshot.hpp"

namespace veldan {

class AIStorageSelection {
public:
    static constexpr const char* refreshFirst =
        "Storage changed after cleanup. Refresh before selecting more locations.";
    static constexpr const char* notApproved = "This location is not approved for in-app cleanup.";
    static constexpr const char* notMeasured =
        "This folder is not one of the AI storage locations Veldan measured.";

    // Selects the location at `path`; the reason when it cannot be, and nothing changes.
    std::optional<std::string> select(const AIStorageSnapshot& snapshot, const std::string& path);
    void deselect(const std::string& path) { paths_.erase(path); }
    // Selects every approved location of `kind`; the reason when nothing can be selected
    // now (a refresh is due).
    std::optional<std::string> selectKind(const AIStorageSnapshot& snapshot, AIStorageKind kind);

    const std::set<std::string>& paths() const { return paths_; }
    // The selected locations in the snapshot's order.
    std::vector<AIStorageLocation> locations(const AIStorageSnapshot& snapshot) const;

    // Holds from a move to the Trash until the next scan.
    bool needsRefreshAfterMove() const { return needsRefreshAfterMove_; }
    void moved();
    void scanned();

private:
    std::set<std::string> paths_;
    bool needsRefreshAfterMove_ = false;
};

}  // namespace veldan
