// `veldan dev [PATH]`: finds generated developer folders (dependency trees, build
// output, Python environments), measures each once and, when asked, moves the selected
// ones to the Trash after checking each again.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "app/CleanupAftermath.hpp"
#include "cli/CommandRegistry.hpp"
#include "cli/CommandScan.hpp"
#include "cli/Confirmation.hpp"
#include "cli/DevJson.hpp"
#include "cli/DevListing.hpp"
#include "cli/DevText.hpp"
#include "cli/Interrupt.hpp"
#include "cli/NumberText.hpp"
#include "cli/ProgressLine.hpp"
#include "cli/Terminal.hpp"
#include "devcleanup/DevCleanupScanner.hpp"
#include "devcleanup/DevCleanupTrashExecutor.hpp"
#include "platform/BackgroundWorkActivity.hpp"

namespace veldan::cli {

namespace {

struct DevOptions {
    std::string path = ".";
    std::vector<std::string> kinds;
    std::string olderThan;
    std::vector<std::string> select;
    bool json = false;
    bool trash = false;
    bool yes = false;
};

std::string filterDescription(const DevFilter& filter) {
    std::string text;
    for (const auto kind : filter.kinds) {
        if (!text.empty()) text += ", ";
        text += devCleanupKindRule(kind).label;
    }
    if (filter.olderThanSeconds) {
        if (!text.empty()) text += "; ";
        text += "not modified for " + filter.olderThanText;
    }
    return text;
}

std::string scanProgressText(DevCleanupScanPhase phase, std::string_view label, int64_t completed,
                             int64_t total) {
    std::string text(label);
    if (phase == DevCleanupScanPhase::discovering) {
        return text + "  " + groupedNumber(completed) + " folders \u00b7 " + groupedNumber(total) +
               " found";
    }
    return text + "  " + groupedNumber(completed) + " of " + groupedNumber(total);
}

std::optional<DevCleanupResult> search(const std::string& root, bool& stopped) {
    ScanCancellation cancellation;
    InterruptScope interrupt(cancellation);
    platform::BackgroundWorkActivity busy;
    busy.update(true);
    ProgressLine progressLine;
    DevCleanupScanProgress progress;
    if (progressLine.active()) {
        progress = [&](DevCleanupScanPhase phase, std::string_view label, int64_t completed,
                       int64_t total) {
            progressLine.show(scanProgressText(phase, label, completed, total));
        };
    }
    auto result = DevCleanupScanner().scan(root, cancellation, progress);
    progressLine.clear();
    stopped = cancellation.cancelled();
    return result;
}

bool confirmMove(const std::vector<DevCleanupItem>& items) {
    std::vector<const DevCleanupItem*> selected;
    for (const auto& item : items)
        selected.push_back(&item);
    std::cerr << "Veldan will check each selected folder again before moving it; folders that "
                 "changed since this search stay in place.\n";
    return askYesNo("Move " +
                    foldersText(static_cast<int64_t>(items.size()),
                                DevCleanupResult::unionBytes(std::move(selected))) +
                    " to Trash?");
}

DevCleanupReport moveSelection(const std::vector<DevCleanupItem>& items, const std::string& scope) {
    // The move is never abandoned half-way; Ctrl-C is held until the report is ready.
    ScanCancellation ignored;
    InterruptScope holdInterrupts(ignored);
    platform::BackgroundWorkActivity busy;
    busy.update(true);
    ProgressLine progressLine;
    DevCleanupTrashExecutor::Progress progress;
    if (progressLine.active()) {
        progress = [&](int64_t done, int64_t total, DevCleanupMovePhase phase) {
            if (phase == DevCleanupMovePhase::finished || done >= total) return;
            const char* doing = phase == DevCleanupMovePhase::moving ? "Moving" : "Checking";
            progressLine.show(std::string(doing) + "  " + groupedNumber(done + 1) + " of " +
                              groupedNumber(total) + "  " +
                              Terminal::display(items[static_cast<size_t>(done)].path));
        };
    }
    const auto changedPaths = CleanupAftermath::changedPathsSink();
    const DevCleanupTrashExecutor executor(
        [&](const DevCleanupReport& report) { changedPaths(report.movedPaths()); });
    auto report = executor.run(items, scope, progress);
    progressLine.clear();
    CleanupAftermath::recordTrash("Generated folders", report.bytesMoved, report.movedCount());
    CleanupAftermath::finishWriting();
    return report;
}

int usage(const std::string& sentence) {
    std::cerr << "veldan: " << sentence << '\n';
    return exitUsage;
}

int runDev(const DevOptions& options) {
    DevFilter filter;
    for (const auto& name : options.kinds)
        filter.kinds.insert(*devCleanupKindNamed(name));  // CLI11 checked the names
    if (!options.olderThan.empty()) {
        filter.olderThanSeconds = parseAge(options.olderThan);
        if (!filter.olderThanSeconds) {
            return usage(
                "--older-than takes a number followed by d (days), h (hours) or w "
                "(weeks), like 30d.");
        }
        filter.olderThanText = options.olderThan;
    }
    if (options.trash && options.select.empty()) {
        return usage(
            "Choose what to move with --select all, a kind (node, rust, python, swift, "
            "next) or folder paths.");
    }
    if (options.trash && !options.yes &&
        !(Terminal::isTerminal(stdin) && Terminal::isTerminal(stderr))) {
        std::cerr << "veldan: Moving folders to Trash needs a confirmation on a terminal; add "
                     "--yes to move them without asking.\n";
        return exitFailure;
    }
    // Resolved, so the move's check that no folder of a path has become a link holds for
    // every folder found.
    const std::string root = commandRoot(options.path);
    if (reportRootProblem(root)) return exitFailure;

    bool stopped = false;
    const auto result = search(root, stopped);
    if (!result) {
        if (stopped) {
            std::cerr << "Search stopped before it finished; nothing was moved.\n";
            return exitInterrupted;
        }
        std::cerr << "veldan: Veldan couldn\u2019t read this folder. Check access or choose "
                     "another folder.\n";
        return exitFailure;
    }

    const DevListing listing = listItems(*result, filter, std::chrono::system_clock::now());
    const bool showSelection = !options.select.empty();
    DevSelection selection;
    std::set<std::string> selectedPaths;
    if (showSelection) {
        selection = selectItems(listing, options.select);
        if (!selection.problem.empty()) {
            std::cerr << "veldan: " << selection.problem << '\n';
            return exitFailure;
        }
        for (const auto& item : selection.items)
            selectedPaths.insert(item.path);
    }
    if (!options.json) {
        DevTextOptions text;
        text.color = Terminal::wantsColor(stdout);
        text.filterDescription = filterDescription(filter);
        text.selection = showSelection ? &selectedPaths : nullptr;
        writeDevItems(std::cout, *result, listing, text);
        std::cout.flush();
    }

    std::optional<DevCleanupReport> report;
    if (options.trash) {
        if (selection.items.empty()) {
            std::cerr << "No folders are selected; nothing was moved.\n";
        } else if (!options.yes && !confirmMove(selection.items)) {
            std::cerr << "Nothing was moved.\n";
        } else {
            report = moveSelection(selection.items, result->scope);
            if (!options.json) writeDevReport(std::cout, *report, Terminal::wantsColor(stdout));
        }
    }
    if (options.json) {
        JsonWriter writer(stdout);
        DevJsonParts parts;
        parts.filter = &filter;
        parts.selection = showSelection ? &selectedPaths : nullptr;
        parts.report = report ? &*report : nullptr;
        writeDevJson(writer, *result, listing, parts);
        writer.flush();
        if (writer.failed() || std::fputc('\n', stdout) == EOF || std::fflush(stdout) != 0)
            return exitFailure;
    }
    std::cout.flush();
    if (!std::cout.good()) return exitFailure;
    if (report && report->movedCount() != static_cast<int64_t>(report->moves.size()))
        return exitFailure;
    return exitSuccess;
}

const CommandRegistration registration{
    "dev", 35, [](CLI::App& app) -> CommandRunner {
        auto options = std::make_shared<DevOptions>();
        auto* sub = app.add_subcommand(
            "dev",
            "Find generated developer folders (node_modules, Cargo target, Python "
            "environments, SwiftPM .build, .next) and move selected ones to Trash");
        sub->add_option("path", options->path, "Folder to search (default: the current folder)");
        sub->add_option("--kind", options->kinds,
                        "Show only these kinds: node, rust, python, swift, next "
                        "(comma-separated)")
            ->delimiter(',')
            ->allow_extra_args(false)
            ->check(CLI::IsMember({"node", "rust", "python", "swift", "next"}));
        sub->add_option("--older-than", options->olderThan,
                        "Show only folders not modified for this long, like 30d, 12h or 2w");
        // One value per option, so that PATH after it stays PATH: several go comma-separated
        // or in repeated options.
        sub->add_option("--select", options->select,
                        "Folders to move: all, a kind, or folder paths (comma-separated, or "
                        "repeat the option); folders not measured completely are left out of "
                        "all and kinds")
            ->delimiter(',')
            ->allow_extra_args(false);
        sub->add_flag("--trash", options->trash,
                      "Move the selected folders to Trash, after checking each again");
        sub->add_flag("--yes", options->yes, "Move without asking for confirmation (with --trash)");
        sub->add_flag("--json", options->json, "Print the folders as JSON for scripts");
        return [options] { return runDev(*options); };
    }};

}  // namespace

}  // namespace veldan::cli
