// The recommendation selection and the cleanup of the selected safe items.

#include "app/CleanupAftermath.hpp"
#include "app/DiskMapModel.hpp"
#include "recommendations/CleanupExecutor.hpp"

namespace veldan {

struct DiskMapModel::CleanupRun {
    CleanupReport report;
    // What changed on the disk: the moved folders, and the caches a tool cleaned.
    std::vector<std::string> changedPaths;
};

void DiskMapModel::setRecommendationSelected(const std::string& id, bool selected) {
    auto ids = selectedIDs_;
    if (selected) {
        for (const auto& recommendation : recommendations_) {
            if (recommendation.id == id) ids.insert(id);
        }
    } else {
        ids.erase(id);
    }
    publish(selectedIDs_, std::move(ids), &DiskMapModel::selectedIDsChanged);
}

void DiskMapModel::selectAllSafe() {
    auto ids = selectedIDs_;
    for (const auto& recommendation : recommendations_) {
        if (recommendation.kind == RecommendationKind::safe) ids.insert(recommendation.id);
    }
    publish(selectedIDs_, std::move(ids), &DiskMapModel::selectedIDsChanged);
}

void DiskMapModel::clearSelection() {
    publish(selectedIDs_, {}, &DiskMapModel::selectedIDsChanged);
}

std::vector<Recommendation> DiskMapModel::selectedRecommendations() const {
    std::vector<Recommendation> selected;
    for (const auto& recommendation : recommendations_) {
        if (selectedIDs_.count(recommendation.id) > 0) selected.push_back(recommendation);
    }
    return selected;
}

void DiskMapModel::startCleanup() {
    if (isCleaning_ || isScanning_ || !snapshot_) return;
    std::vector<Recommendation> items;
    for (auto& recommendation : selectedRecommendations()) {
        if (recommendation.kind == RecommendationKind::safe) items.push_back(recommendation);
    }
    if (items.empty()) return;

    isCleaning_ = true;
    cleanupProgress_ = 0;
    cleanupTotal_ = static_cast<int64_t>(items.size());
    cleanupCurrentTitle_.clear();
    cleanupReport_.reset();
    Q_EMIT cleanupChanged();
    updateBackgroundActivity();

    auto token = std::make_shared<ScanCancellation>();
    cleanupCancellation_ = token;
    tasks_.run(
        [this, token, items = std::move(items), snapshot = snapshot_,
         seam = options_.seams.beforeCleanup] {
            if (seam) seam();
            auto settings = CleanupExecutorSettings::standard();
            settings.changedPaths = CleanupAftermath::changedPathsSink();
            settings.cancellation = token.get();
            int64_t started = 0;
            CleanupRun run;
            run.report =
                CleanupExecutor(std::move(settings)).run(items, [&](const Recommendation& item) {
                    ++started;
                    tasks_.toReceiver([this, started, title = item.title] {
                        cleanupProgress_ = started - 1;
                        cleanupCurrentTitle_ = title;
                        Q_EMIT cleanupChanged();
                    });
                });
            CleanupAftermath::recordCleanupReport(run.report, snapshot->discoveredDirectories);
            for (const auto& result : run.report.results) {
                auto& changed = run.changedPaths;
                changed.insert(changed.end(), result.movedPaths.begin(), result.movedPaths.end());
                if (result.succeeded && result.totalFolders == 0) {
                    for (const auto& item : items) {
                        if (item.id == result.id) {
                            changed.insert(changed.end(), item.paths.begin(), item.paths.end());
                        }
                    }
                }
            }
            return run;
        },
        [this](CleanupRun run) { finishCleanup(std::move(run)); });
}

void DiskMapModel::finishCleanup(CleanupRun run) {
    cleanupCancellation_.reset();
    isCleaning_ = false;
    cleanupProgress_ = cleanupTotal_;
    cleanupCurrentTitle_.clear();
    // What was cleaned is no longer there to select; what stayed keeps its check mark.
    auto ids = selectedIDs_;
    for (const auto& result : run.report.results) {
        if (result.succeeded) ids.erase(result.id);
    }
    cleanupReport_ = std::move(run.report);
    Q_EMIT cleanupChanged();
    updateBackgroundActivity();
    publish(selectedIDs_, std::move(ids), &DiskMapModel::selectedIDsChanged);
    markMapNeedsRefresh(run.changedPaths);
    refreshVolume();
}

void DiskMapModel::cancelCleanup() {
    if (cleanupCancellation_) cleanupCancellation_->cancel();
}

void DiskMapModel::dismissCleanupReport() {
    if (!cleanupReport_) return;
    cleanupReport_.reset();
    Q_EMIT cleanupChanged();
}

}  // namespace veldan
