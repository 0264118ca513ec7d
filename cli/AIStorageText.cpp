#include "cli/AIStorageText.hpp"

#include <algorithm>

#include "aistorage/AIStorageCleanupExecutor.hpp"
#include "aistorage/AIStorageScanner.hpp"
#include "cli/NumberText.hpp"
#include "cli/Terminal.hpp"
#include "scan/SaturatingAdd.hpp"
#include "scan/SizeText.hpp"

namespace veldan::cli {

namespace {

constexpr int yellow = 33;
constexpr int green = 32;

std::string padded(const std::string& displayText, size_t columns) {
    const size_t used = Terminal::columns(displayText);
    return displayText + std::string(used < columns ? columns - used : 0, ' ');
}

// A check box where a location can move to Trash, as on the screen.
std::string marker(const AIStorageLocation& location, const AIStorageSelection* selection) {
    if (!AIStorageScanner::isApprovedCleanupLocation(location)) return "   ";
    return selection && selection->paths().contains(location.path) ? "[x]" : "[ ]";
}

void writeLocation(std::ostream& out, const AIStorageLocation& location, size_t labelWidth,
                   const AIStorageSelection* selection, const Style& style) {
    constexpr size_t kindWidth = 14;  // "Workspace data"
    constexpr size_t sizeWidth = 9;
    const std::string size =
        location.status == AIStorageStatus::measured ? SizeText::string(location.bytes) : "\u2014";
    out << "  " << marker(location, selection) << ' '
        << padded(Terminal::display(location.label), labelWidth) << "  "
        << padded(std::string(aiStorageKindName(location.kind)), kindWidth) << "  "
        << std::string(sizeWidth - std::min(sizeWidth, Terminal::columns(size)), ' ') << size
        << "  " << Terminal::display(location.path);
    if (const auto status = location.statusText(); !status.empty()) {
        out << "  " << style.color(yellow, "\u2014 " + status);
    }
    out << '\n';
    for (const auto& note : location.notes())
        out << "      " << style.dim(note) << '\n';
}

}  // namespace

std::string locationCountText(int64_t count, int64_t bytes) {
    return groupedNumber(count) + (count == 1 ? " location" : " locations") + " (" +
           SizeText::string(bytes) + ")";
}

void writeAIStorage(std::ostream& out, const AIStorageSnapshot& snapshot,
                    const AIStorageSelection* selection, bool color) {
    const Style style(color);
    if (snapshot.groups.empty()) {
        out << style.bold("No AI storage found") << '\n'
            << "Add a custom folder if your tools store data elsewhere.\n";
        return;
    }
    size_t labelWidth = 0;
    int64_t locations = 0;
    int64_t cleanable = 0;
    int64_t cleanableBytes = 0;
    for (const auto& group : snapshot.groups) {
        for (const auto& location : group.locations) {
            labelWidth = std::max(labelWidth, Terminal::columns(Terminal::display(location.label)));
            ++locations;
            if (AIStorageScanner::isApprovedCleanupLocation(location)) {
                ++cleanable;
                cleanableBytes = saturatingAdd(cleanableBytes, location.bytes);
            }
        }
    }
    out << style.bold("AI storage \u00b7 " + SizeText::string(snapshot.bytes()) + " in " +
                      groupedNumber(locations) + (locations == 1 ? " location" : " locations"))
        << '\n'
        << style.dim(
               "Measured read-only. Only caches and logs [ ] can move to Trash; models, "
               "conversations, workspace data, settings, and folders you added stay in place.")
        << '\n';
    for (const auto& group : snapshot.groups) {
        out << '\n'
            << style.bold(group.tool.name + " \u00b7 " + SizeText::string(group.bytes())) << '\n';
        for (const auto& location : group.locations)
            writeLocation(out, location, labelWidth, selection, style);
    }
    out << '\n';
    if (snapshot.unreadableItems > 0) {
        out << groupedNumber(snapshot.unreadableItems)
            << (snapshot.unreadableItems == 1 ? " entry" : " entries")
            << " could not be read and are left out of the sizes.\n";
    }
    if (cleanable == 0) {
        out << "No cache or log location holds anything that can move to Trash.\n";
    } else if (selection) {
        int64_t selectedBytes = 0;
        for (const auto& location : selection->locations(snapshot))
            selectedBytes = saturatingAdd(selectedBytes, location.bytes);
        out << "Selected "
            << locationCountText(static_cast<int64_t>(selection->paths().size()), selectedBytes)
            << " of " << locationCountText(cleanable, cleanableBytes)
            << " that can move to Trash.\n";
    } else {
        out << "Caches and logs that can move to Trash: "
            << locationCountText(cleanable, cleanableBytes)
            << ". Choose them with --select caches, logs or their paths, and add --trash.\n";
    }
}

void writeAIStorageReport(std::ostream& out, const AIStorageCleanupReport& report, bool color) {
    const Style style(color);
    out << '\n' << style.bold(report.title()) << '\n' << report.detail() << '\n';
    for (const auto& move : report.moves) {
        out << "  " << Terminal::display(move.path) << "  "
            << style.color(move.moved ? green : yellow, "\u2014 " + Terminal::display(move.detail))
            << '\n';
    }
    out << style.dim(AIStorageCleanupExecutor::mayRecreateNote) << '\n'
        << AIStorageCleanupReport::refreshPrompt << '\n';
}

}  // namespace veldan::cli
