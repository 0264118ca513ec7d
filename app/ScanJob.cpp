#include "app/ScanJob.hpp"

#include "cache/ScanCache.hpp"
#include "cache/ScanSessionCache.hpp"
#include "platform/Paths.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan {

std::optional<ScanOutcome> ScanJob::run(const std::string& path,
                                        const ScanCancellation& cancellation,
                                        const ScanJobOptions& options) {
    const DiskScanner scanner(ScanSettings::current(), &ScanSessionCache::shared());
    auto outcome = scanner.scan(path, cancellation, options.progress, options.partial);
    if (options.useSavedMaps) {
        const std::string root = platform::absolutePath(path);
        if (outcome) {
            ScanCache::shared().save(outcome->snapshot, root);
        } else {
            // The user stopped a scan, most likely because the saved map no longer shows
            // what is on the disk.
            ScanCache::shared().markStale(root);
        }
    }
    return outcome;
}

void ScanJob::finishSaving() {
    ScanCache::shared().drain();
}

ChangedPathsSink ScanJob::changedPathsSink() {
    return [](const std::vector<std::string>& movedPaths) {
        ScanSessionCache::shared().invalidateCurrent(movedPaths);
        ScanCache::shared().markStaleHolding(movedPaths);
    };
}

}  // namespace veldan
