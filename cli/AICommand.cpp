// `veldan ai`: measures what local AI tools store, read-only, and moves the caches and
// logs the user selects to the Trash after checking each one again. `ai add`, `ai remove`
// and `ai list-added` manage the folders the user added to the measurements.

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "aistorage/AIStorageCatalogue.hpp"
#include "aistorage/AIStorageCleanupExecutor.hpp"
#include "aistorage/AIStorageCustomLocations.hpp"
#include "aistorage/AIStorageScanner.hpp"
#include "aistorage/AIStorageSelection.hpp"
#include "app/CleanupAftermath.hpp"
#include "cli/AIStorageJson.hpp"
#include "cli/AIStorageText.hpp"
#include "cli/CommandRegistry.hpp"
#include "cli/Confirmation.hpp"
#include "cli/Interrupt.hpp"
#include "cli/NumberText.hpp"
#include "cli/ProgressLine.hpp"
#include "cli/Terminal.hpp"
#include "platform/Paths.hpp"
#include "platform/Preferences.hpp"
#include "scan/SaturatingAdd.hpp"

namespace veldan::cli {

namespace {

struct AIOptions {
    bool json = false;
    std::vector<std::string> select;
    bool trash = false;
    bool yes = false;
    // `ai add`, `ai remove`
    std::string path;
    std::string tool = "other";
    std::string kind = "appData";
};

int finish(std::ostream& out, int status = exitSuccess) {
    out.flush();
    return out.good() ? status : exitFailure;
}

std::optional<std::vector<AIStorageCustomLocation>> loadAdded() {
    auto added = AIStorageCustomLocations::load();
    if (!added) {
        std::cerr << "veldan: The list of folders you added in "
                  << Terminal::display(platform::Preferences::filePath())
                  << " cannot be read; Veldan leaves it unchanged.\n";
    }
    return added;
}

bool saveAdded(const std::vector<AIStorageCustomLocation>& added) {
    if (AIStorageCustomLocations::save(added)) return true;
    std::cerr << "veldan: Veldan could not save the list of folders you added to "
              << Terminal::display(platform::Preferences::filePath()) << ".\n";
    return false;
}

std::string toolAndKind(AIStorageToolID tool, AIStorageKind kind) {
    return std::string(aiStorageToolName(tool)) + " \u00b7 " + std::string(aiStorageKindName(kind));
}

// The index of the added folder `path` names: as written (it may have vanished) or with
// links resolved, as it was added.
std::optional<size_t> findAdded(const std::vector<AIStorageCustomLocation>& added,
                                const std::string& path) {
    for (const std::string& candidate :
         {platform::absolutePath(path), AIStorageCustomLocations::keyPath(path)}) {
        for (size_t i = 0; i < added.size(); ++i) {
            if (added[i].path == candidate) return i;
        }
    }
    return std::nullopt;
}

int runAdd(const AIOptions& options) {
    auto added = loadAdded();
    if (!added) return exitFailure;
    const auto tool = *aiStorageToolFromRawValue(options.tool);
    const auto kind = *aiStorageKindFromRawValue(options.kind);
    if (!AIStorageCustomLocations::add(*added, options.path, tool, kind,
                                       AIStorageCatalogue::tools())) {
        std::cerr << "veldan: " << Terminal::display(options.path) << ": "
                  << AIStorageCustomLocations::refusal << '\n';
        return exitFailure;
    }
    if (!saveAdded(*added)) return exitFailure;
    std::cout << "Added " << Terminal::display(added->back().path) << ": "
              << toolAndKind(tool, kind) << ".\n"
              << "This only adds the folder to Veldan\u2019s read-only measurements. Removing it "
                 "later will leave its files untouched.\n";
    return finish(std::cout);
}

int runRemove(const AIOptions& options) {
    auto added = loadAdded();
    if (!added) return exitFailure;
    const auto existing = findAdded(*added, options.path);
    if (!existing) {
        std::cerr << "veldan: " << Terminal::display(options.path)
                  << " is not a folder you added; see veldan ai list-added.\n";
        return exitFailure;
    }
    const std::string path = (*added)[*existing].path;
    AIStorageCustomLocations::remove(*added, path);
    if (!saveAdded(*added)) return exitFailure;
    std::cout << "Removed " << Terminal::display(path)
              << " from the measurements; its files stay untouched.\n";
    return finish(std::cout);
}

int runListAdded(const AIOptions& options) {
    const auto added = loadAdded();
    if (!added) return exitFailure;
    if (options.json) {
        writeJson(std::cout, customLocationsJson(*added));
        std::cout << '\n';
    } else if (added->empty()) {
        std::cout << "No folders added. Add one with veldan ai add PATH --tool ID --kind KIND.\n";
    } else {
        for (const auto& location : *added) {
            std::cout << Terminal::display(location.path) << "  "
                      << toolAndKind(location.tool, location.kind) << '\n';
        }
    }
    return finish(std::cout);
}

std::optional<AIStorageSnapshot> measure(const std::vector<AIStorageCustomLocation>& added,
                                         ScanCancellation& cancellation) {
    InterruptScope interrupt(cancellation);
    ProgressLine progressLine;
    AIStorageProgress progress;
    if (progressLine.active()) {
        progress = [&](const std::string& title, int64_t completed, int64_t total,
                       int64_t entries) {
            progressLine.show(title + "  " + groupedNumber(completed) + " of " +
                              groupedNumber(total) + " locations \u00b7 " + groupedNumber(entries) +
                              " entries checked");
        };
    }
    auto snapshot = AIStorageScanner().scan(added, cancellation, progress);
    progressLine.clear();
    return snapshot;
}

// Applies --select; prints why a choice cannot be selected. False when any cannot.
bool applySelection(const AIOptions& options, const AIStorageSnapshot& snapshot,
                    AIStorageSelection& selection) {
    bool selectable = true;
    for (const auto& choice : options.select) {
        if (choice == "caches" || choice == "logs") {
            selection.selectKind(snapshot,
                                 choice == "caches" ? AIStorageKind::cache : AIStorageKind::logs);
            continue;
        }
        const std::string path = platform::absolutePath(choice);
        if (const auto reason = selection.select(snapshot, path)) {
            std::cerr << "veldan: " << Terminal::display(path) << ": " << *reason << '\n';
            selectable = false;
        }
    }
    return selectable;
}

AIStorageCleanupReport moveSelection(const std::vector<AIStorageLocation>& locations,
                                     const std::vector<AIStorageCustomLocation>& added) {
    // A move is never abandoned half-way; Ctrl-C is held until the report is ready.
    ScanCancellation ignored;
    InterruptScope holdInterrupts(ignored);
    ProgressLine progressLine;
    AIStorageCleanupExecutor::Progress progress;
    if (progressLine.active()) {
        progress = [&](int64_t done, int64_t total, AIStorageCleanupPhase phase) {
            const char* verb = phase == AIStorageCleanupPhase::checking ? "Checking" : "Moving";
            progressLine.show(std::string(verb) + " caches & logs  " + groupedNumber(done) +
                              " of " + groupedNumber(total));
        };
    }
    std::vector<std::string> tracked;
    for (const auto& location : added)
        tracked.push_back(location.path);
    auto report = AIStorageCleanupExecutor(CleanupAftermath::changedPathsSink())
                      .run(locations, tracked, progress);
    progressLine.clear();
    CleanupAftermath::recordTrash("AI tool caches", report.logicalBytesMoved(),
                                  report.movedCount());
    CleanupAftermath::finishWriting();
    return report;
}

int runAI(const AIOptions& options) {
    if (options.trash && options.select.empty()) {
        std::cerr << "veldan: Choose what to move with --select caches, logs or the paths of "
                     "locations.\n";
        return exitUsage;
    }
    if (options.trash && !options.yes &&
        !(Terminal::isTerminal(stdin) && Terminal::isTerminal(stderr))) {
        std::cerr << "veldan: Moving locations to Trash needs a confirmation on a terminal; add "
                     "--yes to move them without asking.\n";
        return exitFailure;
    }
    auto added = AIStorageCustomLocations::load();
    if (!added) {
        std::cerr << "veldan: The list of folders you added cannot be read; they are left out.\n";
        added.emplace();
    }
    ScanCancellation cancellation;
    const auto snapshot = measure(*added, cancellation);
    if (!snapshot) {
        std::cerr << "AI storage search stopped before it finished; nothing was moved.\n";
        return exitInterrupted;
    }

    AIStorageSelection selection;
    const bool showSelection = !options.select.empty();
    if (showSelection && !applySelection(options, *snapshot, selection)) {
        if (options.trash) std::cerr << "Nothing was moved.\n";
        return exitFailure;
    }
    if (!options.json) {
        writeAIStorage(std::cout, *snapshot, showSelection ? &selection : nullptr,
                       Terminal::wantsColor(stdout));
        std::cout.flush();
    }
    std::optional<AIStorageCleanupReport> report;
    if (options.trash) {
        const auto locations = selection.locations(*snapshot);
        int64_t bytes = 0;
        for (const auto& location : locations)
            bytes = saturatingAdd(bytes, location.bytes);
        if (locations.empty()) {
            std::cerr << "No selected location can move to Trash; nothing was moved.\n";
        } else {
            std::cerr << AIStorageCleanupExecutor::checksAgainNote << '\n'
                      << AIStorageCleanupExecutor::mayRecreateNote << '\n';
            if (!options.yes &&
                !askYesNo("Move " +
                          locationCountText(static_cast<int64_t>(locations.size()), bytes) +
                          " to Trash?")) {
                std::cerr << "Nothing was moved.\n";
            } else {
                report = moveSelection(locations, *added);
                if (!options.json) {
                    writeAIStorageReport(std::cout, *report, Terminal::wantsColor(stdout));
                }
            }
        }
    }
    if (options.json) {
        writeJson(std::cout, aiStorageJson(*snapshot, showSelection ? &selection : nullptr,
                                           report ? &*report : nullptr,
                                           /*needsRefreshAfterMove=*/report.has_value()));
        std::cout << '\n';
    }
    const bool allMoved =
        !report || report->movedCount() == static_cast<int64_t>(report->moves.size());
    return finish(std::cout, allMoved ? exitSuccess : exitFailure);
}

std::vector<std::string> rawValues(const auto& all, auto rawValue) {
    std::vector<std::string> out;
    for (auto value : all)
        out.emplace_back(rawValue(value));
    return out;
}

const CommandRegistration registration{
    "ai", 35, [](CLI::App& app) -> CommandRunner {
        auto options = std::make_shared<AIOptions>();
        auto* sub = app.add_subcommand(
            "ai", "Measure what local AI tools store and move their caches and logs to Trash");
        sub->require_subcommand(0, 1);
        sub->add_flag("--json", options->json, "Print the result as JSON for scripts");
        sub->add_option("--select", options->select,
                        "Select locations to move: caches, logs, or the paths of cache and log "
                        "locations");
        sub->add_flag("--trash", options->trash,
                      "Move the selected locations to Trash, after checking each one again");
        sub->add_flag("--yes", options->yes, "Move without asking for confirmation (with --trash)");

        auto* add = sub->add_subcommand("add",
                                        "Add a folder to the measurements (read-only), "
                                        "or change the tool and kind of an added one");
        add->add_option("path", options->path, "The folder")->required();
        add->add_option("--tool", options->tool, "The tool it belongs to (default: other)")
            ->check(CLI::IsMember(rawValues(allAIStorageToolIDs, aiStorageToolRawValue)));
        add->add_option("--kind", options->kind, "What it holds (default: appData)")
            ->check(CLI::IsMember(rawValues(allAIStorageKinds, aiStorageKindRawValue)));
        auto* remove = sub->add_subcommand(
            "remove", "Stop measuring a folder you added; its files stay untouched");
        remove->add_option("path", options->path, "The folder")->required();
        auto* listAdded = sub->add_subcommand("list-added", "List the folders you added");

        return [options, add, remove, listAdded] {
            if (add->parsed()) return runAdd(*options);
            if (remove->parsed()) return runRemove(*options);
            if (listAdded->parsed()) return runListAdded(*options);
            return runAI(*options);
        };
    }};

}  // namespace

}  // namespace veldan::cli
