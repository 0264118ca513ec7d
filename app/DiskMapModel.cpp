// Construction, startup, the published-state helpers and the companion checks (access,
// volume, freshness). The scan lifecycle is in DiskMapModelScan.cpp.

#include "app/DiskMapModel.hpp"

#include <QCoreApplication>

#include "activity/ActivityTracker.hpp"
#include "activity/DownloadInventory.hpp"
#include "activity/WidgetDigest.hpp"
#include "app/CleanupAftermath.hpp"
#include "app/DailyCheck.hpp"
#include "app/MapFreshness.hpp"
#include "app/RecentFolders.hpp"
#include "app/ScanJob.hpp"
#include "cache/ScanSessionCache.hpp"
#include "platform/Paths.hpp"
#include "platform/Preferences.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan {

struct DiskMapModel::Startup {
    std::vector<std::string> recentFolders;
    bool didCompleteOnboarding = false;
    std::string lastScanPath = startupDiskURL;
    std::optional<std::string> commandLineFolder;  // "--scan" named an existing folder
    bool hasCommandLine = false;
};

DiskMapModelOptions DiskMapModelOptions::fromApplication() {
    DiskMapModelOptions options;
    for (const QString& argument : QCoreApplication::arguments()) {
        options.arguments.push_back(argument.toStdString());
    }
    return options;
}

std::optional<std::string> DiskMapModel::commandLineScanPath(
    const std::vector<std::string>& arguments) {
    for (size_t index = 0; index < arguments.size(); ++index) {
        if (arguments[index] != "--scan") continue;
        if (index + 1 == arguments.size()) return std::nullopt;
        return arguments[index + 1];
    }
    return std::nullopt;
}

DiskMapModel::DiskMapModel(DiskMapModelOptions options, QObject* parent)
    : QObject(parent), options_(std::move(options)) {
    freshnessTimer_.setInterval(freshnessInterval);
    connect(&freshnessTimer_, &QTimer::timeout, this, &DiskMapModel::refreshMapFreshness);
    freshnessTimer_.start();
    dailyTimer_.setInterval(std::chrono::hours(1));
    connect(&dailyTimer_, &QTimer::timeout, this, [this] { runDailyTrackingNow(false); });
    dailyTimer_.start();

    const auto commandLine = commandLineScanPath(options_.arguments);
    tasks_.run(
        [commandLine] {
            // The history is read at its first use: here, not on the main thread.
            ActivityTracker::shared();
            Startup startup;
            startup.recentFolders = platform::Preferences::strings(RecentFolders::preferenceKey)
                                        .value_or(std::vector<std::string>{});
            startup.didCompleteOnboarding =
                platform::Preferences::boolean(didCompleteOnboardingKey).value_or(false);
            startup.lastScanPath =
                platform::Preferences::string(lastScanPathKey).value_or(startupDiskURL);
            if (commandLine) {
                startup.hasCommandLine = true;
                const std::string folder = platform::absolutePath(*commandLine);
                if (ScanStartCheck::isFolder(folder)) startup.commandLineFolder = folder;
            }
            return startup;
        },
        [this](Startup startup) { applyStartup(std::move(startup)); });
    refreshFullDiskAccess();
}

DiskMapModel::~DiskMapModel() {
    stopWorkers();
}

void DiskMapModel::stopWorkers() {
    freshnessTimer_.stop();
    dailyTimer_.stop();
    for (auto* token :
         {&cancellation_, &dailyCancellation_, &explorationCancellation_, &cleanupCancellation_,
          &duplicateCancellation_, &folderRescanCancellation_}) {
        if (*token) (*token)->cancel();
    }
    // A duplicate move is never interrupted: it ends on its own, file after file.
    tasks_.waitForDone();
}

void DiskMapModel::applyStartup(Startup startup) {
    // Folders remembered before the list was read stay in front of it.
    std::vector<std::string> merged = std::move(startup.recentFolders);
    for (auto entry = recentFolders_.rbegin(); entry != recentFolders_.rend(); ++entry) {
        merged = RecentFolders::remembering(merged, *entry);
    }
    publish(recentFolders_, std::move(merged), &DiskMapModel::recentFoldersChanged);

    hasStarted_ = true;
    if (!startupChoiceWithdrawn_) {
        if (startup.hasCommandLine) {
            scan(startup.commandLineFolder.value_or(startupDiskURL));
        } else if (startup.didCompleteOnboarding) {
            openSavedScan(startup.lastScanPath, false);
        } else {
            needsOnboarding_ = true;
        }
    }
    Q_EMIT started();
    // A day missed while the app was closed is caught up now.
    runDailyTrackingNow(false);
}

bool DiskMapModel::isDoingBackgroundWork() const {
    return isScanning_ || isCleaning_ || isFindingDuplicates_ || isMovingDuplicates_ ||
           isExploring() || folderRescanCancellation_ != nullptr;
}

void DiskMapModel::updateBackgroundActivity() {
    if (isDoingBackgroundWork_ == isDoingBackgroundWork()) return;
    isDoingBackgroundWork_ = !isDoingBackgroundWork_;
    backgroundActivity_.update(isDoingBackgroundWork_);
    Q_EMIT isDoingBackgroundWorkChanged();
}

void DiskMapModel::setScanError(std::optional<std::string> message) {
    publish(scanError_, std::move(message), &DiskMapModel::scanErrorChanged);
}

void DiskMapModel::setLocationNotice(std::optional<std::string> message) {
    publish(locationNotice_, std::move(message), &DiskMapModel::locationNoticeChanged);
}

void DiskMapModel::dismissMessages() {
    setScanError(std::nullopt);
    setLocationNotice(std::nullopt);
}

void DiskMapModel::writePreference(std::function<void()> write) {
    preferenceWrites_.async(std::move(write));
}

void DiskMapModel::rememberFolder(const std::string& path) {
    auto list = RecentFolders::remembering(recentFolders_, path);
    if (list == recentFolders_) return;
    publish(recentFolders_, list, &DiskMapModel::recentFoldersChanged);
    writePreference([list = std::move(list)] {
        platform::Preferences::setStrings(RecentFolders::preferenceKey, list);
    });
}

void DiskMapModel::refreshFullDiskAccess() {
    const uint64_t token = newToken();
    fullDiskAccessRefreshToken_ = token;
    tasks_.run([] { return FullDiskAccess::check(); },
               [this, token](FullDiskAccessState state) {
                   if (fullDiskAccessRefreshToken_ != token) return;
                   publish(fullDiskAccess_, state, &DiskMapModel::fullDiskAccessChanged);
               });
}

void DiskMapModel::refreshVolume() {
    const uint64_t token = newToken();
    volumeToken_ = token;
    tasks_.run([path = selectedURL_] { return VolumeSpace::read(path); },
               [this, token](std::optional<VolumeSpace> volume) {
                   if (volumeToken_ != token) return;
                   volume_ = volume;
                   ++volumeRefreshID_;
                   Q_EMIT volumeRefreshIDChanged();
               });
}

void DiskMapModel::refreshMapFreshness() {
    if (!snapshot_ || isScanning_ || isRestoringScan_ || isCleaning_ || isMovingDuplicates_) return;
    const auto mapped = mappedSessionGeneration_;
    const std::string root = snapshot_->root.path;
    tasks_.run([root] { return ScanSessionCache::shared().flushedGeneration(root); },
               [this, mapped, root](std::optional<uint64_t> flushed) {
                   if (mappedSessionGeneration_ != mapped || !snapshot_ ||
                       snapshot_->root.path != root || mapNeedsRefresh_) {
                       return;
                   }
                   if (flushed != mapped) markMapNeedsRefresh({root});
               });
}

void DiskMapModel::markMapNeedsRefresh(const std::vector<std::string>& affectedPaths) {
    if (!snapshot_ || affectedPaths.empty()) return;
    const auto shown = snapshot_;
    auto affects = [root = shown->root.path, affectedPaths] {
        return MapFreshness::affectsMap(root, affectedPaths);
    };
    tasks_.run(std::move(affects), [this, shown](bool affected) {
        if (!affected || snapshot_ != shown || mapNeedsRefresh_) return;
        publish(mapNeedsRefresh_, true, &DiskMapModel::mapNeedsRefreshChanged);
        WidgetDigest::markNeedsRefresh();
    });
}

void DiskMapModel::runDailyTrackingNow(bool force) {
    if (dailyCancellation_) return;
    auto token = std::make_shared<ScanCancellation>();
    dailyCancellation_ = token;
    Q_EMIT dailyTrackingChanged();
    tasks_.run(
        [token, force] {
            return DailyCheck::run(ActivityTracker::shared(), *token, force).outcome;
        },
        [this, token](DailyCheckResult::Outcome outcome) {
            if (dailyCancellation_ != token) return;
            dailyCancellation_.reset();
            Q_EMIT dailyTrackingChanged();
            // Its scan may have seen what changed under the map.
            if (outcome == DailyCheckResult::Outcome::checked) refreshMapFreshness();
        },
        BackgroundTasks::Priority::utility);
}

void DiskMapModel::cancelDailyTracking() {
    if (!dailyCancellation_) return;
    dailyCancellation_->cancel();
    dailyCancellation_.reset();
    Q_EMIT dailyTrackingChanged();
}

void DiskMapModel::setDailyTrackingEnabled(bool enabled) {
    tasks_.run([enabled] { return ActivityTracker::shared().setDailyEnabled(enabled); },
               [this](bool) { Q_EMIT dailyTrackingChanged(); });
}

void DiskMapModel::moveDownloadToTrash(const TrackedDownload& download) {
    auto move = [download] {
        return ActivityTracker::shared().moveDownloadToTrash(download,
                                                             CleanupAftermath::changedPathsSink());
    };
    tasks_.run(std::move(move), [this, path = download.path](DownloadMoveOutcome outcome) {
        if (outcome.moved) markMapNeedsRefresh({path});
        Q_EMIT dailyTrackingChanged();
    });
}

void DiskMapModel::applicationWillTerminate() {
    stopWorkers();
    WidgetDigest::markInterruptedScanStopped();
    ScanJob::finishSaving();
    CleanupAftermath::finishWriting();
}

}  // namespace veldan
