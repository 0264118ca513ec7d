#include "aistorage/AIStorageCleanupExecutor.hpp"

#include <utility>

#include "aistorage/AIStorageScanner.hpp"
#include "aistorage/AIStorageSelection.hpp"
#include "platform/Paths.hpp"
#include "platform/Trash.hpp"
#include "platform/Uuid.hpp"
#include "scan/ScanFolderIdentity.hpp"

namespace veldan {

namespace {

constexpr const char* overlapsAdded = "This location overlaps a folder you added for tracking.";
constexpr const char* changedSinceScan =
    "This location changed or could not be read. Refresh and review it again.";
constexpr const char* pointsElsewhere =
    "A folder in this path now points elsewhere. Refresh and review it again.";
constexpr const char* changedDuringCheck =
    "This location changed during verification. Refresh and review it again.";
constexpr const char* overlapsAddedNow =
    "This location now overlaps a folder you added for tracking.";
constexpr const char* movedDetail = "Moved to Trash";

// The shared verified move: the parent is opened from "/" without links, and right before
// the rename the folder must be unchanged since step 1 and hold no mount point.
std::string moveToTrash(const std::string& path, const ScanFolderIdentity& identity, bool& moved) {
    const auto outcome =
        platform::Trash::moveItem(path, {identity.item(), platform::IdentityCheck::unchanged});
    moved = outcome.moved;
    switch (outcome.refusal) {
        case platform::TrashRefusal::none:
            return movedDetail;
        case platform::TrashRefusal::redirected:
            return pointsElsewhere;
        case platform::TrashRefusal::missing:
        case platform::TrashRefusal::changed:
            return changedDuringCheck;
        default:
            return outcome.reason;
    }
}

}  // namespace

AIStorageCleanupExecutor::AIStorageCleanupExecutor(ChangedPathsSink changedPaths)
    : changedPaths_(std::move(changedPaths)) {}

bool AIStorageCleanupExecutor::overlapsTrackedLocation(
    const std::string& path, const std::vector<std::string>& protectedPaths) {
    if (protectedPaths.empty()) return false;
    const std::string standardized = platform::standardizePath(path);
    const std::string resolved = platform::resolveSymlinks(standardized);
    for (const auto& tracked : protectedPaths) {
        const std::string folder = platform::standardizePath(tracked);
        for (const std::string& candidate : {standardized, resolved}) {
            if (platform::isSameOrUnder(candidate, folder) ||
                platform::isSameOrUnder(folder, candidate)) {
                return true;
            }
        }
    }
    return false;
}

AIStorageCleanupMove AIStorageCleanupExecutor::handle(
    const AIStorageLocation& location, const std::vector<std::string>& protectedPaths,
    const std::function<void()>& moving) const {
    AIStorageCleanupMove move{location.path, location.label, false, {}, location.bytes};
    const std::string path = platform::standardizePath(location.path);
    const auto identity = ScanFolderIdentity::read(path);
    const auto refuse = [&](const char* detail) {
        move.detail = detail;
        return move;
    };
    if (overlapsTrackedLocation(path, protectedPaths)) return refuse(overlapsAdded);
    if (!AIStorageScanner::isApprovedCleanupLocation(location))
        return refuse(AIStorageSelection::notApproved);
    if (!AIStorageScanner::stillMatches(location)) return refuse(changedSinceScan);
    if (platform::standardizePath(platform::resolveSymlinks(path)) != path) {
        return refuse(pointsElsewhere);
    }
    if (beforeFinalCheck) beforeFinalCheck(location);
    const auto again = ScanFolderIdentity::read(path);
    if (!identity || !again || *again != *identity) return refuse(changedDuringCheck);
    if (overlapsTrackedLocation(path, protectedPaths)) return refuse(overlapsAddedNow);
    moving();
    move.detail = moveToTrash(path, *identity, move.moved);
    return move;
}

AIStorageCleanupReport AIStorageCleanupExecutor::run(
    const std::vector<AIStorageLocation>& locations, const std::vector<std::string>& protectedPaths,
    const Progress& progress) const {
    AIStorageCleanupReport report;
    report.id = platform::randomUuid();
    const auto total = static_cast<int64_t>(locations.size());
    std::vector<std::string> moved;
    for (const auto& location : locations) {
        const auto done = static_cast<int64_t>(report.moves.size());
        if (progress) progress(done, total, AIStorageCleanupPhase::checking);
        auto move = handle(location, protectedPaths, [&] {
            if (progress) progress(done, total, AIStorageCleanupPhase::moving);
        });
        if (move.moved) moved.push_back(move.path);
        report.moves.push_back(std::move(move));
        if (progress) progress(done + 1, total, AIStorageCleanupPhase::moving);
    }
    if (progress) progress(total, total, AIStorageCleanupPhase::finished);
    if (!moved.empty() && changedPaths_) changedPaths_(moved);
    return report;
}

}  // namespace veldan
