// `veldan show [PATH]`: prints the saved map of a folder at once, without scanning.

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "cache/ScanCache.hpp"
#include "cli/CommandRegistry.hpp"
#include "cli/CommandScan.hpp"
#include "cli/SavedMap.hpp"
#include "cli/ScanReportText.hpp"
#include "cli/SnapshotJson.hpp"
#include "cli/Terminal.hpp"
#include "platform/LocaleFormat.hpp"
#include "platform/Paths.hpp"
#include "platform/UserFolders.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan::cli {

namespace {

struct ShowOptions {
    std::string path = ".";
    int depth = 2;
    bool json = false;
};

int runShow(const ShowOptions& options) {
    const std::string root = commandScope(options.path);
    auto snapshot = loadSavedMap(root);
    if (!snapshot) return exitFailure;
    const bool needsRefresh = ScanCache::shared().needsRefresh(*snapshot, root);
    if (options.json) {
        JsonWriter writer(stdout);
        writer.beginObject();
        writer.key("earlierMap");
        writer.value(true);
        writer.key("needsRefresh");
        writer.value(needsRefresh);
        writer.key("snapshot");
        writeSnapshotJson(writer, *snapshot);
        writer.endObject();
        writer.flush();
        std::fputc('\n', stdout);
        return std::fflush(stdout) == 0 && !writer.failed() ? exitSuccess : exitFailure;
    }
    ScanTextOptions text;
    text.depth = options.depth;
    text.color = Terminal::wantsColor(stdout);
    text.home = platform::standardizePath(platform::homeFolder());
    const Style style(text.color);
    std::cout << style.bold("Earlier map") << " from "
              << platform::LocaleFormat::system().abbreviatedDateTime(snapshot->finishedAt) << '\n';
    if (needsRefresh) {
        std::cout << "Files changed after this map was made; scan again for current sizes.\n";
    }
    std::cout << '\n';
    writeScanText(std::cout, root, *snapshot, text);
    std::cout.flush();
    return std::cout.good() ? exitSuccess : exitFailure;
}

const CommandRegistration registration{
    "show", 20, [](CLI::App& app) -> CommandRunner {
        auto options = std::make_shared<ShowOptions>();
        auto* sub = app.add_subcommand("show", "Print the saved map of a folder without scanning");
        sub->add_option("path", options->path,
                        "Folder whose saved map to show (default: the current folder)");
        sub->add_option("--depth", options->depth, "Levels of the map to print")
            ->check(CLI::Range(0, 64))
            ->capture_default_str();
        sub->add_flag("--json", options->json, "Print the saved map as JSON for scripts");
        return [options] { return runShow(*options); };
    }};

}  // namespace

}  // namespace veldan::cli
