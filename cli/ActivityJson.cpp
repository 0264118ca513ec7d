#include "cli/ActivityJson.hpp"

#include "activity/ActivityTracker.hpp"
#include "cli/SnapshotJson.hpp"

namespace veldan::cli {

namespace {

Json optionalDate(const std::optional<std::chrono::system_clock::time_point>& time) {
    return time ? Json(isoDate(*time)) : Json(nullptr);
}

}  // namespace

Json activitySnapshotJson(const ActivitySnapshot& snapshot) {
    return Json{{"checkedAt", isoDate(snapshot.checkedAt)},
                {"freeBytes", snapshot.freeBytes},
                {"mappedBytes", snapshot.mappedBytes},
                {"unreadableItems", snapshot.unreadableItems}};
}

Json trackedDownloadJson(const TrackedDownload& download,
                         std::chrono::system_clock::time_point now) {
    return Json{{"path", download.path},
                {"bytes", download.bytes},
                {"addedAt", isoDate(download.addedAt)},
                {"modifiedAt", isoDate(download.modifiedAt)},
                {"isInstaller", download.isInstaller()},
                {"isVeryLarge", download.isVeryLarge()},
                {"wantsReview", download.wantsReview(now)}};
}

Json activityJson(const ActivityArchive& history, std::chrono::system_clock::time_point now,
                  bool dailyEnabled, bool dailyDue) {
    Json snapshots = Json::array();
    for (const auto& snapshot : history.snapshots)
        snapshots.push_back(activitySnapshotJson(snapshot));
    Json downloads = Json::array();
    for (const auto& download : history.downloads)
        downloads.push_back(trackedDownloadJson(download, now));
    Json activities = Json::array();
    for (const auto& activity : history.activities) {
        activities.push_back(Json{{"id", activity.id},
                                  {"date", isoDate(activity.date)},
                                  {"title", activity.title},
                                  {"kind", CleanupActivity::kindName(activity.kind)},
                                  {"bytes", activity.bytes},
                                  {"count", activity.count}});
    }
    const auto change = history.latestChangeInFreeSpace();
    return Json{{"snapshots", std::move(snapshots)},
                {"latestChangeInFreeSpace", change ? Json(*change) : Json(nullptr)},
                {"downloads", std::move(downloads)},
                {"activities", std::move(activities)},
                {"lastDailyCheckAt", optionalDate(history.lastDailyCheckAt)},
                {"totalMovedToTrashBytes", history.totalMovedToTrashBytes},
                {"totalMovedToTrashItems", history.totalMovedToTrashItems},
                {"totalToolCleanups", history.totalToolCleanups},
                {"dailyEnabled", dailyEnabled},
                {"isDailyCheckDue", dailyDue},
                {"note", ActivityTracker::recordedLocallyNote}};
}

Json widgetDigestJson(const WidgetDigest& d, std::chrono::system_clock::time_point now) {
    const auto state = d.shownScanState(now);
    return Json{{"scopeName", d.scopeName},
                {"isStartupDisk", d.isStartupDisk},
                {"isHomeFolder", d.isHomeFolder},
                {"freeBytes", d.freeBytes},
                {"totalBytes", d.totalBytes},
                {"mappedBytes", d.mappedBytes},
                {"safeBytes", d.safeBytes},
                {"safeCount", d.safeCount},
                {"reviewCount", d.reviewCount},
                {"scannedAt", optionalDate(d.scannedAt)},
                {"unreadableItems", d.unreadableItems},
                {"needsRefresh", d.needsRefresh},
                {"isSavedMap", d.isSavedMap},
                {"scanState", state ? Json(widgetScanStateName(*state)) : Json(nullptr)},
                {"scanStateChangedAt", optionalDate(d.scanStateChangedAt)},
                {"hasCompletedScan", d.hasCompletedScan},
                {"activeScanScopeName",
                 d.activeScanScopeName ? Json(*d.activeScanScopeName) : Json(nullptr)},
                {"movedToTrashBytes", d.movedToTrashBytes},
                {"scopePath", d.scopePath}};
}

}  // namespace veldan::cli
