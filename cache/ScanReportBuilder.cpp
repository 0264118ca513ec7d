#include "cache/ScanReportBuilder.hpp"

#include "scan/RecommendationKind.hpp"
#include "scan/SizeText.hpp"

namespace veldan {

namespace {

constexpr const char* allocatedSpaceNote =
    "Sizes use allocated file space. Hard links are counted once; APFS copies can share blocks.";

class Lines {
public:
    explicit Lines(const ScanReportStyle& style) : style_(style) {}

    void add(std::string line) { lines_.push_back(std::move(line)); }
    std::string path(std::string_view path) const {
        return style_.pathText ? style_.pathText(path) : std::string(path);
    }
    std::string size(int64_t bytes) const {
        return ScanReportBuilder::sizeText(bytes, style_.locale);
    }
    std::string grouped(int64_t value) const { return style_.locale.integer(value); }

    std::string joined() const {
        std::string text;
        for (size_t i = 0; i < lines_.size(); ++i) {
            if (i > 0) text += '\n';
            text += lines_[i];
        }
        return text;
    }

private:
    const ScanReportStyle& style_;
    std::vector<std::string> lines_;
};

// The scanned folder's own items, largest first as the tree keeps them; the summary of
// small items has no path of its own and is left out.
void addLargestItems(Lines& lines, const DiskNode& root) {
    lines.add("");
    lines.add("Largest mapped items");
    size_t listed = 0;
    for (const auto& child : root.children) {
        if (child.isSummary) continue;
        if (listed++ == ScanReportBuilder::largestItemLimit) break;
        lines.add(lines.size(child.bytes) + "  " + lines.path(child.path));
    }
}

void addLargestFiles(Lines& lines, const std::vector<LargeFile>& files) {
    if (files.empty()) return;
    lines.add("");
    lines.add("Largest files (100 MB or more)");
    for (const auto& file : files)
        lines.add(lines.size(file.bytes) + "  " + lines.path(file.path));
}

}  // namespace

std::string ScanReportBuilder::sizeText(int64_t bytes, const platform::LocaleFormat& locale) {
    return SizeText::string(bytes, true) + " (" + locale.integer(bytes) + " bytes)";
}

std::string ScanReportBuilder::build(const std::string& scope, const ScanSnapshot& snapshot,
                                     const std::vector<Recommendation>& recommendations,
                                     const std::string& status, const ScanReportStyle& style) {
    Lines lines(style);
    const int64_t mapped = snapshot.root.bytes;
    lines.add("Veldan scan summary");
    lines.add("Scope: " + lines.path(scope));
    lines.add("Scanned: " + style.locale.abbreviatedDateTime(snapshot.finishedAt));
    lines.add("Status: " + status);
    lines.add("Disk space");
    lines.add("Mapped: " + lines.size(mapped));
    lines.add(allocatedSpaceNote);
    if (snapshot.volume.total < 1) {
        lines.add("Volume capacity: unavailable");
    } else {
        lines.add("Free at scan start: " + lines.size(snapshot.volume.free));
        lines.add("Total: " + lines.size(snapshot.volume.total));
        const int64_t used = snapshot.volume.total - snapshot.volume.free;
        if (mapped > used) {
            lines.add(
                "Outside map: cannot reconcile; mapped file sizes exceed reported used volume "
                "space");
        } else {
            lines.add("Outside map: " + lines.size(used - mapped));
        }
    }
    lines.add("Items not measured: " + std::to_string(snapshot.unreadableItems));
    if (snapshot.skippedPhotosLibraries > 0) {
        lines.add("Photos libraries skipped without separate access: " +
                  std::to_string(snapshot.skippedPhotosLibraries));
    }
    if (snapshot.skippedMusicLibraries > 0) {
        lines.add("Music libraries skipped without separate access: " +
                  std::to_string(snapshot.skippedMusicLibraries));
    }
    lines.add("Folders visited: " + lines.grouped(snapshot.visitedFolderCount));
    lines.add("Files visited: " + lines.grouped(snapshot.visitedFileCount));
    if (!snapshot.unreadablePaths.empty()) {
        lines.add("Unmeasured paths (first " + std::to_string(snapshot.unreadablePaths.size()) +
                  ")");
        for (const auto& path : snapshot.unreadablePaths) {
            std::string line = lines.path(path);
            if (snapshot.unreadableReasons) {
                auto reason = snapshot.unreadableReasons->find(path);
                if (reason != snapshot.unreadableReasons->end())
                    line += " \u2014 " + reason->second;
            }
            lines.add(std::move(line));
        }
    }
    addLargestItems(lines, snapshot.root);
    addLargestFiles(lines, snapshot.largestFiles);
    if (!recommendations.empty()) {
        lines.add("");
        lines.add("Recommendations");
        for (const auto& recommendation : recommendations) {
            const size_t count = recommendation.paths.size();
            lines.add(std::string(title(recommendation.kind)) + ": " + recommendation.title +
                      " \u2014 " + lines.size(recommendation.bytes) + "; " + std::to_string(count) +
                      (count == 1 ? " location" : " locations"));
        }
    }
    return lines.joined();
}

std::string ScanReportBuilder::buildPartial(const std::string& scope, const DiskNode& root,
                                            const std::optional<VolumeSpace>& volume,
                                            const std::vector<LargeFile>& largestFiles,
                                            int64_t visitedFolderCount, int64_t visitedFileCount,
                                            bool isScanning, const ScanReportStyle& style) {
    Lines lines(style);
    lines.add("Veldan partial scan summary");
    lines.add("Scope: " + lines.path(scope));
    lines.add(
        isScanning
            ? "Status: Scan in progress; all sizes below are measured so far."
            : "Status: Stopped before the scan finished; all sizes below are measured so far.");
    lines.add("Mapped so far: " + lines.size(root.bytes));
    lines.add(allocatedSpaceNote);
    lines.add("Folders visited: " + lines.grouped(visitedFolderCount));
    lines.add("Files visited: " + lines.grouped(visitedFileCount));
    if (volume) {
        lines.add("Free at scan start: " + lines.size(volume->free));
        lines.add("Volume total: " + lines.size(volume->total));
    }
    addLargestItems(lines, root);
    addLargestFiles(lines, largestFiles);
    return lines.joined();
}

}  // namespace veldan
