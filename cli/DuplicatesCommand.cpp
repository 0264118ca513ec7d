// `veldan duplicates [PATH]`: finds verified copies of files and, when asked, moves the
// extra copies that smart select picks to the Trash.

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>

#include "app/CleanupAftermath.hpp"
#include "cli/CommandRegistry.hpp"
#include "cli/CommandScan.hpp"
#include "cli/Confirmation.hpp"
#include "cli/DuplicatesJson.hpp"
#include "cli/DuplicatesText.hpp"
#include "cli/Interrupt.hpp"
#include "cli/NumberText.hpp"
#include "cli/ProgressLine.hpp"
#include "cli/Terminal.hpp"
#include "duplicates/DuplicateGroupFilterCache.hpp"
#include "duplicates/DuplicateScanner.hpp"
#include "duplicates/DuplicateSelection.hpp"
#include "duplicates/DuplicateTrashExecutor.hpp"
#include "platform/BackgroundWorkActivity.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan::cli {

namespace {

struct DuplicatesOptions {
    std::string path = ".";
    std::string minimumExtra;
    std::string query;
    std::string select;
    bool json = false;
    bool trash = false;
    bool yes = false;
};

int64_t minimumExtraBytes(const std::string& choice) {
    if (choice == "10MB") return DuplicateGroupFilterCache::tenMegabytes;
    if (choice == "100MB") return DuplicateGroupFilterCache::hundredMegabytes;
    if (choice == "1GB") return DuplicateGroupFilterCache::oneGigabyte;
    return DuplicateGroupFilterCache::allSizes;
}

std::string filterDescription(int64_t minimum, const std::string& query) {
    std::string text;
    if (minimum > 0) text = std::string(DuplicateGroupFilterCache::minimumLabel(minimum));
    if (!query.empty()) {
        if (!text.empty()) text += ", ";
        text += "matching \u201c" + Terminal::display(query) + "\u201d";
    }
    return text;
}

std::string progressText(DuplicateScanPhase phase, int64_t completed, int64_t total) {
    std::string text(duplicateScanPhaseLabel(phase));
    if (phase == DuplicateScanPhase::collecting) {
        return text + "  " + groupedNumber(completed) + (completed == 1 ? " file" : " files");
    }
    return text + "  " + groupedNumber(completed) + " of " + groupedNumber(total);
}

// Asks on the terminal; anything but yes keeps every file where it is.
bool confirmMove(int64_t count, int64_t bytes) {
    std::cerr << "Veldan will verify each selected file and an unchanged copy again before moving "
                 "anything. Changed or unreadable files will stay in place.\n";
    return askYesNo("Move " + copiesText(count, bytes) + " to Trash?");
}

DuplicateTrashReport moveSelection(const DuplicateScanResult& result,
                                   const DuplicatePathSet& selection) {
    // The move is never abandoned half-way; Ctrl-C is held until the report is ready.
    ScanCancellation ignored;
    InterruptScope holdInterrupts(ignored);
    platform::BackgroundWorkActivity busy;
    busy.update(true);
    ProgressLine progressLine;
    DuplicateTrashExecutor::Progress progress;
    if (progressLine.active()) {
        progress = [&](int64_t done, int64_t total) {
            progressLine.show("Moving verified copies to Trash  " + groupedNumber(done) + " of " +
                              groupedNumber(total));
        };
    }
    auto report = DuplicateTrashExecutor(CleanupAftermath::changedPathsSink())
                      .run(result, selection, progress);
    progressLine.clear();
    CleanupAftermath::recordTrash("Duplicate copies", report.logicalBytesMoved,
                                  report.movedCount());
    CleanupAftermath::finishWriting();
    return report;
}

int finish(std::ostream& out) {
    out.flush();
    return out.good() ? exitSuccess : exitFailure;
}

int runDuplicates(const DuplicatesOptions& options) {
    // Paths are kept resolved, so the move's check that no folder of a path has become a
    // link holds for every copy found.
    const std::string root = commandRoot(options.path);
    if (reportRootProblem(root)) return exitFailure;
    if (options.trash && !options.yes &&
        !(Terminal::isTerminal(stdin) && Terminal::isTerminal(stderr))) {
        std::cerr << "veldan: Moving copies to Trash needs a confirmation on a terminal; add --yes "
                     "to move them without asking.\n";
        return exitFailure;
    }

    std::optional<DuplicateScanResult> result;
    {
        ScanCancellation cancellation;
        InterruptScope interrupt(cancellation);
        platform::BackgroundWorkActivity busy;
        busy.update(true);
        ProgressLine progressLine;
        DuplicateScanProgress progress;
        if (progressLine.active()) {
            progress = [&](DuplicateScanPhase phase, int64_t completed, int64_t total) {
                progressLine.show(progressText(phase, completed, total));
            };
        }
        result = DuplicateScanner().scan(root, cancellation, progress);
        progressLine.clear();
        if (!result) {
            if (cancellation.cancelled()) {
                std::cerr << "Duplicate search stopped before it finished; nothing was moved.\n";
                return exitInterrupted;
            }
            std::cerr << "veldan: Veldan cannot read " << Terminal::display(root)
                      << "; choose another folder.\n";
            return exitFailure;
        }
    }

    const int64_t minimum = minimumExtraBytes(options.minimumExtra);
    const std::string query = DuplicateGroupFilterCache::trimmedQuery(options.query);
    DuplicateGroupFilterCache filter;
    const auto& shown = filter.visible(*result, query, minimum);
    const bool showSelection = options.trash || options.select == "smart";
    DuplicatePathSet selection;
    if (showSelection) {
        for (const auto& group : shown)
            selection.merge(DuplicateSelection::smartSelect(group, result->scope));
    }

    std::optional<DuplicateTrashReport> report;
    if (!options.json) {
        DuplicatesTextOptions text;
        text.color = Terminal::wantsColor(stdout);
        text.filterDescription = filterDescription(minimum, query);
        text.selection = showSelection ? &selection : nullptr;
        writeDuplicateGroups(std::cout, *result, shown, text);
        std::cout.flush();
    }
    if (options.trash) {
        if (selection.empty()) {
            std::cerr
                << "Smart select found no copies that can move to Trash; nothing was moved.\n";
        } else if (!options.yes && !confirmMove(static_cast<int64_t>(selection.size()),
                                                selectedBytes(*result, selection))) {
            std::cerr << "Nothing was moved.\n";
        } else {
            report = moveSelection(*result, selection);
            if (!options.json)
                writeDuplicateTrashReport(std::cout, *report, Terminal::wantsColor(stdout));
        }
    }
    if (options.json) {
        DuplicatesJsonParts parts;
        parts.minimumExtraBytes = minimum;
        parts.query = query;
        parts.selection = showSelection ? &selection : nullptr;
        parts.report = report ? &*report : nullptr;
        writeJson(std::cout, duplicatesJson(*result, shown, parts));
        std::cout << '\n';
    }
    const int status = finish(std::cout);
    if (report && report->movedCount() != static_cast<int64_t>(report->outcomes.size())) {
        return exitFailure;
    }
    return status;
}

const CommandRegistration registration{
    "duplicates", 30, [](CLI::App& app) -> CommandRunner {
        auto options = std::make_shared<DuplicatesOptions>();
        auto* sub = app.add_subcommand(
            "duplicates", "Find verified copies of files and move extra ones to Trash");
        sub->add_option("path", options->path, "Folder to search (default: the current folder)");
        sub->add_option("--min-extra", options->minimumExtra,
                        "Show only groups whose extra copies take at least 10MB, 100MB or 1GB")
            ->check(CLI::IsMember({"10MB", "100MB", "1GB"}));
        sub->add_option("--query", options->query,
                        "Find groups by any copy\u2019s name or path. Each matching group shows "
                        "all its copies.");
        sub->add_option("--select", options->select,
                        "Show which copies smart select would move and which it keeps")
            ->check(CLI::IsMember({"smart"}));
        sub->add_flag(
            "--trash", options->trash,
            "Move the copies smart select picks to the Trash, after verifying them again");
        sub->add_flag("--yes", options->yes, "Move without asking for confirmation (with --trash)");
        sub->add_flag("--json", options->json, "Print the groups as JSON for scripts");
        return [options] { return runDuplicates(*options); };
    }};

}  // namespace

}  // namespace veldan::cli
