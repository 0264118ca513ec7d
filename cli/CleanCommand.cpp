// `veldan clean [PATH] --select ID ...`: runs the selected "Safe to remove"
// recommendations of a fresh scan, after showing what will happen and a confirmation.

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>

#include "app/CleanupAftermath.hpp"
#include "cli/CommandRegistry.hpp"
#include "cli/Confirmation.hpp"
#include "cli/Interrupt.hpp"
#include "cli/ProgressLine.hpp"
#include "cli/RecommendationScan.hpp"
#include "cli/RecommendationText.hpp"
#include "platform/BackgroundWorkActivity.hpp"
#include "recommendations/CleanupExecutor.hpp"

namespace veldan::cli {

namespace {

struct CleanOptions {
    std::string path = ".";
    std::vector<std::string> select;
    bool yes = false;
};

int runClean(const CleanOptions& options) {
    // Never without a confirmation: asked on a terminal, or given up front with --yes.
    if (!options.yes && !Terminal::isTerminal(stdin)) {
        std::cerr << "veldan: Nothing was cleaned, because confirming needs a terminal; pass "
                     "--yes to clean without asking.\n";
        return exitFailure;
    }
    auto scanned = scanForRecommendations(options.path, options.select);
    if (auto* status = std::get_if<int>(&scanned)) return *status;
    const auto& result = std::get<ScannedRecommendations>(scanned);
    std::vector<Recommendation> safe;
    std::vector<Recommendation> excluded;
    for (const auto& recommendation : result.selected) {
        (recommendation.kind == RecommendationKind::safe ? safe : excluded)
            .push_back(recommendation);
    }
    const Style style(Terminal::wantsColor(stdout));
    writeCleanupPlan(std::cout, result.root, safe, excluded, style);
    std::cout.flush();
    if (safe.empty()) {
        std::cerr << "veldan: None of the selected recommendations can be cleaned in Veldan.\n";
        return exitFailure;
    }
    if (!options.yes && !askYesNo("Go ahead?")) {
        std::cerr << "Nothing was cleaned.\n";
        return exitFailure;
    }

    ScanCancellation cancellation;
    InterruptScope interrupt(cancellation);
    platform::BackgroundWorkActivity busy;
    busy.update(true);
    ProgressLine progressLine;
    auto settings = CleanupExecutorSettings::standard();
    settings.cancellation = &cancellation;
    settings.changedPaths = CleanupAftermath::changedPathsSink();
    const CleanupExecutor executor(std::move(settings));
    const auto report = executor.run(safe, [&](const Recommendation& recommendation) {
        if (progressLine.active()) progressLine.show("Cleaning " + recommendation.title + "\u2026");
    });
    progressLine.clear();
    CleanupAftermath::recordCleanupReport(report, result.snapshot.discoveredDirectories);
    CleanupAftermath::finishWriting();
    writeCleanupReport(std::cout, report, style);
    std::cout.flush();
    if (InterruptScope::interrupted()) return exitInterrupted;
    const bool allSucceeded = report.results.size() == safe.size() &&
                              report.succeededCount() == static_cast<int64_t>(safe.size());
    return allSucceeded ? exitSuccess : exitFailure;
}

const CommandRegistration registration{
    "clean", 40, [](CLI::App& app) -> CommandRunner {
        auto options = std::make_shared<CleanOptions>();
        auto* sub = app.add_subcommand(
            "clean",
            "Scan a folder and clean the selected safe recommendations (moved to Trash or "
            "the tool's own cleanup)");
        sub->add_option("path", options->path, "Folder to scan (default: the current folder)");
        sub->add_option("--select", options->select,
                        "Recommendation ids to clean (see veldan recommend); after PATH, or "
                        "comma-separated")
            ->required()
            ->delimiter(',');
        sub->add_flag("--yes", options->yes, "Clean without asking for confirmation");
        return [options] { return runClean(*options); };
    }};

}  // namespace

}  // namespace veldan::cli
