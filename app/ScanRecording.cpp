#include "app/ScanRecording.hpp"

#include "activity/ActivityTracker.hpp"
#include "activity/DownloadInventory.hpp"
#include "activity/WidgetDigest.hpp"

namespace veldan {

namespace {

// Far inside the staleness limit of readers, and rare enough to cost nothing.
constexpr std::chrono::seconds heartbeatInterval{60};

int64_t steadyNow() {
    return std::chrono::steady_clock::now().time_since_epoch().count();
}

}  // namespace

ScanRecording::ScanRecording(std::string root)
    : root_(std::move(root)), lastHeartbeat_(steadyNow()) {
    WidgetDigest::markScanState(WidgetScanState::scanning, root_);
}

void ScanRecording::heartbeat() {
    const int64_t now = steadyNow();
    int64_t last = lastHeartbeat_.load();
    const auto interval =
        std::chrono::duration_cast<std::chrono::steady_clock::duration>(heartbeatInterval).count();
    if (now - last < interval) return;
    // One caller among the scanner's threads wins the renewal.
    if (lastHeartbeat_.compare_exchange_strong(last, now))
        WidgetDigest::refreshActiveScanHeartbeat();
}

void ScanRecording::stopped() {
    WidgetDigest::markScanState(WidgetScanState::stopped, root_);
    WidgetDigest::markNeedsRefresh(std::vector<std::string>{root_});
}

void ScanRecording::changedDuringScan() {
    WidgetDigest::markScanState(WidgetScanState::attention, root_);
}

void ScanRecording::finished(const ScanSnapshot& snapshot,
                             const std::vector<Recommendation>& recommendations,
                             std::optional<std::vector<TrackedDownload>> downloads) {
    auto& tracker = ActivityTracker::shared();
    if (root_ == "/") {
        const auto now = std::chrono::system_clock::now();
        if (!downloads) downloads = DownloadInventory::collect(now);
        tracker.recordScan(snapshot, std::move(*downloads), now);
    }
    WidgetDigest::save(WidgetDigest::forMap(root_, snapshot, recommendations, false, false,
                                            tracker.history().totalMovedToTrashBytes));
}

}  // namespace veldan
