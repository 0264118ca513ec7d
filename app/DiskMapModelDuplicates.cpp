// The duplicate finder's state: the search, the selection rules and filter, and the
// verified move of the checked copies to the Trash.

#include "app/CleanupAftermath.hpp"
#include "app/DiskMapModel.hpp"
#include "app/DuplicateResultUpdate.hpp"
#include "duplicates/DuplicateScanner.hpp"
#include "duplicates/DuplicateTrashExecutor.hpp"
#include "platform/Paths.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan {

namespace {

struct DuplicateSearch {
    std::optional<DuplicateScanResult> result;
    std::string problem;  // why there is no result, unless the search was stopped
};

}  // namespace

void DiskMapModel::setDuplicateResult(std::shared_ptr<const DuplicateScanResult> result) {
    duplicateResult_ = std::move(result);
    Q_EMIT duplicateResultChanged();
}

void DiskMapModel::setSelectedDuplicatePaths(DuplicatePathSet paths) {
    publish(selectedDuplicatePaths_, std::move(paths),
            &DiskMapModel::selectedDuplicatePathsChanged);
}

void DiskMapModel::setDuplicateScopeOverride(std::optional<std::string> scope) {
    if (scope) scope = platform::absolutePath(*scope);
    publish(duplicateScopeOverride_, std::move(scope),
            &DiskMapModel::duplicateScopeOverrideChanged);
}

void DiskMapModel::findDuplicates() {
    if (isMovingDuplicates_) return;
    cancelDuplicateScan();
    auto token = std::make_shared<ScanCancellation>();
    duplicateCancellation_ = token;
    isFindingDuplicates_ = true;
    duplicatePhase_ = DuplicateScanPhase::collecting;
    duplicateProgress_ = 0;
    duplicateProgressTotal_ = 0;
    Q_EMIT duplicateSearchChanged();
    duplicateScanError_.reset();
    Q_EMIT duplicateResultChanged();
    updateBackgroundActivity();

    tasks_.run(
        [this, token, scope = duplicateScope()] {
            auto progress = [this, token](DuplicateScanPhase phase, int64_t done, int64_t total) {
                tasks_.toReceiver([this, token, phase, done, total] {
                    if (duplicateCancellation_ != token) return;
                    duplicatePhase_ = phase;
                    duplicateProgress_ = done;
                    duplicateProgressTotal_ = total;
                    Q_EMIT duplicateSearchChanged();
                });
            };
            DuplicateSearch search{DuplicateScanner().scan(scope, *token, progress), {}};
            if (!search.result && !token->cancelled()) {
                search.problem = DiskScanner::rootProblem(scope).value_or(
                    "Veldan couldn\u2019t search this folder for duplicates. Choose another "
                    "folder.");
            }
            return search;
        },
        [this, token](DuplicateSearch search) {
            if (duplicateCancellation_ != token) return;
            duplicateCancellation_.reset();
            isFindingDuplicates_ = false;
            Q_EMIT duplicateSearchChanged();
            updateBackgroundActivity();
            if (!search.result) {
                duplicateScanError_ = search.problem;
                Q_EMIT duplicateResultChanged();
                return;
            }
            duplicateNeedsRefresh_ = false;
            setSelectedDuplicatePaths({});
            setDuplicateResult(
                std::make_shared<const DuplicateScanResult>(std::move(*search.result)));
        });
}

void DiskMapModel::cancelDuplicateScan() {
    if (!duplicateCancellation_) return;
    duplicateCancellation_->cancel();
    duplicateCancellation_.reset();
    isFindingDuplicates_ = false;
    Q_EMIT duplicateSearchChanged();
    updateBackgroundActivity();
}

void DiskMapModel::clearDuplicates() {
    cancelDuplicateScan();
    setSelectedDuplicatePaths({});
    if (!duplicateResult_ && !duplicateNeedsRefresh_ && !duplicateScanError_) return;
    duplicateNeedsRefresh_ = false;
    duplicateScanError_.reset();
    setDuplicateResult(nullptr);
}

const DuplicateGroup* DiskMapModel::duplicateGroup(const std::string& groupID) const {
    if (!duplicateResult_) return nullptr;
    for (const auto& group : duplicateResult_->groups) {
        if (group.id == groupID) return &group;
    }
    return nullptr;
}

bool DiskMapModel::canSelectDuplicate(const std::string& path) const {
    if (!duplicateResult_) return false;
    for (const auto& group : duplicateResult_->groups) {
        for (const auto& file : group.files) {
            if (file.path != path) continue;
            if (DuplicateSelection::finderOnlyReason(file, duplicateResult_->scope)) return false;
            for (const auto& other : group.files) {
                if (other.path != path && selectedDuplicatePaths_.count(other.path) == 0) {
                    return true;
                }
            }
            return false;
        }
    }
    return false;
}

void DiskMapModel::setDuplicateSelected(const std::string& path, bool selected) {
    auto paths = selectedDuplicatePaths_;
    if (!selected) {
        paths.erase(path);
    } else if (canSelectDuplicate(path)) {
        paths.insert(path);
    }
    setSelectedDuplicatePaths(std::move(paths));
}

void DiskMapModel::keepDuplicateCopy(const std::string& groupID, const std::string& keeperPath) {
    const DuplicateGroup* group = duplicateGroup(groupID);
    if (!group) return;
    for (const auto& keeper : group->files) {
        if (keeper.path != keeperPath) continue;
        auto paths = selectedDuplicatePaths_;
        for (const auto& file : group->files)
            paths.erase(file.path);
        paths.merge(DuplicateSelection::selectExtras(*group, keeper, duplicateResult_->scope));
        setSelectedDuplicatePaths(std::move(paths));
        return;
    }
}

void DiskMapModel::clearDuplicateGroupSelection(const std::string& groupID) {
    const DuplicateGroup* group = duplicateGroup(groupID);
    if (!group) return;
    auto paths = selectedDuplicatePaths_;
    for (const auto& file : group->files)
        paths.erase(file.path);
    setSelectedDuplicatePaths(std::move(paths));
}

void DiskMapModel::smartSelectAllDuplicates() {
    if (!duplicateResult_) return;
    auto paths = selectedDuplicatePaths_;
    for (const auto& group : duplicateResult_->groups) {
        paths.merge(DuplicateSelection::smartSelect(group, duplicateResult_->scope));
    }
    setSelectedDuplicatePaths(std::move(paths));
}

void DiskMapModel::smartSelectShownDuplicates(const std::string& query, int64_t minimumExtraBytes) {
    if (!duplicateResult_) return;
    auto paths = selectedDuplicatePaths_;
    for (const auto& group : visibleDuplicateGroups(query, minimumExtraBytes)) {
        for (const auto& file : group.files)
            paths.erase(file.path);
        paths.merge(DuplicateSelection::smartSelect(group, duplicateResult_->scope));
    }
    setSelectedDuplicatePaths(std::move(paths));
}

const std::vector<DuplicateGroup>& DiskMapModel::visibleDuplicateGroups(const std::string& query,
                                                                        int64_t minimumExtraBytes) {
    static const DuplicateScanResult none;
    return duplicateFilter_.visible(duplicateResult_ ? *duplicateResult_ : none, query,
                                    minimumExtraBytes);
}

int64_t DiskMapModel::duplicatesSelectedOutsideFilter() const {
    return static_cast<int64_t>(selectedDuplicatePaths_.size()) -
           duplicateFilter_.selectedCount(selectedDuplicatePaths_);
}

void DiskMapModel::moveSelectedDuplicatesToTrash() {
    if (isMovingDuplicates_ || !duplicateResult_ || selectedDuplicatePaths_.empty()) return;
    isMovingDuplicates_ = true;
    duplicateTrashProgress_ = 0;
    duplicateTrashTotal_ = 0;
    for (const auto& group : duplicateResult_->groups) {
        for (const auto& file : group.files) {
            duplicateTrashTotal_ += selectedDuplicatePaths_.count(file.path) > 0 ? 1 : 0;
        }
    }
    duplicateTrashReport_.reset();
    Q_EMIT duplicateTrashChanged();
    updateBackgroundActivity();

    tasks_.run(
        [this, result = duplicateResult_, selection = selectedDuplicatePaths_,
         seam = options_.seams.beforeDuplicateMove] {
            if (seam) seam();
            auto progress = [this](int64_t done, int64_t total) {
                tasks_.toReceiver([this, done, total] {
                    duplicateTrashProgress_ = done;
                    duplicateTrashTotal_ = total;
                    Q_EMIT duplicateTrashChanged();
                });
            };
            auto report = DuplicateTrashExecutor(CleanupAftermath::changedPathsSink())
                              .run(*result, selection, progress);
            CleanupAftermath::recordTrash("Duplicate copies", report.logicalBytesMoved,
                                          report.movedCount());
            return report;
        },
        [this](DuplicateTrashReport report) { finishDuplicateMove(std::move(report)); });
}

void DiskMapModel::finishDuplicateMove(DuplicateTrashReport report) {
    const auto moved = report.movedPaths();
    isMovingDuplicates_ = false;
    duplicateTrashProgress_ = duplicateTrashTotal_;
    duplicateTrashReport_ = std::move(report);
    Q_EMIT duplicateTrashChanged();
    updateBackgroundActivity();
    if (moved.empty() || !duplicateResult_) return;

    auto selection = selectedDuplicatePaths_;
    for (const auto& path : moved)
        selection.erase(path);
    setSelectedDuplicatePaths(std::move(selection));
    duplicateNeedsRefresh_ = true;
    setDuplicateResult(
        std::make_shared<const DuplicateScanResult>(withoutMovedCopies(*duplicateResult_, moved)));
    markMapNeedsRefresh({moved.begin(), moved.end()});
    refreshVolume();
}

void DiskMapModel::dismissDuplicateTrashReport() {
    if (!duplicateTrashReport_) return;
    duplicateTrashReport_.reset();
    Q_EMIT duplicateTrashChanged();
}

}  // namespace veldan
