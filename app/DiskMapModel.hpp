#pragma once
// The one model behind the main window: which folder is mapped, the life of its scan
// (starting, stopping, superseding, restoring a saved map), the recent folders, whether
// the map is outdated, the exploration of grouped folders, the report, and the refusals
// that keep a scan from starting while files are being moved.
//
// Threads: the model lives on the thread that created it (the main thread) and every
// member is called there. Everything that touches the file system runs on background
// threads (BackgroundTasks) and comes back through the model's event queue; an answer is
// applied only while the token it was started with is still the current one (the scan's
// ScanCancellation object, the restore and recent-lookup tokens, the mapped session
// generation), so late answers are recognised by identity, never by time. Starting,
// restoring and looking up a recent folder therefore finish after the call returns: the
// change signals say when.
//
// Signals carry no arguments: a view re-reads the getter named like the signal. Each is
// emitted only when the value changed.

#include <QObject>
#include <QTimer>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/BackgroundTasks.hpp"
#include "app/ExplorationCache.hpp"
#include "app/FilePanels.hpp"
#include "app/ScanStartCheck.hpp"
#include "duplicates/DuplicateGroup.hpp"
#include "duplicates/DuplicateGroupFilterCache.hpp"
#include "duplicates/DuplicateScanPhase.hpp"
#include "duplicates/DuplicateSelection.hpp"
#include "duplicates/DuplicateTrashReport.hpp"
#include "platform/BackgroundWorkActivity.hpp"
#include "platform/SerialQueue.hpp"
#include "recommendations/CleanupReport.hpp"
#include "scan/DiskCategory.hpp"
#include "scan/DiskNode.hpp"
#include "scan/FullDiskAccess.hpp"
#include "scan/Recommendation.hpp"
#include "scan/ScanCancellation.hpp"
#include "scan/ScanSnapshot.hpp"
#include "scan/SubtreeScan.hpp"
#include "scan/VolumeSpace.hpp"

namespace veldan {

struct ScanOutcome;
class ScanRecording;
struct TrackedDownload;

// Counts and the current folder of the running scan.
struct ScanProgressState {
    std::string currentItem;
    int64_t folders = 0;
    int64_t files = 0;
    // The counts of the map this scan replaces when that map was of the same folder, so a
    // rescan can show how far along it is.
    std::optional<int64_t> earlierFolders;
    std::optional<int64_t> earlierFiles;
    friend bool operator==(const ScanProgressState&, const ScanProgressState&) = default;
};

// Where tests step in, on the worker thread, to change the disk at a precise moment. The
// product leaves them empty.
struct DiskMapModelSeams {
    // Between the two looks at a folder whose scan is starting.
    std::function<void()> beforeRootIdentity;
    // A scan worker finished measuring; the folder is looked at again right after.
    std::function<void()> scanFinished;
    // The cleanup worker is about to clean the selected recommendations.
    std::function<void()> beforeCleanup;
    // The duplicate worker is about to move the selected copies.
    std::function<void()> beforeDuplicateMove;
};

struct DiskMapModelOptions {
    std::vector<std::string> arguments;  // the process arguments ("--scan PATH")
    DiskMapModelSeams seams;
    // The arguments of the running QCoreApplication.
    static DiskMapModelOptions fromApplication();
};

class DiskMapModel : public QObject {
    Q_OBJECT

public:
    static constexpr const char* startupDiskURL = "/";
    static constexpr std::chrono::seconds freshnessInterval{30};
    static constexpr const char* lastScanPathKey = "veldanLastScanPath";
    static constexpr const char* didCompleteOnboardingKey = "veldanDidCompleteOnboarding";

    static constexpr const char* movingDuplicatesRefusal =
        "Finish moving duplicate files to Trash before starting another scan.";
    static constexpr const char* cleaningRefusal =
        "Finish the selected cleanup before starting another scan.";
    static constexpr const char* recentUnavailablePrefix =
        "This recent folder isn\u2019t available. Reconnect its disk, then try again: ";
    static constexpr const char* lastFolderUnavailablePrefix =
        "Your last scan folder isn\u2019t available: ";
    static constexpr const char* lastFolderUnavailableSuffix =
        ". Showing the startup disk instead.";
    static constexpr const char* reportMapChangedError =
        "The map changed while choosing a report destination. Save it again.";
    static constexpr const char* folderNotOnMapError =
        "This folder isn\u2019t shown on its own in the map. Scan again to update it.";
    static constexpr const char* selectionChangedNotice =
        "Some selected locations changed since the saved map. Review the updated recommendations "
        "before cleaning.";

    // The argument after the first "--scan"; nothing when "--scan" is absent or last.
    static std::optional<std::string> commandLineScanPath(
        const std::vector<std::string>& arguments);

    // Starts at once: reads the recent folders and the last scanned folder off this thread,
    // then scans the command line's folder, or restores the last map once onboarding is
    // done, or waits for onboarding (started() says which).
    explicit DiskMapModel(DiskMapModelOptions options = DiskMapModelOptions::fromApplication(),
                          QObject* parent = nullptr);
    // Stops every task and waits for the workers.
    ~DiskMapModel() override;

    // --- Published state ---
    const std::string& selectedURL() const { return selectedURL_; }
    const std::vector<std::string>& recentFolders() const { return recentFolders_; }
    int64_t scanGeneration() const { return scanGeneration_; }
    // Changes whenever the volume figures may have changed; volume() is then re-read.
    uint64_t volumeRefreshID() const { return volumeRefreshID_; }
    // Free and total space of the selected folder's volume, when known.
    const std::optional<VolumeSpace>& volume() const { return volume_; }
    // The map shown; null while none is (idle, scanning, stopped, failed).
    const std::shared_ptr<const ScanSnapshot>& snapshot() const { return snapshot_; }
    bool isShowingCachedScan() const { return isShowingCachedScan_; }
    bool mapNeedsRefresh() const { return mapNeedsRefresh_; }
    bool isRestoringScan() const { return isRestoringScan_; }
    // The latest partial tree of the running scan; it stays after a stop.
    const std::shared_ptr<const DiskNode>& scanPreview() const { return scanPreview_; }
    const std::map<DiskCategory, int64_t>& snapshotCategoryBytes() const {
        return snapshotCategoryBytes_;
    }
    // Bumps whenever the map shown is replaced (not for previews).
    uint64_t mapRevision() const { return mapRevision_; }
    const std::vector<Recommendation>& recommendations() const { return recommendations_; }
    const std::set<std::string>& selectedIDs() const { return selectedIDs_; }
    bool isScanning() const { return isScanning_; }
    std::optional<std::chrono::system_clock::time_point> scanStartedAt() const {
        return scanStartedAt_;
    }
    bool wasScanStopped() const { return wasScanStopped_; }
    const std::optional<std::string>& scanError() const { return scanError_; }
    const std::optional<std::string>& locationNotice() const { return locationNotice_; }
    FullDiskAccessState fullDiskAccess() const { return fullDiskAccess_; }
    const ScanProgressState& scanProgress() const { return scanProgress_; }

    // The folder being explored or shown explored; empty when none.
    const std::string& exploringPath() const { return exploringPath_; }
    const std::string& exploringName() const { return exploringName_; }
    // Its measured tree once ready.
    const std::shared_ptr<const SubtreeScan>& exploringFolder() const { return exploringFolder_; }
    int64_t exploredFolderCount() const { return exploredFolderCount_; }
    int64_t exploredFileCount() const { return exploredFileCount_; }
    bool isExploring() const { return explorationCancellation_ != nullptr; }
    // The folder being measured again by rescanFolder; empty when none.
    const std::string& rescanningFolder() const { return rescanningFolder_; }

    // The recommendation cleanup: items started so far of the total, the one running,
    // and the report of the last run.
    bool isCleaning() const { return isCleaning_; }
    int64_t cleanupProgress() const { return cleanupProgress_; }
    int64_t cleanupTotal() const { return cleanupTotal_; }
    const std::string& cleanupCurrentTitle() const { return cleanupCurrentTitle_; }
    const std::optional<CleanupReport>& cleanupReport() const { return cleanupReport_; }

    // The duplicate finder. Its scope is the mapped folder unless overridden.
    const std::shared_ptr<const DuplicateScanResult>& duplicateResult() const {
        return duplicateResult_;
    }
    const std::optional<std::string>& duplicateScanError() const { return duplicateScanError_; }
    // The result was updated after a move: remaining matches are from the earlier search.
    bool duplicateNeedsRefresh() const { return duplicateNeedsRefresh_; }
    const DuplicatePathSet& selectedDuplicatePaths() const { return selectedDuplicatePaths_; }
    bool isMovingDuplicates() const { return isMovingDuplicates_; }
    int64_t duplicateTrashProgress() const { return duplicateTrashProgress_; }
    int64_t duplicateTrashTotal() const { return duplicateTrashTotal_; }
    const std::optional<DuplicateTrashReport>& duplicateTrashReport() const {
        return duplicateTrashReport_;
    }
    const std::optional<std::string>& duplicateScopeOverride() const {
        return duplicateScopeOverride_;
    }
    std::string duplicateScope() const { return duplicateScopeOverride_.value_or(selectedURL_); }
    DuplicateScanPhase duplicatePhase() const { return duplicatePhase_; }
    int64_t duplicateProgress() const { return duplicateProgress_; }
    int64_t duplicateProgressTotal() const { return duplicateProgressTotal_; }
    bool isFindingDuplicates() const { return isFindingDuplicates_; }

    // A scan, a cleanup, a duplicate search or move, or an exploration runs.
    bool isDoingBackgroundWork() const;
    // The daily check of free space and Downloads is running.
    bool isRunningDailyCheck() const { return dailyCancellation_ != nullptr; }
    // Startup found onboarding unfinished and no "--scan": the window runs onboarding,
    // which starts the first scan itself.
    bool needsOnboarding() const { return needsOnboarding_; }

    // Which report "Save …" writes: progress while scanning, partial after a stop,
    // otherwise the summary. The menu item's label follows it.
    enum class SummaryKind { summary, partial, progress };
    SummaryKind summaryKind() const;
    // There is a map or a preview to report on.
    bool canExportSummary() const { return snapshot_ || scanPreview_; }

    // --- Operations ---
    // Starts a fresh scan of `path`. With a selection, recommendations of the new map whose
    // IDs were selected stay selected. Refused (scanError) while duplicates are moved or a
    // cleanup runs, or when the folder is gone or was replaced; a refused start changes
    // nothing else.
    void scan(const std::string& path,
              std::optional<std::vector<Recommendation>> preservingSelection = std::nullopt);
    // Stops the running scan; the partial map stays as the preview.
    void cancelScan();
    // Asks the folder panel, then scans the choice. Does nothing while files are moved.
    void chooseFolder();
    void scanRecent(const std::string& path);
    // Shows the saved map of `path` when there is a usable one, else scans it. A folder
    // that is gone falls back to the startup disk with a notice.
    void openSavedScan(const std::string& path, bool fromRecentMenu);
    // The 30-second check whether files changed under the map (the timer calls it).
    void refreshMapFreshness();
    // Marks the map outdated when any path is, or lies inside, its root.
    void markMapNeedsRefresh(const std::vector<std::string>& affectedPaths);
    void refreshFullDiskAccess();
    // Clears scanError and locationNotice (the window's banner was dismissed).
    void dismissMessages();

    // Measures `folderPath` (a folder of the map, or the folder of a grouped "Other"
    // tile) by itself; the answer is kept for the current map.
    void explore(const std::string& folderPath, const std::string& name);
    // Stops an exploration and leaves the explored folder.
    void cancelExploration();
    // "Rescan This Folder": measures one folder of the map again and puts it in place,
    // with its parents' totals, without rescanning the rest. Refused like a scan start.
    // The selection keeps what still exists; a folder that is not a node of the map (folded
    // into "Other") ends in scanError.
    void rescanFolder(const std::string& folderPath);
    void cancelFolderRescan();

    // The selection of recommendations (by ID) to clean or to copy as a script.
    void setRecommendationSelected(const std::string& id, bool selected);
    void selectAllSafe();
    void clearSelection();
    // The selected recommendations, in list order.
    std::vector<Recommendation> selectedRecommendations() const;
    // Cleans the selected "Safe to remove" items one after another off this thread; review
    // items are never acted on. Nothing happens while a scan or another cleanup runs (a
    // duplicate move may run beside it: each item is verified before it moves). Afterwards
    // the map is outdated and the report is in cleanupReport.
    void startCleanup();
    // Ends a running tool command and starts no further item.
    void cancelCleanup();
    void dismissCleanupReport();

    // Searches the duplicate scope for exact copies off this thread (not while copies
    // are being moved); the previous search stops.
    void findDuplicates();
    void cancelDuplicateScan();
    void setDuplicateScopeOverride(std::optional<std::string> scope);
    // Whether the copy at `path` may be checked: it may move (no reason to stay), and at
    // least one other copy of its group would stay unchecked.
    bool canSelectDuplicate(const std::string& path) const;
    // Checks or unchecks one copy; a copy that canSelectDuplicate refuses stays unchecked.
    void setDuplicateSelected(const std::string& path, bool selected);
    // "Keep this copy, select other eligible copies".
    void keepDuplicateCopy(const std::string& groupID, const std::string& keeperPath);
    void clearDuplicateGroupSelection(const std::string& groupID);
    // Smart select of every group, or only of the groups shown under the filter (the
    // selections outside it stay).
    void smartSelectAllDuplicates();
    void smartSelectShownDuplicates(const std::string& query, int64_t minimumExtraBytes);
    // The groups shown under the filter; reused while result, query and minimum are the same.
    const std::vector<DuplicateGroup>& visibleDuplicateGroups(const std::string& query,
                                                              int64_t minimumExtraBytes);
    // Checked copies outside the groups last returned by visibleDuplicateGroups.
    int64_t duplicatesSelectedOutsideFilter() const;
    // Verifies and moves the checked copies to the Trash off this thread; the report lands
    // in duplicateTrashReport and the result loses what moved.
    void moveSelectedDuplicatesToTrash();
    void dismissDuplicateTrashReport();

    // Asks the save panel where to write the report of what is shown, then writes it off
    // this thread. Failures and a map replaced meanwhile end in scanError.
    void saveSummary();

    // The daily check (a scan of the startup disk and a listing of Downloads, recorded in
    // the activity history), when it is due or when forced, at utility priority. Startup
    // and an hourly timer ask for it; any scan start cancels it.
    void runDailyTrackingNow(bool force);
    void cancelDailyTracking();
    // The activity screen's switch and list, off this thread: the preference is written,
    // or one download is verified and moved to the Trash (refusals in the tracker's
    // moveError). Either way dailyTrackingChanged follows; a moved download also marks the
    // map outdated when it lay inside it.
    void setDailyTrackingEnabled(bool enabled);
    void moveDownloadToTrash(const TrackedDownload& download);

    // The application is quitting: every task is stopped and waited for, readers of the
    // widget digest must not keep showing a scan in progress, and the history, digest and
    // saved maps are written before this returns. The model does nothing more afterwards.
    void applicationWillTerminate();

    void setFilePanels(std::shared_ptr<FilePanels> panels) { panels_ = std::move(panels); }

    // Blocks until every background task queued so far has finished (tests).
    void waitForBackgroundTasks() { tasks_.waitForDone(); }

Q_SIGNALS:
    void started();
    void selectedURLChanged();
    void recentFoldersChanged();
    void scanGenerationChanged();
    void volumeRefreshIDChanged();
    // snapshot, isShowingCachedScan, snapshotCategoryBytes and mapRevision.
    void snapshotChanged();
    void mapNeedsRefreshChanged();
    void isRestoringScanChanged();
    void scanPreviewChanged();
    void recommendationsChanged();
    void selectedIDsChanged();
    // isScanning and scanStartedAt.
    void isScanningChanged();
    void wasScanStoppedChanged();
    void scanErrorChanged();
    void locationNoticeChanged();
    void fullDiskAccessChanged();
    void scanProgressChanged();
    // Every exploring… and explored… value.
    void explorationChanged();
    void folderRescanChanged();
    // Every cleanup… value and isCleaning.
    void cleanupChanged();
    // duplicateResult, duplicateScanError and duplicateNeedsRefresh.
    void duplicateResultChanged();
    void selectedDuplicatePathsChanged();
    // isFindingDuplicates, duplicatePhase, duplicateProgress and duplicateProgressTotal.
    void duplicateSearchChanged();
    // isMovingDuplicates, duplicateTrashProgress, duplicateTrashTotal, duplicateTrashReport.
    void duplicateTrashChanged();
    void duplicateScopeOverrideChanged();
    void isDoingBackgroundWorkChanged();
    // The daily check started or ended, its switch changed, or a download move ended.
    void dailyTrackingChanged();

private:
    struct Startup;
    struct ScanResult;
    struct Restore;
    struct Exploration;
    struct FolderRescanResult;

    template <class T, class Signal>
    void publish(T& field, T value, Signal signal) {
        if (field == value) return;
        field = std::move(value);
        Q_EMIT(this->*signal)();
    }
    void setScanError(std::optional<std::string> message);
    void setLocationNotice(std::optional<std::string> message);
    void updateBackgroundActivity();
    void stopWorkers();
    void applyStartup(Startup startup);
    void writePreference(std::function<void()> write);
    void rememberFolder(const std::string& path);
    void refreshVolume();
    uint64_t newToken() { return ++lastToken_; }

    bool isStartRefused();
    void beginScan(const std::string& path, const ScanRoot& root,
                   std::optional<std::vector<Recommendation>> preservingSelection);
    void completeScan(const std::shared_ptr<ScanCancellation>& token, const std::string& path,
                      ScanResult result,
                      const std::optional<std::vector<Recommendation>>& preservingSelection);
    void showSnapshot(std::shared_ptr<const ScanSnapshot> snapshot,
                      std::map<DiskCategory, int64_t> totals,
                      std::vector<Recommendation> recommendations, bool cached);
    void showCachedScan(Restore restore);
    void writeSummary(const std::string& file, SummaryKind kind);
    struct CleanupRun;
    void finishCleanup(CleanupRun run);
    void setDuplicateResult(std::shared_ptr<const DuplicateScanResult> result);
    // Stops the search and forgets its result and selection: the map they were made for
    // is being replaced.
    void clearDuplicates();
    void setSelectedDuplicatePaths(DuplicatePathSet paths);
    const DuplicateGroup* duplicateGroup(const std::string& groupID) const;
    void finishDuplicateMove(DuplicateTrashReport report);

    DiskMapModelOptions options_;
    std::shared_ptr<FilePanels> panels_;
    QTimer freshnessTimer_;
    QTimer dailyTimer_;

    std::string selectedURL_ = startupDiskURL;
    std::vector<std::string> recentFolders_;
    int64_t scanGeneration_ = 0;
    uint64_t volumeRefreshID_ = 0;
    std::optional<VolumeSpace> volume_;
    std::shared_ptr<const ScanSnapshot> snapshot_;
    bool isShowingCachedScan_ = false;
    bool mapNeedsRefresh_ = false;
    bool isRestoringScan_ = false;
    std::shared_ptr<const DiskNode> scanPreview_;
    std::map<DiskCategory, int64_t> snapshotCategoryBytes_;
    uint64_t mapRevision_ = 0;
    std::vector<Recommendation> recommendations_;
    std::set<std::string> selectedIDs_;
    bool isScanning_ = false;
    std::optional<std::chrono::system_clock::time_point> scanStartedAt_;
    bool wasScanStopped_ = false;
    std::optional<std::string> scanError_;
    std::optional<std::string> locationNotice_;
    FullDiskAccessState fullDiskAccess_ = FullDiskAccessState::unknown;
    ScanProgressState scanProgress_;
    std::string exploringPath_;
    std::string exploringName_;
    std::shared_ptr<const SubtreeScan> exploringFolder_;
    int64_t exploredFolderCount_ = 0;
    int64_t exploredFileCount_ = 0;
    std::string rescanningFolder_;
    bool isDoingBackgroundWork_ = false;
    bool needsOnboarding_ = false;
    bool isCleaning_ = false;
    int64_t cleanupProgress_ = 0;
    int64_t cleanupTotal_ = 0;
    std::string cleanupCurrentTitle_;
    std::optional<CleanupReport> cleanupReport_;
    bool isMovingDuplicates_ = false;
    std::shared_ptr<const DuplicateScanResult> duplicateResult_;
    std::optional<std::string> duplicateScanError_;
    bool duplicateNeedsRefresh_ = false;
    DuplicatePathSet selectedDuplicatePaths_;
    int64_t duplicateTrashProgress_ = 0;
    int64_t duplicateTrashTotal_ = 0;
    std::optional<DuplicateTrashReport> duplicateTrashReport_;
    std::optional<std::string> duplicateScopeOverride_;
    DuplicateScanPhase duplicatePhase_ = DuplicateScanPhase::collecting;
    int64_t duplicateProgress_ = 0;
    int64_t duplicateProgressTotal_ = 0;
    bool isFindingDuplicates_ = false;
    DuplicateGroupFilterCache duplicateFilter_;

    std::shared_ptr<ScanCancellation> cancellation_;
    std::shared_ptr<ScanRecording> recording_;  // what the running scan tells the digest
    std::shared_ptr<ScanCancellation> dailyCancellation_;
    std::shared_ptr<ScanCancellation> explorationCancellation_;
    std::shared_ptr<ScanCancellation> cleanupCancellation_;
    std::shared_ptr<ScanCancellation> duplicateCancellation_;
    std::shared_ptr<ScanCancellation> folderRescanCancellation_;
    uint64_t lastToken_ = 0;
    std::optional<uint64_t> startToken_;  // a scan start whose folder is being checked
    std::optional<uint64_t> restoreToken_;
    std::optional<uint64_t> recentLookupToken_;
    uint64_t fullDiskAccessRefreshToken_ = 0;
    uint64_t volumeToken_ = 0;
    std::optional<uint64_t> mappedSessionGeneration_;
    ExplorationCache explorationCache_;
    bool hasStarted_ = false;
    bool startupChoiceWithdrawn_ = false;  // the user chose a map before startup did

    platform::BackgroundWorkActivity backgroundActivity_;
    // Last, so that they are destroyed first: their destructors wait for the work that
    // still refers to the members above.
    platform::SerialQueue preferenceWrites_{"com.veldan.preferences"};
    BackgroundTasks tasks_{this};
};

}  // namespace veldan
