// Construction, startup, the published-state helpers and the companion checks (access,
// volume, freshness). The scan lifecycle is in DiskMapModelScan.cpp.

#include "app/DiskMapModel.hpp"

#include <QCoreApplication>

#include "app/MapFreshness.hpp"
#include "app/RecentFolders.hpp"
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

    const auto commandLine = commandLineScanPath(options_.arguments);
    tasks_.run(
        [commandLine] {
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
    freshnessTimer_.stop();
    for (auto* token : {&cancellation_, &explorationCancellation_, &cleanupCancellation_,
                        &duplicateCancellation_, &folderRescanCancellation_}) {
        if (*token) (*token)->cancel();
    }
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
}

bool DiskMapModel::isDoingBackgroundWork() const {
    return isScanning_ || isCleaning_ || isFindingDuplicates_ || isMovingDuplicates_ ||
           isExploring() || folderRescanCancellation_ != nullptr;
}

void DiskMapModel::updateBackgroundActivity() {
    publish(isDoingBackgroundWork_, isDoingBackgroundWork(),
            &DiskMapModel::isDoingBackgroundWorkChanged);
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
    tasks_.run([root = shown->root.path,
                affectedPaths] { return MapFreshness::affectsMap(root, affectedPaths); },
               [this, shown](bool affects) {
                   if (!affects || snapshot_ != shown || mapNeedsRefresh_) return;
                   publish(mapNeedsRefresh_, true, &DiskMapModel::mapNeedsRefreshChanged);
               });
}

}  // namespace veldan
