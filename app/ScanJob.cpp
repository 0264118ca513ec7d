#include "app/ScanJob.hpp"

#include "app/CleanupAftermath.hpp"
#include "cache/ScanCache.hpp"
#include "cache/ScanSessionCache.hpp"
#include "platform/Paths.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan {

std::shared_ptr<const ScanOutcome> ScanJob::run(const std::string& path,
                                                const ScanCancellation& cancellation,
                                                const ScanJobOptions& options) {
    const DiskScanner scanner(ScanSettings::current(),
                              options.reuseWithinSession ? &ScanSessionCache::shared() : nullptr);
    auto scanned =
        scanner.scan(path, cancellation, options.progress, options.partial, options.stopped);
    std::shared_ptr<const ScanOutcome> outcome;
    if (scanned) outcome = std::make_shared<const ScanOutcome>(std::move(*scanned));
    if (options.useSavedMaps) {
        const std::string root = platform::absolutePath(path);
        if (outcome) {
            ScanCache::shared().save(
                std::shared_ptr<const ScanSnapshot>(outcome, &outcome->snapshot), root);
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
    return CleanupAftermath::changedPathsSink();
}

}  // namespace veldan
