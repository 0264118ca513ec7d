#include "cli/DevText.hpp"

#include <ctime>

#include "cli/NumberText.hpp"
#include "devcleanup/DevCleanupKind.hpp"
#include "scan/SizeText.hpp"

namespace veldan::cli {

namespace {

constexpr int yellow = 33;
constexpr int green = 32;
constexpr const char* incompleteNote =
    "Some contents could not be measured. Scan again before moving this folder to Trash.";

std::string plural(int64_t count, const std::string& one, const std::string& many) {
    return groupedNumber(count) + " " + (count == 1 ? one : many);
}

// The folder's own last modification, as a local date.
std::string modifiedDate(int64_t seconds) {
    const std::time_t time = seconds;
    std::tm local{};
    if (!::localtime_r(&time, &local)) return "unknown date";
    char text[16];
    std::strftime(text, sizeof text, "%Y-%m-%d", &local);
    return text;
}

void writeItem(std::ostream& out, const DevCleanupItem& item, const DevTextOptions& options,
               const Style& style) {
    out << "  ";
    if (options.selection) {
        out << (options.selection->contains(item.path) ? style.color(yellow, "trash")
                                                       : style.color(green, "keep "))
            << "  ";
    }
    const std::string size = SizeText::string(item.bytes);
    out << std::string(size.size() < 7 ? 7 - size.size() : 0, ' ') << size << "  "
        << modifiedDate(item.modifiedSeconds) << "  " << Terminal::display(item.path) << '\n';
    if (item.unreadableItems > 0) out << "      " << style.color(yellow, incompleteNote) << '\n';
}

}  // namespace

std::string foldersText(int64_t count, int64_t bytes) {
    return plural(count, "folder", "folders") + " (" + SizeText::string(bytes) + ")";
}

void writeDevItems(std::ostream& out, const DevCleanupResult& result, const DevListing& listing,
                   const DevTextOptions& options) {
    const Style style(options.color);
    out << style.bold("Generated folders in " + Terminal::display(result.scope)) << '\n'
        << style.dim("Large dependency trees are measured once.") << '\n';
    if (!options.filterDescription.empty()) {
        out << "Showing " << groupedNumber(static_cast<int64_t>(listing.shown.size())) << " of "
            << plural(static_cast<int64_t>(result.items.size()), "folder", "folders") << " ("
            << options.filterDescription << ")\n";
    }
    const DevCleanupItem* previous = nullptr;
    for (size_t i = 0; i < listing.shown.size(); ++i) {
        const DevCleanupItem& item = *listing.shown[i];
        if (!previous || previous->kind != item.kind) {
            std::vector<const DevCleanupItem*> group;
            for (size_t j = i; j < listing.shown.size() && listing.shown[j]->kind == item.kind; ++j)
                group.push_back(listing.shown[j]);
            const auto count = static_cast<int64_t>(group.size());
            out << '\n'
                << style.bold(std::string(devCleanupKindRule(item.kind).label) + " \u00b7 " +
                              plural(count, "folder", "folders") + " \u00b7 " +
                              SizeText::string(DevCleanupResult::unionBytes(std::move(group))))
                << '\n';
        }
        writeItem(out, item, options, style);
        previous = &item;
    }
    out << '\n';
    if (result.items.empty()) {
        out << "No generated folders found.\n";
    } else if (listing.shown.empty()) {
        out << "No generated folders match the filter.\n";
    }
    out << style.bold("Total: " + SizeText::string(listing.shownBytes) + " in " +
                      plural(static_cast<int64_t>(listing.shown.size()), "folder", "folders"))
        << '\n';
    if (listing.overlaps) out << "Overlapping folders are counted once in the total above.\n";
    if (result.unreadableItems > 0) {
        out << style.dim(plural(result.unreadableItems, "item", "items") +
                         " could not be read; folders with unread contents cannot be moved "
                         "until a new scan measures them completely.")
            << '\n';
    }
}

void writeDevReport(std::ostream& out, const DevCleanupReport& report, bool color) {
    const Style style(color);
    const int64_t moved = report.movedCount();
    const auto total = static_cast<int64_t>(report.moves.size());
    out << '\n'
        << style.bold(moved == total ? "Folders moved to Trash" : "Some folders stayed in place")
        << '\n';
    for (const auto& move : report.moves) {
        out << "  " << Terminal::display(move.path) << "  "
            << style.color(move.moved ? green : yellow, "\u2014 " + Terminal::display(move.detail))
            << '\n';
    }
    out << foldersText(moved, report.bytesMoved)
        << " moved to Trash. Folders in Trash still use disk space until you empty it.\n";
    if (moved < total)
        out << "Some folders could not be moved. Scan again before selecting more.\n";
}

}  // namespace veldan::cli
