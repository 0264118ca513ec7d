#include "scan/ScanIssueCollector.hpp"

#include "scan/ScanIssueReason.hpp"
#include "scan/ScanIssueSamples.hpp"

namespace veldan {

void ScanIssueCollector::record(const std::string& path, std::string_view reason) {
    std::lock_guard lock(mutex_);
    ++totals_.count;
    ScanIssueSamples::add(path, reason, totals_.paths, totals_.reasons);
}

void ScanIssueCollector::recordSkippedPhotosLibrary(const std::string& path) {
    std::lock_guard lock(mutex_);
    ++totals_.skippedPhotosLibraries;
    ScanIssueSamples::add(path, ScanIssueReason::photosAccessRequired, totals_.paths,
                          totals_.reasons);
}

void ScanIssueCollector::recordSkippedMusicLibrary(const std::string& path) {
    std::lock_guard lock(mutex_);
    ++totals_.skippedMusicLibraries;
    ScanIssueSamples::add(path, ScanIssueReason::mediaAccessRequired, totals_.paths,
                          totals_.reasons);
}

ScanIssueCollector::Totals ScanIssueCollector::totals() const {
    std::lock_guard lock(mutex_);
    return totals_;
}

}  // namespace veldan
