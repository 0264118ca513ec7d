// The life of a scan: starting (with its refusals, in order), the worker, completion,
// stopping, the recent folders and the saved maps.

#include <cstdlib>
#include <limits>

#include "activity/ActivityTracker.hpp"
#include "activity/DownloadInventory.hpp"
#include "activity/WidgetDigest.hpp"
#include "app/DiskMapModel.hpp"
#include "app/RecentFolders.hpp"
#include "app/ScanJob.hpp"
#include "app/ScanRecording.hpp"
#include "cache/ScanCache.hpp"
#include "cache/ScanSessionCache.hpp"
#include "platform/Paths.hpp"
#include "platform/Preferences.hpp"
#include "recommendations/RecommendationBuilder.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan {

struct DiskMapModel::ScanResult {
    std::shared_ptr<const ScanOutcome> outcome;  // null when stopped or unreadable
    std::map<DiskCategory, int64_t> totals;
    std::vector<Recommendation> recommendations;
    std::optional<uint64_t> sessionGeneration;
    std::optional<std::vector<TrackedDownload>> downloads;  // for a scan of the startup disk
    bool rootUnchanged = false;
    std::string failure;  // why there is no outcome, unless the scan was stopped
};

struct DiskMapModel::Restore {
    std::string asked;
    std::string used;  // `asked`, or the startup disk when `asked` is gone
    bool askedExists = false;
    std::shared_ptr<const ScanSnapshot> snapshot;
    std::map<DiskCategory, int64_t> totals;
    std::vector<Recommendation> recommendations;
    bool needsRefresh = false;
};

bool DiskMapModel::isStartRefused() {
    // Moving duplicates is checked first: it is the one that must not be interrupted
    // even when a cleanup runs as well.
    if (isMovingDuplicates_) {
        setScanError(movingDuplicatesRefusal);
        return true;
    }
    if (isCleaning_) {
        setScanError(cleaningRefusal);
        return true;
    }
    return false;
}

void DiskMapModel::scan(const std::string& path,
                        std::optional<std::vector<Recommendation>> preservingSelection) {
    if (!hasStarted_) startupChoiceWithdrawn_ = true;
    if (isStartRefused()) return;
    recentLookupToken_.reset();
    publish(isRestoringScan_, false, &DiskMapModel::isRestoringScanChanged);
    setLocationNotice(std::nullopt);
    refreshFullDiskAccess();

    // Whether the folder is there, and which folder it is, is asked off this thread; the
    // start goes on when the answer comes back and no later start or restore replaced it.
    const std::string standardized = platform::absolutePath(path);
    const uint64_t token = newToken();
    startToken_ = token;
    tasks_.run(
        [standardized, seam = options_.seams.beforeRootIdentity] {
            ScanStartCheck::prepareOwnFolders();
            return ScanStartCheck::check(standardized, seam);
        },
        [this, token, standardized,
         selection = std::move(preservingSelection)](ScanStartCheck::Answer answer) mutable {
            if (startToken_ != token) return;
            startToken_.reset();
            if (isStartRefused()) return;
            if (!answer.root) {
                setScanError(answer.refusal);
                return;
            }
            beginScan(standardized, *answer.root, std::move(selection));
        });
}

void DiskMapModel::beginScan(const std::string& path, const ScanRoot& root,
                             std::optional<std::vector<Recommendation>> preservingSelection) {
    restoreToken_.reset();
    publish(isRestoringScan_, false, &DiskMapModel::isRestoringScanChanged);
    cancelDailyTracking();  // a scan always wins over the daily check

    if (isScanning_) cancelScan();
    clearDuplicates();
    setDuplicateScopeOverride(std::nullopt);
    cancelFolderRescan();
    cancelExploration();
    explorationCache_.clear();

    if (scanGeneration_ == std::numeric_limits<int64_t>::max()) std::abort();
    publish(scanGeneration_, scanGeneration_ + 1, &DiskMapModel::scanGenerationChanged);
    publish(selectedURL_, path, &DiskMapModel::selectedURLChanged);
    writePreference([path] { platform::Preferences::setString(lastScanPathKey, path); });
    rememberFolder(path);

    ScanProgressState progress;
    if (snapshot_ && snapshot_->root.path == path) {
        progress.earlierFolders = snapshot_->visitedFolderCount;
        progress.earlierFiles = snapshot_->visitedFileCount;
    }
    scanStartedAt_ = std::chrono::system_clock::now();
    isScanning_ = true;
    Q_EMIT isScanningChanged();
    updateBackgroundActivity();

    setScanError(std::nullopt);
    publish(wasScanStopped_, false, &DiskMapModel::wasScanStoppedChanged);
    showSnapshot(nullptr, {}, {}, false);
    publish(scanPreview_, {}, &DiskMapModel::scanPreviewChanged);
    publish(scanProgress_, progress, &DiskMapModel::scanProgressChanged);
    mappedSessionGeneration_.reset();
    publish(mapNeedsRefresh_, false, &DiskMapModel::mapNeedsRefreshChanged);
    refreshVolume();
    recording_ = std::make_shared<ScanRecording>(root.path);

    auto token = std::make_shared<ScanCancellation>();
    cancellation_ = token;
    tasks_.run(
        [this, token, path, root, recording = recording_, seam = options_.seams.scanFinished] {
            // Progress and partial trees hop to the model, which applies them only while
            // this scan is still the current one.
            ScanJobOptions job;
            job.useSavedMaps = false;  // saved at completion, once the folder is proven
            job.progress = [this, token, recording](const std::string& item, int64_t folders,
                                                    int64_t files) {
                recording->heartbeat();
                tasks_.toReceiver([this, token, item, folders, files] {
                    if (cancellation_ != token || token->cancelled()) return;
                    ScanProgressState state = scanProgress_;
                    state.currentItem = item;
                    state.folders = folders;
                    state.files = files;
                    publish(scanProgress_, std::move(state), &DiskMapModel::scanProgressChanged);
                });
            };
            job.partial = [this, token](const DiskNode& partialRoot) {
                auto preview = std::make_shared<const DiskNode>(partialRoot);
                tasks_.toReceiver([this, token, preview] {
                    if (cancellation_ != token || token->cancelled()) return;
                    publish(scanPreview_, preview, &DiskMapModel::scanPreviewChanged);
                });
            };

            ScanResult result;
            result.outcome = ScanJob::run(path, *token, job);
            if (result.outcome) {
                result.totals = result.outcome->root().categoryTotals();
                result.recommendations =
                    RecommendationBuilder::build(path, result.outcome->snapshot);
                result.sessionGeneration = ScanSessionCache::shared().flushedGeneration(path);
                if (root.path == startupDiskURL) {
                    result.downloads = DownloadInventory::collect(std::chrono::system_clock::now());
                }
            } else if (token->cancelled()) {
                // The saved map may well be what made the user stop: it no longer shows
                // what is on the disk.
                ScanCache::shared().markStale(path);
            } else {
                result.failure =
                    DiskScanner::rootProblem(path).value_or(ScanStartCheck::changedDuringScan);
            }
            if (seam) seam();
            result.rootUnchanged = ScanStartCheck::isUnchanged(path, root);
            return result;
        },
        [this, token, path, selection = std::move(preservingSelection)](ScanResult result) {
            completeScan(token, path, std::move(result), selection);
        });
}

void DiskMapModel::completeScan(
    const std::shared_ptr<ScanCancellation>& token, const std::string& path, ScanResult result,
    const std::optional<std::vector<Recommendation>>& preservingSelection) {
    if (cancellation_ != token || token->cancelled()) return;

    if (!result.rootUnchanged || !result.outcome) {
        result.rootUnchanged ? recording_->stopped() : recording_->changedDuringScan();
        recording_.reset();
        isScanning_ = false;
        Q_EMIT isScanningChanged();
        updateBackgroundActivity();
        setScanError(result.rootUnchanged ? result.failure : ScanStartCheck::changedDuringScan);
        return;
    }

    const std::shared_ptr<const ScanSnapshot> snapshot(result.outcome, &result.outcome->snapshot);
    showSnapshot(snapshot, std::move(result.totals), std::move(result.recommendations), false);
    mappedSessionGeneration_ = result.sessionGeneration;

    if (preservingSelection) {
        std::set<std::string> kept;
        for (const auto& recommendation : recommendations_) {
            for (const auto& selected : *preservingSelection) {
                if (selected.id == recommendation.id) kept.insert(recommendation.id);
            }
        }
        const bool someChanged = kept.size() < preservingSelection->size();
        publish(selectedIDs_, std::move(kept), &DiskMapModel::selectedIDsChanged);
        if (someChanged) setLocationNotice(selectionChangedNotice);
    }

    isScanning_ = false;
    Q_EMIT isScanningChanged();
    updateBackgroundActivity();
    publish(wasScanStopped_, false, &DiskMapModel::wasScanStoppedChanged);
    ScanCache::shared().save(snapshot, path);
    refreshVolume();
    // The digest's figures read the volume, and a scan of the startup disk is recorded in
    // the history with its Downloads list: both off this thread.
    tasks_.start([recording = std::move(recording_), snapshot, recommendations = recommendations_,
                  downloads = std::move(result.downloads)]() mutable {
        recording->finished(*snapshot, recommendations, std::move(downloads));
    });
}

void DiskMapModel::showSnapshot(std::shared_ptr<const ScanSnapshot> snapshot,
                                std::map<DiskCategory, int64_t> totals,
                                std::vector<Recommendation> recommendations, bool cached) {
    const bool replaced = snapshot_ != snapshot || isShowingCachedScan_ != cached;
    snapshot_ = std::move(snapshot);
    isShowingCachedScan_ = cached;
    snapshotCategoryBytes_ = std::move(totals);
    if (replaced) {
        ++mapRevision_;
        Q_EMIT snapshotChanged();
    }
    publish(recommendations_, std::move(recommendations), &DiskMapModel::recommendationsChanged);
    publish(selectedIDs_, {}, &DiskMapModel::selectedIDsChanged);
}

void DiskMapModel::cancelScan() {
    startToken_.reset();  // a start still being checked is stopped too
    if (!isScanning_) return;
    cancellation_->cancel();
    recording_->stopped();
    recording_.reset();
    isScanning_ = false;
    Q_EMIT isScanningChanged();
    publish(wasScanStopped_, true, &DiskMapModel::wasScanStoppedChanged);
    updateBackgroundActivity();
}

void DiskMapModel::chooseFolder() {
    if (isCleaning_ || isMovingDuplicates_ || !panels_) return;
    panels_->chooseFolderToScan([this](std::optional<std::string> path) {
        if (path) scan(*path);
    });
}

void DiskMapModel::scanRecent(const std::string& path) {
    const uint64_t token = newToken();
    recentLookupToken_ = token;
    tasks_.run([path] { return ScanStartCheck::isFolder(path); },
               [this, token, path](bool exists) {
                   if (recentLookupToken_ != token) return;
                   recentLookupToken_.reset();
                   if (exists) {
                       openSavedScan(path, true);
                   } else {
                       setScanError(recentUnavailablePrefix + path);
                   }
               });
}

void DiskMapModel::openSavedScan(const std::string& path, bool fromRecentMenu) {
    if (!hasStarted_) startupChoiceWithdrawn_ = true;
    if (isScanning_) cancelScan();
    startToken_.reset();
    cancelDuplicateScan();
    cancelFolderRescan();
    cancelExploration();
    explorationCache_.clear();
    snapshotCategoryBytes_.clear();
    const uint64_t token = newToken();
    restoreToken_ = token;
    publish(isRestoringScan_, true, &DiskMapModel::isRestoringScanChanged);

    tasks_.run(
        [asked = platform::absolutePath(path)] {
            Restore restore;
            restore.asked = asked;
            restore.askedExists = ScanStartCheck::isFolder(asked);
            restore.used = restore.askedExists ? asked : startupDiskURL;
            if (auto loaded = ScanCache::shared().load(restore.used)) {
                auto snapshot = std::make_shared<const ScanSnapshot>(std::move(*loaded));
                restore.totals = snapshot->root.categoryTotals();
                restore.recommendations = RecommendationBuilder::build(restore.used, *snapshot);
                restore.needsRefresh = ScanCache::shared().needsRefresh(*snapshot, restore.used);
                restore.snapshot = std::move(snapshot);
            }
            return restore;
        },
        [this, token, fromRecentMenu](Restore restore) {
            if (restoreToken_ != token) return;
            publish(isRestoringScan_, false, &DiskMapModel::isRestoringScanChanged);
            if (fromRecentMenu && !restore.askedExists) {
                // The folder was there when the menu was used; it went away since.
                restoreToken_.reset();
                setScanError(recentUnavailablePrefix + restore.asked);
                return;
            }
            const std::string asked = restore.asked;
            const std::string used = restore.used;
            if (restore.snapshot) {
                showCachedScan(std::move(restore));
            } else {
                restoreToken_.reset();
                scan(used);
            }
            if (used != asked) {
                setLocationNotice(lastFolderUnavailablePrefix + asked +
                                  lastFolderUnavailableSuffix);
            }
        });
}

void DiskMapModel::showCachedScan(Restore restore) {
    publish(selectedURL_, restore.used, &DiskMapModel::selectedURLChanged);
    setScanError(std::nullopt);
    publish(wasScanStopped_, false, &DiskMapModel::wasScanStoppedChanged);
    publish(scanPreview_, {}, &DiskMapModel::scanPreviewChanged);
    showSnapshot(std::move(restore.snapshot), std::move(restore.totals),
                 std::move(restore.recommendations), true);
    publish(mapNeedsRefresh_, restore.needsRefresh, &DiskMapModel::mapNeedsRefreshChanged);
    writePreference(
        [path = restore.used] { platform::Preferences::setString(lastScanPathKey, path); });
    rememberFolder(restore.used);
    clearDuplicates();
    restoreToken_.reset();
    mappedSessionGeneration_.reset();
    refreshVolume();
    tasks_.start([scope = restore.used, snapshot = snapshot_, recommendations = recommendations_,
                  outdated = mapNeedsRefresh_] {
        WidgetDigest::save(
            WidgetDigest::forMap(scope, *snapshot, recommendations, true, outdated,
                                 ActivityTracker::shared().history().totalMovedToTrashBytes));
    });
}

}  // namespace veldan
