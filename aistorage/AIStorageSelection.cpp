#include "aistorage/AIStorageSelection.hpp"

#include "aistorage/AIStorageScanner.hpp"

namespace veldan {

std::optional<std::string> AIStorageSelection::select(const AIStorageSnapshot& snapshot,
                                                      const std::string& path) {
    if (needsRefreshAfterMove_) return refreshFirst;
    const AIStorageLocation* location = snapshot.location(path);
    if (location == nullptr) return notMeasured;
    if (!AIStorageScanner::isApprovedCleanupLocation(*location)) return notApproved;
    paths_.insert(path);
    return std::nullopt;
}

std::optional<std::string> AIStorageSelection::selectKind(const AIStorageSnapshot& snapshot,
                                                          AIStorageKind kind) {
    if (needsRefreshAfterMove_) return refreshFirst;
    for (const auto& group : snapshot.groups) {
        for (const auto& location : group.locations) {
            if (location.kind == kind && AIStorageScanner::isApprovedCleanupLocation(location)) {
                paths_.insert(location.path);
            }
        }
    }
    return std::nullopt;
}

std::vector<AIStorageLocation> AIStorageSelection::locations(
    const AIStorageSnapshot& snapshot) const {
    std::vector<AIStorageLocation> out;
    for (const auto& group : snapshot.groups) {
        for (const auto& location : group.locations) {
            if (paths_.contains(location.path)) out.push_back(location);
        }
    }
    return out;
}

void AIStorageSelection::moved() {
    paths_.clear();
    needsRefreshAfterMove_ = true;
}

void AIStorageSelection::scanned() {
    paths_.clear();
    needsRefreshAfterMove_ = false;
}

}  // namespace veldan
