#pragma once
// Issues of one scan: every unreadable item is counted, a sample is kept with reasons,
// and media libraries skipped for want of authorisation are counted apart.
//
// Contract: shared by all scan workers; every method takes the collector's own lock.

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace veldan {

class ScanIssueCollector {
public:
    struct Totals {
        int64_t count = 0;
        std::vector<std::string> paths;
        std::map<std::string, std::string> reasons;
        int64_t skippedPhotosLibraries = 0;
        int64_t skippedMusicLibraries = 0;
    };

    void record(const std::string& path, std::string_view reason);
    void recordSkippedPhotosLibrary(const std::string& path);
    void recordSkippedMusicLibrary(const std::string& path);
    Totals totals() const;

private:
    mutable std::mutex mutex_;
    Totals totals_;
};

}  // namespace veldan
