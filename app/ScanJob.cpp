#include "app/ScanJob.hpp"

#include "scan/DiskScanner.hpp"

namespace veldan {

std::optional<ScanOutcome> ScanJob::run(const std::string& path,
                                        const ScanCancellation& cancellation,
                                        const ScanJobOptions& options) {
    const DiskScanner scanner;
    return scanner.scan(path, cancellation, options.progress, options.partial);
}

}  // namespace veldan
