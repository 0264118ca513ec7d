#include "duplicates/DuplicateTrashExecutor.hpp"

#include <string>
#include <utility>

#include "duplicates/DuplicateScanner.hpp"
#include "platform/Paths.hpp"
#include "platform/Trash.hpp"
#include "platform/Uuid.hpp"
#include "scan/SaturatingAdd.hpp"
#include "scan/ScanCancellation.hpp"

namespace veldan {

namespace {

constexpr const char* keepOneCopy = "Keep at least one copy in this group.";
constexpr const char* outsideScope = "This location is outside Veldan\u2019s safe Trash scope.";
constexpr const char* redirectedFolder = "A folder in this path now points somewhere else.";
constexpr const char* fileChanged = "This file changed or can no longer be read. Scan again.";
constexpr const char* noKeeper = "No unchanged verified copy remains. Scan again.";
constexpr const char* changedWhileChecking =
    "This file changed while its matching copy was checked. Scan again.";
constexpr const char* movedDetail = "Moved to Trash";

// A full hash that only a change of the file can stop: the move is never cancelled
// half-way through a check.
std::optional<platform::Sha256Digest> fullDigest(const DuplicateFile& file) {
    const ScanCancellation neverCancelled;
    return DuplicateScanner::hash(file, false, neverCancelled);
}

// The Trash's own last checks, right before its rename: the folders on the way are still
// no links, the file is still the one verified (birth time included, as inode numbers
// come back) and unedited, and no file system is mounted on it. Refusals this executor
// has words for get them; the others keep the Trash's sentence.
DuplicateTrashOutcome moveToTrash(const DuplicateFile& file) {
    const platform::ItemIdentity identity{file.device,
                                          file.inode,
                                          {file.createdSeconds, file.createdNanoseconds},
                                          {file.modifiedSeconds, file.modifiedNanoseconds},
                                          {file.changedSeconds, file.changedNanoseconds}};
    const auto trashed = platform::Trash::moveItem(platform::standardizePath(file.path),
                                                   {identity, platform::IdentityCheck::unchanged});
    switch (trashed.refusal) {
        case platform::TrashRefusal::none:
            return {file.path, true, movedDetail};
        case platform::TrashRefusal::redirected:
            return {file.path, false, redirectedFolder};
        case platform::TrashRefusal::missing:
        case platform::TrashRefusal::changed:
            return {file.path, false, changedWhileChecking};
        default:
            return {file.path, false, trashed.reason};
    }
}

// The checks of one selected file, in their order of precedence; the first failure is
// the outcome and the file is not touched.
DuplicateTrashOutcome handle(const DuplicateGroup& group, const DuplicateFile& file,
                             const std::vector<DuplicateFile>& unselected,
                             std::optional<DuplicateFile>& cachedKeeper, const std::string& scope,
                             const DuplicateTrashExecutor::BeforeMove& beforeMove) {
    if (unselected.empty()) return {file.path, false, keepOneCopy};
    if (DuplicateSelection::finderOnlyReason(file, scope)) return {file.path, false, outsideScope};
    const std::string standardized = platform::standardizePath(file.path);
    if (platform::standardizePath(platform::resolveSymlinks(standardized)) != standardized) {
        return {file.path, false, redirectedFolder};
    }
    const auto digest = fullDigest(file);
    if (!digest || *digest != group.digest) return {file.path, false, fileChanged};
    if (!DuplicateTrashExecutor::hasVerifiedKeeper(unselected, cachedKeeper, group.digest)) {
        return {file.path, false, noKeeper};
    }
    if (!DuplicateScanner::isUnchanged(file)) return {file.path, false, changedWhileChecking};
    if (beforeMove) beforeMove(file);
    return moveToTrash(file);
}

}  // namespace

DuplicateTrashExecutor::DuplicateTrashExecutor(ChangedPathsSink changedPaths, BeforeMove beforeMove)
    : changedPaths_(std::move(changedPaths)), beforeMove_(std::move(beforeMove)) {}

DuplicateTrashReport DuplicateTrashExecutor::run(const DuplicateScanResult& result,
                                                 const DuplicatePathSet& selectedPaths,
                                                 const Progress& progress) const {
    DuplicateTrashReport report;
    report.id = platform::randomUuid();
    int64_t total = 0;
    for (const auto& group : result.groups) {
        for (const auto& file : group.files)
            total += selectedPaths.contains(file.path) ? 1 : 0;
    }
    int64_t done = 0;
    std::vector<std::string> moved;
    for (const auto& group : result.groups) {
        std::vector<DuplicateFile> unselected;
        for (const auto& file : group.files) {
            if (!selectedPaths.contains(file.path)) unselected.push_back(file);
        }
        std::optional<DuplicateFile> cachedKeeper;
        for (const auto& file : group.files) {
            if (!selectedPaths.contains(file.path)) continue;
            auto outcome = handle(group, file, unselected, cachedKeeper, result.scope, beforeMove_);
            if (outcome.moved) {
                report.logicalBytesMoved = saturatingAdd(report.logicalBytesMoved, file.bytes);
                moved.push_back(file.path);
            }
            report.outcomes.push_back(std::move(outcome));
            if (progress) progress(++done, total);
        }
    }
    if (!moved.empty() && changedPaths_) changedPaths_(moved);
    return report;
}

bool DuplicateTrashExecutor::hasVerifiedKeeper(const std::vector<DuplicateFile>& files,
                                               std::optional<DuplicateFile>& cached,
                                               const platform::Sha256Digest& digest) {
    if (cached && DuplicateScanner::isUnchanged(*cached)) return true;
    cached.reset();
    for (const auto& file : files) {
        const auto keeperDigest = fullDigest(file);
        if (keeperDigest && *keeperDigest == digest) {
            cached = file;
            return true;
        }
    }
    return false;
}

}  // namespace veldan
