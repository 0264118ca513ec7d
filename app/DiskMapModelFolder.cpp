// Work on one folder of the map: exploring it, and measuring it again in place.

#include "app/DiskMapModel.hpp"
#include "app/FolderRescan.hpp"
#include "cache/ScanCache.hpp"
#include "platform/Paths.hpp"
#include "recommendations/RecommendationBuilder.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan {

struct DiskMapModel::Exploration {
    std::optional<SubtreeScan> folder;
    std::string problem;  // why there is no folder, unless the exploration was stopped
};

struct DiskMapModel::FolderRescanResult {
    std::shared_ptr<const ScanSnapshot> snapshot;  // null: the folder could not be replaced
    std::map<DiskCategory, int64_t> totals;
    std::vector<Recommendation> recommendations;
    std::string problem;  // why there is no snapshot, unless the rescan was stopped
};

void DiskMapModel::explore(const std::string& folderPath, const std::string& name) {
    cancelExploration();
    const std::string path = platform::standardizePath(folderPath);
    exploringPath_ = path;
    exploringName_ = name;
    exploringFolder_ = explorationCache_.find(path, scanGeneration_);
    exploredFolderCount_ = exploringFolder_ ? exploringFolder_->folders : 0;
    exploredFileCount_ = exploringFolder_ ? exploringFolder_->files : 0;
    if (exploringFolder_) {
        Q_EMIT explorationChanged();
        return;
    }
    auto token = std::make_shared<ScanCancellation>();
    explorationCancellation_ = token;
    Q_EMIT explorationChanged();
    updateBackgroundActivity();

    const int64_t generation = scanGeneration_;
    tasks_.run(
        [this, token, path] {
            auto progress = [this, token](const std::string&, int64_t folders, int64_t files) {
                tasks_.toReceiver([this, token, folders, files] {
                    if (explorationCancellation_ != token) return;
                    exploredFolderCount_ = folders;
                    exploredFileCount_ = files;
                    Q_EMIT explorationChanged();
                });
            };
            Exploration answer{DiskScanner().scanSubtree(path, *token, progress), {}};
            if (!answer.folder && !token->cancelled()) {
                answer.problem = DiskScanner::rootProblem(path).value_or(
                    "Veldan could not measure this folder. Scan again.");
            }
            return answer;
        },
        [this, token, path, generation](Exploration answer) {
            if (explorationCancellation_ != token) return;
            explorationCancellation_.reset();
            updateBackgroundActivity();
            if (!answer.folder) {
                setScanError(answer.problem);
                exploringPath_.clear();
                exploringName_.clear();
                Q_EMIT explorationChanged();
                return;
            }
            auto folder = std::make_shared<const SubtreeScan>(std::move(*answer.folder));
            explorationCache_.remember(path, generation, folder);
            exploringFolder_ = std::move(folder);
            exploredFolderCount_ = exploringFolder_->folders;
            exploredFileCount_ = exploringFolder_->files;
            Q_EMIT explorationChanged();
        });
}

void DiskMapModel::cancelExploration() {
    const bool wasExploring = isExploring();
    if (explorationCancellation_) explorationCancellation_->cancel();
    explorationCancellation_.reset();
    if (exploringPath_.empty() && !exploringFolder_) return;
    exploringPath_.clear();
    exploringName_.clear();
    exploringFolder_.reset();
    exploredFolderCount_ = 0;
    exploredFileCount_ = 0;
    Q_EMIT explorationChanged();
    if (wasExploring) updateBackgroundActivity();
}

void DiskMapModel::rescanFolder(const std::string& folderPath) {
    if (!snapshot_ || isScanning_ || isStartRefused()) return;
    cancelFolderRescan();
    const std::string path = platform::standardizePath(folderPath);
    auto token = std::make_shared<ScanCancellation>();
    folderRescanCancellation_ = token;
    rescanningFolder_ = path;
    Q_EMIT folderRescanChanged();
    updateBackgroundActivity();

    tasks_.run(
        [token, path, map = snapshot_] {
            FolderRescanResult result;
            auto scanned = DiskScanner().scan(path, *token);
            if (!scanned) {
                if (!token->cancelled()) {
                    result.problem =
                        DiskScanner::rootProblem(path).value_or(ScanStartCheck::changedDuringScan);
                }
                return result;
            }
            auto updated = replacingFolder(*map, scanned->snapshot);
            if (!updated) {
                result.problem = folderNotOnMapError;
                return result;
            }
            result.totals = updated->root.categoryTotals();
            result.recommendations = RecommendationBuilder::build(updated->root.path, *updated);
            result.snapshot = std::make_shared<const ScanSnapshot>(std::move(*updated));
            return result;
        },
        [this, token, map = snapshot_](FolderRescanResult result) {
            if (folderRescanCancellation_ != token) return;
            cancelFolderRescan();
            if (snapshot_ != map) return;  // another map is shown now
            if (!result.snapshot) {
                setScanError(result.problem);
                return;
            }
            const auto selected = selectedRecommendations();
            cancelExploration();
            explorationCache_.clear();
            showSnapshot(result.snapshot, std::move(result.totals),
                         std::move(result.recommendations), isShowingCachedScan_);
            std::set<std::string> kept;
            for (const auto& recommendation : recommendations_) {
                for (const auto& old : selected) {
                    if (old.id == recommendation.id) kept.insert(old.id);
                }
            }
            publish(selectedIDs_, std::move(kept), &DiskMapModel::selectedIDsChanged);
            ScanCache::shared().save(result.snapshot, result.snapshot->root.path);
        });
}

void DiskMapModel::cancelFolderRescan() {
    if (!folderRescanCancellation_) return;
    folderRescanCancellation_->cancel();
    folderRescanCancellation_.reset();
    rescanningFolder_.clear();
    Q_EMIT folderRescanChanged();
    updateBackgroundActivity();
}

}  // namespace veldan
