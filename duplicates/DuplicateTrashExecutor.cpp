#include "duplicates/DuplicateTrashExecutor.hpp"

#include <cerrno>
#include <limits>
#include <string>
#include <utility>

#include "duplicates/DuplicateScanner.hpp"
#include "platform/DirectoryWithoutLinks.hpp"
#include "platform/ErrorText.hpp"
#include "platform/Paths.hpp"
#include "platform/Trash.hpp"
#include "platform/UniqueFd.hpp"
#include "platform/Uuid.hpp"
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

int64_t saturatingAdd(int64_t a, int64_t b) {
    int64_t sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<int64_t>::max() : sum;
}

// A full hash that only a change of the file can stop: the move is never cancelled
// half-way through a check.
std::optional<platform::Sha256Digest> fullDigest(const DuplicateFile& file) {
    const ScanCancellation neverCancelled;
    return DuplicateScanner::hash(file, false, neverCancelled);
}

DuplicateTrashOutcome moveToTrash(const DuplicateFile& file) {
    DuplicateTrashOutcome outcome{file.path, false, {}};
    const std::string path = platform::standardizePath(file.path);
    const std::string parent = platform::parentPath(path);
    int error = 0;
    const platform::UniqueFd parentFd = platform::openDirectoryWithoutLinks(parent, error);
    if (!parentFd) {
        // A component that became a link (or a file) is what the path check exists for.
        if (error == ELOOP || error == ENOTDIR) {
            outcome.detail = redirectedFolder;
        } else {
            outcome.detail = "Veldan could not open the folder holding this file (" +
                             platform::errorText(error) + ").";
        }
        return outcome;
    }
    const platform::ItemIdentity identity{file.device,
                                          file.inode,
                                          {file.createdSeconds, file.createdNanoseconds},
                                          {file.modifiedSeconds, file.modifiedNanoseconds},
                                          {file.changedSeconds, file.changedNanoseconds}};
    const auto trashed = platform::Trash::moveItem(
        parentFd.get(), parent, std::string(platform::lastPathComponent(path)), {identity});
    outcome.moved = trashed.moved;
    outcome.detail = trashed.moved ? movedDetail : trashed.reason;
    return outcome;
}

// The checks of one selected file, in their order of precedence; the first failure is
// the outcome and the file is not touched.
DuplicateTrashOutcome handle(const DuplicateGroup& group, const DuplicateFile& file,
                             const std::vector<DuplicateFile>& unselected,
                             std::optional<DuplicateFile>& cachedKeeper, const std::string& scope) {
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
    return moveToTrash(file);
}

}  // namespace

DuplicateTrashExecutor::DuplicateTrashExecutor(ChangedPathsSink changedPaths)
    : changedPaths_(std::move(changedPaths)) {}

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
            auto outcome = handle(group, file, unselected, cachedKeeper, result.scope);
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
