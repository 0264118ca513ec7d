#include "cli/ActivityText.hpp"

#include <algorithm>

#include "activity/ActivityTracker.hpp"
#include "platform/LocaleFormat.hpp"
#include "platform/Paths.hpp"
#include "scan/SizeText.hpp"

namespace veldan::cli {

namespace {

constexpr int barColumns = 24;
constexpr const char* reviewHint = "\u00b7 installers older than a week or very large files";

// `share` of `barColumns`, drawn with eighth blocks so that close days still differ.
std::string bar(int64_t value, int64_t largest) {
    if (value <= 0 || largest <= 0) return {};
    const auto eighths = static_cast<int64_t>(static_cast<long double>(value) /
                                              static_cast<long double>(largest) * barColumns * 8);
    static const char* const partial[] = {"",       "\u258F", "\u258E", "\u258D",
                                          "\u258C", "\u258B", "\u258A", "\u2589"};
    std::string text;
    for (int64_t i = 0; i < eighths / 8; ++i)
        text += "\u2588";
    text += partial[eighths % 8];
    // Any free space at all shows as something.
    return text.empty() ? "\u258F" : text;
}

std::string padded(const std::string& text, size_t columns) {
    const size_t used = Terminal::columns(text);
    return used >= columns ? text : text + std::string(columns - used, ' ');
}

// Sizes line up on their right edge ("  4 KB", "2.1 GB").
std::string sizeColumn(int64_t bytes) {
    const std::string size = SizeText::string(bytes);
    return std::string(size.size() < 9 ? 9 - size.size() : 0, ' ') + size;
}

void writeSnapshots(std::ostream& out, const ActivityArchive& history,
                    const platform::LocaleFormat& locale, const Style& style) {
    out << style.bold("Free space on the startup disk") << '\n';
    if (history.snapshots.empty()) {
        out << "  No daily figures yet. A complete scan of the startup disk (veldan scan /) or "
               "veldan activity check --force records today's.\n";
        return;
    }
    int64_t largest = 0;
    size_t dateColumns = 0;
    for (const auto& snapshot : history.snapshots) {
        largest = std::max(largest, snapshot.freeBytes);
        dateColumns =
            std::max(dateColumns, Terminal::columns(locale.abbreviatedDate(snapshot.checkedAt)));
    }
    for (const auto& snapshot : history.snapshots) {
        out << "  " << padded(locale.abbreviatedDate(snapshot.checkedAt), dateColumns) << "  "
            << sizeColumn(snapshot.freeBytes) << "  " << bar(snapshot.freeBytes, largest) << '\n';
    }
    if (auto change = history.latestChangeInFreeSpace()) {
        out << "  " << freeSpaceChangeText(*change) << '\n';
    }
}

void writeDownloads(std::ostream& out, const ActivityArchive& history,
                    const ActivityTextOptions& options, const platform::LocaleFormat& locale,
                    const Style& style) {
    out << style.bold("Recent downloads") << '\n';
    if (history.downloads.empty()) {
        out << "  "
            << (history.lastDailyCheckAt ? "Nothing was added to Downloads in the 30 days before "
                                           "the last check."
                                         : "Not listed yet.")
            << '\n';
        return;
    }
    size_t nameColumns = 0;
    for (const auto& download : history.downloads) {
        nameColumns = std::max(
            nameColumns,
            Terminal::columns(Terminal::display(platform::lastPathComponent(download.path))));
    }
    nameColumns =
        std::min(nameColumns, static_cast<size_t>(std::clamp(options.width - 40, 20, 60)));
    bool anyReview = false;
    for (const auto& download : history.downloads) {
        const bool review = download.wantsReview(options.now);
        anyReview = anyReview || review;
        const std::string name = Terminal::fit(
            Terminal::display(platform::lastPathComponent(download.path)), nameColumns);
        const std::string cell = padded(name, nameColumns);
        out << "  " << (review ? style.bold(cell) : cell) << "  " << sizeColumn(download.bytes)
            << "  " << locale.abbreviatedDate(download.addedAt) << (review ? "  \u2190 review" : "")
            << '\n';
    }
    if (anyReview) out << "  \u2190 review " << reviewHint << '\n';
    if (history.lastDailyCheckAt) {
        out << style.dim("  Listed " + locale.abbreviatedDateTime(*history.lastDailyCheckAt) +
                         "; move one with veldan activity trash-download PATH.")
            << '\n';
    }
}

void writeActivities(std::ostream& out, const ActivityArchive& history,
                     const platform::LocaleFormat& locale, const Style& style) {
    out << style.bold("Cleanup history") << '\n';
    if (history.activities.empty()) {
        out << "  No cleanups recorded yet.\n";
        return;
    }
    for (const auto& activity : history.activities) {
        out << "  " << locale.abbreviatedDateTime(activity.date) << "  "
            << Terminal::display(activity.title) << " \u2014 ";
        if (activity.kind == CleanupActivity::Kind::toolCleanup) {
            out << "tool cleanup\n";
        } else {
            out << SizeText::string(activity.bytes) << " in " << activity.count
                << (activity.count == 1 ? " item" : " items") << " moved to Trash\n";
        }
    }
    out << "  Total: " << SizeText::string(history.totalMovedToTrashBytes) << " in "
        << history.totalMovedToTrashItems
        << (history.totalMovedToTrashItems == 1 ? " item" : " items") << " moved to Trash, "
        << history.totalToolCleanups
        << (history.totalToolCleanups == 1 ? " tool cleanup" : " tool cleanups") << ".\n";
}

}  // namespace

std::string freeSpaceChangeText(int64_t change) {
    // The magnitude of INT64_MIN does not fit; one byte less is the same text.
    const int64_t magnitude = change < 0 ? (change == INT64_MIN ? INT64_MAX : -change) : change;
    return std::string(change < 0 ? "\u2212" : "+") + SizeText::string(magnitude) +
           " free since the previous check";
}

void writeActivityText(std::ostream& out, const ActivityArchive& history,
                       const ActivityTextOptions& options, const Style& style) {
    const auto locale = platform::LocaleFormat::system();
    writeSnapshots(out, history, locale, style);
    out << '\n';
    writeDownloads(out, history, options, locale, style);
    out << '\n';
    writeActivities(out, history, locale, style);
    out << '\n';
    if (!options.dailyEnabled) {
        out << "Daily check: off (turn it on with veldan activity daily on).\n";
    } else if (history.lastDailyCheckAt && !options.dailyDue) {
        out << "Daily check: on; next due after "
            << locale.abbreviatedDateTime(*history.lastDailyCheckAt +
                                          ActivityTracker::dailyInterval)
            << ".\n";
    } else {
        out << "Daily check: on; due now (veldan activity check).\n";
    }
    out << ActivityTracker::recordedLocallyNote << '\n';
}

}  // namespace veldan::cli
