#include "cli/DuplicatesText.hpp"

#include <algorithm>
#include <limits>

#include "cli/NumberText.hpp"
#include "scan/SizeText.hpp"

namespace veldan::cli {

namespace {

constexpr int yellow = 33;
constexpr int green = 32;

int64_t saturatingAdd(int64_t a, int64_t b) {
    int64_t sum = 0;
    return __builtin_add_overflow(a, b, &sum) ? std::numeric_limits<int64_t>::max() : sum;
}

std::string plural(int64_t count, const std::string& one, const std::string& many) {
    return groupedNumber(count) + " " + (count == 1 ? one : many);
}

void writeSummary(std::ostream& out, const DuplicateScanResult& result, const Style& style) {
    out << style.bold("Duplicates in " + Terminal::display(result.scope)) << '\n';
    out << plural(result.filesVisited, "file", "files") << " checked \u00b7 "
        << plural(static_cast<int64_t>(result.groups.size()), "group", "groups") << " of copies";
    if (result.unreadableFiles > 0) {
        out << " \u00b7 " << plural(result.unreadableFiles, "item", "items")
            << " could not be read";
    }
    out << '\n'
        << style.dim(
               "Files smaller than 1 MB and package contents are excluded. Matches have full "
               "SHA-256 verification.")
        << "\n";
}

// The word in front of a copy when a selection is shown, padded to one width.
std::string copyMarker(bool selected, const Style& style) {
    return selected ? style.color(yellow, "trash") : style.color(green, "keep ");
}

void writeGroup(std::ostream& out, const DuplicateScanResult& result, const DuplicateGroup& group,
                const DuplicatesTextOptions& options, const Style& style) {
    out << '\n'
        << style.bold(SizeText::string(group.bytesPerFile) + " each \u00b7 " +
                      plural(static_cast<int64_t>(group.files.size()), "copy", "copies") +
                      " \u00b7 " + SizeText::string(group.extraBytes()) + " extra")
        << '\n';
    for (const auto& file : group.files) {
        out << "  ";
        if (options.selection) {
            const bool selected = options.selection->contains(file.path);
            out << copyMarker(selected, style) << "  " << Terminal::display(file.path);
            if (!selected) {
                if (auto reason = DuplicateSelection::finderOnlyReason(file, result.scope)) {
                    out << "  " << style.dim("\u2014 " + *reason);
                }
            }
        } else {
            out << Terminal::display(file.path);
        }
        out << '\n';
    }
}

}  // namespace

std::string copiesText(int64_t count, int64_t bytes) {
    return plural(count, "copy", "copies") + " (" + SizeText::string(bytes) + ")";
}

int64_t selectedBytes(const DuplicateScanResult& result, const DuplicatePathSet& selection) {
    int64_t bytes = 0;
    for (const auto& path : selection) {
        const auto found = result.fileBytesByPath.find(path);
        if (found != result.fileBytesByPath.end()) bytes = saturatingAdd(bytes, found->second);
    }
    return bytes;
}

void writeDuplicateGroups(std::ostream& out, const DuplicateScanResult& result,
                          const std::vector<DuplicateGroup>& shown,
                          const DuplicatesTextOptions& options) {
    const Style style(options.color);
    writeSummary(out, result, style);
    if (!options.filterDescription.empty()) {
        int64_t shownExtra = 0;
        for (const auto& group : shown)
            shownExtra = saturatingAdd(shownExtra, group.extraBytes());
        out << "Showing " << groupedNumber(static_cast<int64_t>(shown.size())) << " of "
            << plural(static_cast<int64_t>(result.groups.size()), "group", "groups") << " ("
            << options.filterDescription << "), " << SizeText::string(shownExtra) << " extra\n";
    }
    for (const auto& group : shown)
        writeGroup(out, result, group, options, style);
    out << '\n';
    if (result.groups.empty()) {
        out << "No duplicate files found.\n";
    } else if (shown.empty()) {
        out << "No groups match the filter.\n";
    }
    out << style.bold("Extra verified copies: " + SizeText::string(result.extraBytes)) << '\n'
        << style.dim(
               "Total file size of extra verified copies. APFS copies may share physical "
               "blocks, so this is not a space savings estimate.")
        << '\n';
    if (options.selection) {
        out << '\n'
            << "Smart select would move "
            << copiesText(static_cast<int64_t>(options.selection->size()),
                          selectedBytes(result, *options.selection))
            << " to Trash and keep at least one copy of every group.\n"
            << style.dim(
                   "APFS copies may share blocks, so actual space recovered can be lower. "
                   "Hidden, Library, and system files stay Finder-only.")
            << '\n';
    }
}

void writeDuplicateTrashReport(std::ostream& out, const DuplicateTrashReport& report, bool color) {
    const Style style(color);
    out << '\n' << style.bold(report.title()) << '\n';
    for (const auto& outcome : report.outcomes) {
        const std::string detail = "\u2014 " + Terminal::display(outcome.detail);
        out << "  " << Terminal::display(outcome.path) << "  "
            << style.color(outcome.moved ? green : yellow, detail) << '\n';
    }
    out << plural(report.movedCount(), "copy", "copies") << " moved to Trash, "
        << SizeText::string(report.logicalBytesMoved)
        << ". Logical size; files remain in Trash until it is emptied.\n"
        << style.dim(
               "Files in Trash still use disk space until you empty it. APFS copies may "
               "already share blocks, so recovered space can be lower than the logical "
               "size shown.")
        << '\n';
}

}  // namespace veldan::cli
