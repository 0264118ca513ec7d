#include "cli/ScanReportText.hpp"

#include <algorithm>
#include <vector>

#include "cli/NumberText.hpp"
#include "platform/Paths.hpp"
#include "scan/OpaqueFolderPolicy.hpp"
#include "scan/ScanIssueReason.hpp"
#include "scan/SizeText.hpp"

namespace veldan::cli {

namespace {

struct TreeLine {
    std::string size;
    std::string share;
    std::string label;  // tree prefix and display name
    std::string category;
    std::string note;
    bool isRoot = false;
};

void collect(const DiskNode& node, int64_t parentBytes, const std::string& prefix, bool isLast,
             int depth, const ScanTextOptions& options, std::vector<TreeLine>& lines) {
    TreeLine line;
    line.size = SizeText::string(node.bytes, true);
    line.share = depth == 0 ? "" : SizeText::share(node.bytes, parentBytes);
    line.isRoot = depth == 0;
    const std::string branch = depth == 0 ? "" : (isLast ? "\u2514\u2500 " : "\u251c\u2500 ");
    line.label = prefix + branch + Terminal::display(depth == 0 ? node.path : node.name);
    line.category = std::string(title(node.category));
    if (node.isSummary) {
        line.note = "smaller items, grouped";
    } else if (node.isDirectory && node.children.empty() && depth > 0) {
        if (auto kind = OpaqueFolderPolicy::kind(node.path, options.home)) {
            line.note = std::string(OpaqueFolderPolicy::label(*kind));
        }
    }
    if (node.isPartial) line.note += line.note.empty() ? "partly measured" : ", partly measured";
    lines.push_back(std::move(line));
    if (depth >= options.depth) return;
    const std::string childPrefix = depth == 0 ? "" : prefix + (isLast ? "   " : "\u2502  ");
    for (size_t i = 0; i < node.children.size(); ++i) {
        collect(node.children[i], node.bytes, childPrefix, i + 1 == node.children.size(), depth + 1,
                options, lines);
    }
}

std::string padLeft(const std::string& text, size_t width) {
    const size_t columns = Terminal::columns(text);
    return columns >= width ? text : std::string(width - columns, ' ') + text;
}

std::string padRight(const std::string& text, size_t width) {
    const size_t columns = Terminal::columns(text);
    return columns >= width ? text : text + std::string(width - columns, ' ');
}

}  // namespace

void writeScanHeader(std::ostream& out, const std::string& scope, const ScanSnapshot& snapshot,
                     const Style& style) {
    out << style.bold("Scope") << "   " << Terminal::display(scope);
    // A folder named through a link keeps its name; where it leads is shown beside it.
    if (const std::string resolved = platform::resolveSymlinks(scope); resolved != scope) {
        out << " \u2192 " << Terminal::display(resolved);
    }
    out << '\n';
    out << style.bold("Mapped") << "  " << SizeText::string(snapshot.root.bytes) << " in "
        << groupedNumber(snapshot.visitedFolderCount) << " folders and "
        << groupedNumber(snapshot.visitedFileCount) << " files\n";
    out << style.bold("Volume") << "  ";
    if (snapshot.volume.total >= 1) {
        out << SizeText::string(snapshot.volume.free) << " free of "
            << SizeText::string(snapshot.volume.total) << '\n';
    } else {
        out << "capacity unavailable\n";
    }
}

void writeTree(std::ostream& out, const DiskNode& root, const ScanTextOptions& options) {
    std::vector<TreeLine> lines;
    collect(root, root.bytes, "", true, 0, options, lines);
    const Style style(options.color);
    size_t sizeWidth = 0;
    size_t labelWidth = 0;
    for (const auto& line : lines) {
        sizeWidth = std::max(sizeWidth, line.size.size());
        if (!line.isRoot) labelWidth = std::max(labelWidth, Terminal::columns(line.label));
    }
    labelWidth = std::min<size_t>(labelWidth, 56);
    for (const auto& line : lines) {
        out << padLeft(line.size, sizeWidth) << "  " << padLeft(line.share, 4) << "  ";
        if (line.isRoot) {
            out << style.bold(line.label) << "  " << style.dim(line.category);
        } else {
            out << padRight(line.label, labelWidth) << "  " << style.dim(line.category);
        }
        if (!line.note.empty()) out << style.dim(" \u00b7 " + line.note);
        out << '\n';
    }
}

void writeLargestFiles(std::ostream& out, const ScanSnapshot& snapshot, const Style& style) {
    if (snapshot.largestFiles.empty()) return;
    out << '\n' << style.bold("Largest files (100 MB or more)") << '\n';
    size_t width = 0;
    for (const auto& file : snapshot.largestFiles) {
        width = std::max(width, SizeText::string(file.bytes, true).size());
    }
    for (const auto& file : snapshot.largestFiles) {
        out << "  " << padLeft(SizeText::string(file.bytes, true), width) << "  "
            << Terminal::display(file.path) << '\n';
    }
}

void writeUnreadable(std::ostream& out, const ScanSnapshot& snapshot, const Style& style) {
    if (snapshot.unreadableItems > 0) {
        out << '\n'
            << style.bold("Could not read " + groupedNumber(snapshot.unreadableItems) +
                          (snapshot.unreadableItems == 1 ? " item" : " items"));
        if (static_cast<int64_t>(snapshot.unreadablePaths.size()) < snapshot.unreadableItems) {
            out << style.dim(" (showing " + std::to_string(snapshot.unreadablePaths.size()) + ")");
        }
        out << '\n';
        for (const auto& path : snapshot.unreadablePaths) {
            out << "  " << Terminal::display(path);
            if (snapshot.unreadableReasons) {
                auto found = snapshot.unreadableReasons->find(path);
                if (found != snapshot.unreadableReasons->end()) {
                    out << " \u2014 " << found->second;
                }
            }
            out << '\n';
        }
    }
    if (snapshot.skippedPhotosLibraries > 0) {
        out << "Photos libraries: " << groupedNumber(snapshot.skippedPhotosLibraries)
            << ScanIssueReason::photosSkippedHint << '\n';
    }
    if (snapshot.skippedMusicLibraries > 0) {
        out << "Music libraries: " << groupedNumber(snapshot.skippedMusicLibraries)
            << ScanIssueReason::mediaSkippedHint << '\n';
    }
}

void writeScanText(std::ostream& out, const std::string& scope, const ScanSnapshot& snapshot,
                   const ScanTextOptions& options) {
    const Style style(options.color);
    writeScanHeader(out, scope, snapshot, style);
    out << '\n';
    writeTree(out, snapshot.root, options);
    writeLargestFiles(out, snapshot, style);
    writeUnreadable(out, snapshot, style);
}

}  // namespace veldan::cli
