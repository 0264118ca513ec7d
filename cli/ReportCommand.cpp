// `veldan report [PATH] [-o FILE] [--saved]`: writes the plain-text summary of a fresh scan
// (or of the saved map) to a file or to standard output.
//
// A scan stopped with Ctrl-C still writes, when -o was given, the partial summary of what
// was measured so far (the file the user asked for would otherwise hold nothing); on
// standard output nothing is printed then, since a half report in a pipe reads as a whole one.

#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <mutex>

#include "app/ScanJob.hpp"
#include "cache/ScanCache.hpp"
#include "cache/ScanReportBuilder.hpp"
#include "cache/ScanSessionCache.hpp"
#include "cli/CommandRegistry.hpp"
#include "cli/CommandScan.hpp"
#include "cli/SavedMap.hpp"
#include "cli/Terminal.hpp"
#include "platform/AtomicFile.hpp"
#include "platform/LocaleFormat.hpp"
#include "platform/Paths.hpp"
#include "recommendations/RecommendationBuilder.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan::cli {

namespace {

struct ReportOptions {
    std::string path = ".";
    std::string output;  // empty: standard output
    bool saved = false;
    bool noCache = false;
};

bool isFolder(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// Where the report goes: the file named, or the suggested name inside a folder named.
struct Destination {
    std::string path;   // empty: standard output
    bool named = true;  // false: `path` is a folder, the file takes the suggested name

    std::string file(const char* suggestedName) const {
        return named ? path : platform::joinPath(path, suggestedName);
    }
};

std::optional<Destination> destinationFor(const std::string& output) {
    if (output.empty()) return Destination{};
    const std::string path = platform::absolutePath(output);
    if (isFolder(path)) return Destination{path, false};
    if (output.back() == '/' || !isFolder(platform::parentPath(path))) {
        std::cerr << "veldan: Cannot write the report to " << Terminal::display(output)
                  << " because its folder does not exist; choose an existing folder.\n";
        return std::nullopt;
    }
    return Destination{path, true};
}

int writeReport(const Destination& destination, const char* suggestedName,
                const std::string& report) {
    if (destination.path.empty()) {
        std::cout << report << '\n';
        std::cout.flush();
        return std::cout.good() ? exitSuccess : exitFailure;
    }
    const std::string file = destination.file(suggestedName);
    if (auto failure = platform::writeFileAtomically(file, report + "\n")) {
        std::cerr << "veldan: Could not save the report: " << *failure << ".\n";
        return exitFailure;
    }
    // The file is a change of its folder that this run made itself.
    ScanSessionCache::shared().invalidateCurrent({file});
    std::cerr << "Saved the report to " << Terminal::display(file) << ".\n";
    return exitSuccess;
}

ScanReportStyle styleFor(const Destination& destination) {
    ScanReportStyle style;
    // Files keep paths byte for byte; a terminal must not be steered by a hostile name.
    if (destination.path.empty() && Terminal::isTerminal(stdout)) {
        style.pathText = [](std::string_view path) { return Terminal::display(path); };
    }
    return style;
}

int reportSaved(const std::string& root, const Destination& destination) {
    auto snapshot = loadSavedMap(root);
    if (!snapshot) return exitFailure;
    std::string status = "Earlier map, saved " +
                         platform::LocaleFormat::system().abbreviatedDateTime(snapshot->finishedAt);
    if (ScanCache::shared().needsRefresh(*snapshot, root)) {
        status += "; files changed since, so sizes may be out of date";
    }
    const std::string report =
        ScanReportBuilder::build(root, *snapshot, RecommendationBuilder::build(root, *snapshot),
                                 status, styleFor(destination));
    return writeReport(destination, ScanReportBuilder::summaryFileName, report);
}

int reportFresh(const std::string& root, const ReportOptions& options,
                const Destination& destination) {
    std::mutex mutex;  // guards the four below, written from the scan's threads
    std::optional<DiskNode> latestPartial;
    std::vector<LargeFile> largestFiles;
    int64_t folders = 0;
    int64_t files = 0;
    ScanJobOptions job;
    job.useSavedMaps = !options.noCache;
    job.progress = [&](const std::string&, int64_t folderCount, int64_t fileCount) {
        std::unique_lock lock(mutex);
        folders = folderCount;
        files = fileCount;
    };
    job.partial = [&](const DiskNode& partialRoot) {
        std::unique_lock lock(mutex);
        latestPartial = partialRoot;
    };
    job.stopped = [&](const std::vector<LargeFile>& measured) {
        std::unique_lock lock(mutex);
        largestFiles = measured;
    };
    // Read first: a stopped scan's report says what was free when it started.
    const auto volumeAtStart = VolumeSpace::read(root);
    const auto outcome = scanForCommand(root, job);
    const SavedMapFlush flush;

    if (outcome) {
        const std::string report = ScanReportBuilder::build(
            root, outcome->snapshot, RecommendationBuilder::build(root, outcome->snapshot),
            "Complete", styleFor(destination));
        return writeReport(destination, ScanReportBuilder::summaryFileName, report);
    }
    if (destination.path.empty()) {
        std::cerr << "Scan stopped before it finished; no report was written.\n";
        return exitInterrupted;
    }
    std::unique_lock lock(mutex);
    DiskNode partialRoot;
    if (latestPartial) {
        partialRoot = *latestPartial;
    } else {
        partialRoot.path = root;
        partialRoot.name = std::string(platform::lastPathComponent(root));
        partialRoot.isDirectory = true;
        partialRoot.isPartial = true;
    }
    const std::string report =
        ScanReportBuilder::buildPartial(root, partialRoot, volumeAtStart, largestFiles, folders,
                                        files, false, styleFor(destination));
    std::cerr << "Scan stopped before it finished; the report covers what was measured.\n";
    const int written = writeReport(destination, ScanReportBuilder::partialFileName, report);
    return written == exitSuccess ? exitInterrupted : written;
}

int runReport(const ReportOptions& options) {
    const std::string root = commandScope(options.path);
    if (reportRootProblem(root)) return exitFailure;
    auto destination = destinationFor(options.output);
    if (!destination) return exitFailure;
    return options.saved ? reportSaved(root, *destination)
                         : reportFresh(root, options, *destination);
}

const CommandRegistration registration{
    "report", 30, [](CLI::App& app) -> CommandRunner {
        auto options = std::make_shared<ReportOptions>();
        auto* sub = app.add_subcommand("report", "Write the text summary of a scan");
        sub->add_option("path", options->path, "Folder to report on (default: the current folder)");
        sub->add_option("-o,--output", options->output,
                        "File to write, or a folder to write \"Veldan - Scan Summary.txt\" into "
                        "(default: standard output)");
        auto* saved = sub->add_flag("--saved", options->saved,
                                    "Report on the saved map instead of scanning again");
        auto* noCache = sub->add_flag("--no-cache", options->noCache,
                                      "Do not save the new map for veldan show");
        saved->excludes(noCache);
        return [options] { return runReport(*options); };
    }};

}  // namespace

}  // namespace veldan::cli
