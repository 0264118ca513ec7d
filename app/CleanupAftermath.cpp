#include "app/CleanupAftermath.hpp"

#include "activity/ActivityTracker.hpp"
#include "activity/WidgetDigest.hpp"
#include "cache/ScanCache.hpp"
#include "cache/ScanSessionCache.hpp"
#include "recommendations/RecommendationBuilder.hpp"

namespace veldan {

ChangedPathsSink CleanupAftermath::changedPathsSink() {
    return [](const std::vector<std::string>& paths) { pathsChanged(paths); };
}

void CleanupAftermath::pathsChanged(const std::vector<std::string>& paths) {
    if (paths.empty()) return;
    ScanSessionCache::shared().invalidateCurrent(paths);
    ScanCache::shared().markStaleHolding(paths);
    WidgetDigest::markNeedsRefresh(paths);
}

void CleanupAftermath::recordTrash(const std::string& title, int64_t bytes, int64_t count) {
    ActivityTracker::shared().recordTrash(title, bytes, count);
}

void CleanupAftermath::recordToolCleanup(const std::string& title, int64_t count) {
    ActivityTracker::shared().recordToolCleanup(title, count);
}

void CleanupAftermath::recordCleanupReport(const CleanupReport& report,
                                           const std::map<std::string, int64_t>& sizes) {
    for (const auto& result : report.results) {
        if (result.totalFolders == 0) {
            if (result.succeeded) recordToolCleanup(result.title, 1);
        } else if (result.movedFolders > 0) {
            recordTrash(result.title,
                        RecommendationBuilder::footprint(result.movedPaths, {}, sizes),
                        result.movedFolders);
        }
    }
}

void CleanupAftermath::finishWriting() {
    ActivityTracker::shared().drain();
    WidgetDigest::drain();
}

}  // namespace veldan
