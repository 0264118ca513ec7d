// `veldan scan [PATH]`: measures a folder and prints its map.

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "app/ScanJob.hpp"
#include "cli/CommandRegistry.hpp"
#include "cli/CommandScan.hpp"
#include "cli/ScanReportText.hpp"
#include "cli/SnapshotJson.hpp"
#include "cli/Terminal.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan::cli {

namespace {

struct ScanOptions {
    std::string path = ".";
    int depth = 2;
    bool json = false;
    bool noCache = false;
};

int runScan(const ScanOptions& options) {
    const std::string root = commandScope(options.path);
    if (reportRootProblem(root)) return exitFailure;
    ScanJobOptions job;
    job.useSavedMaps = !options.noCache;
    const auto outcome = scanForCommand(root, job);
    const SavedMapFlush flush;
    if (!outcome) {
        std::cerr << "Scan stopped before it finished; nothing was saved.\n";
        return exitInterrupted;
    }
    if (options.json) {
        JsonWriter writer(stdout);
        writeSnapshotJson(writer, outcome->snapshot);
        writer.flush();
        std::fputc('\n', stdout);
        return std::fflush(stdout) == 0 && !writer.failed() ? exitSuccess : exitFailure;
    } else {
        ScanTextOptions text;
        text.depth = options.depth;
        text.color = Terminal::wantsColor(stdout);
        text.home = platform::standardizePath(platform::homeFolder());
        writeScanText(std::cout, root, outcome->snapshot, text);
    }
    std::cout.flush();
    return std::cout.good() ? exitSuccess : exitFailure;
}

const CommandRegistration registration{
    "scan", 10, [](CLI::App& app) -> CommandRunner {
        auto options = std::make_shared<ScanOptions>();
        auto* sub = app.add_subcommand("scan", "Measure a folder and print its map");
        sub->add_option("path", options->path, "Folder to scan (default: the current folder)");
        sub->add_option("--depth", options->depth, "Levels of the map to print")
            ->check(CLI::Range(0, 64))
            ->capture_default_str();
        sub->add_flag("--json", options->json, "Print the scan as JSON for scripts");
        sub->add_flag("--no-cache", options->noCache,
                      "Do not save this map for veldan show and veldan report --saved");
        return [options] { return runScan(*options); };
    }};

}  // namespace

}  // namespace veldan::cli
