#pragma once
// The plain-text report of a scan that the user saves: the full summary of a finished
// scan, or the partial summary of a scan still running or stopped early. Lines are
// joined with "\n" (no newline after the last); sizes read "12 GB (12,345,678,901
// bytes)", the exact count grouped as the user's locale groups digits.
//
// Contract: pure functions, thread-safe. Paths are written as they are (raw bytes); a
// caller that shows the report on a terminal makes them safe to display with `pathText`.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/LocaleFormat.hpp"
#include "scan/DiskNode.hpp"
#include "scan/LargeFile.hpp"
#include "scan/Recommendation.hpp"
#include "scan/ScanSnapshot.hpp"
#include "scan/VolumeSpace.hpp"

namespace veldan {

struct ScanReportStyle {
    platform::LocaleFormat locale = platform::LocaleFormat::system();
    // How a path appears in the text; unchanged when empty.
    std::function<std::string(std::string_view)> pathText;
};

class ScanReportBuilder {
public:
    // The names the save dialog proposes.
    static constexpr const char* summaryFileName = "Veldan - Scan Summary.txt";
    static constexpr const char* partialFileName = "Veldan - Partial Scan.txt";
    static constexpr const char* progressFileName = "Veldan - Scan Progress.txt";
    // "Largest mapped items" lists at most this many of the scanned folder's items.
    static constexpr size_t largestItemLimit = 12;

    // The summary of a finished scan. `status` is a short text of the caller's ("Complete").
    static std::string build(const std::string& scope, const ScanSnapshot& snapshot,
                             const std::vector<Recommendation>& recommendations,
                             const std::string& status, const ScanReportStyle& style = {});

    // The summary of a scan under way (`isScanning`) or stopped before it finished.
    static std::string buildPartial(const std::string& scope, const DiskNode& root,
                                    const std::optional<VolumeSpace>& volume,
                                    const std::vector<LargeFile>& largestFiles,
                                    int64_t visitedFolderCount, int64_t visitedFileCount,
                                    bool isScanning, const ScanReportStyle& style = {});

    // "12 GB (12,345,678,901 bytes)"
    static std::string sizeText(int64_t bytes, const platform::LocaleFormat& locale);
};

}  // namespace veldan
