// `veldan recommend [PATH]`: the cleanup recommendations of a fresh scan, as text, as
// JSON, or as the copyable script.

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "cli/CommandRegistry.hpp"
#include "cli/RecommendationScan.hpp"
#include "cli/RecommendationText.hpp"
#include "recommendations/RecommendationBuilder.hpp"

namespace veldan::cli {

namespace {

struct RecommendOptions {
    std::string path = ".";
    bool json = false;
    bool script = false;
    std::vector<std::string> select;
    bool saved = false;
};

int runRecommend(const RecommendOptions& options) {
    auto scanned = scanForRecommendations(options.path, options.select, options.saved);
    if (auto* status = std::get_if<int>(&scanned)) return *status;
    const auto& result = std::get<ScannedRecommendations>(scanned);
    const auto& selected = result.selected;
    if (options.script) {
        std::cout << RecommendationBuilder::script(selected);
    } else if (options.json) {
        writeJson(std::cout, recommendationsJson(result.root, selected, result.snapshot));
        std::cout << '\n';
    } else {
        writeRecommendations(std::cout, result.root, selected, result.snapshot,
                             Style(Terminal::wantsColor(stdout)));
    }
    std::cout.flush();
    return std::cout.good() ? exitSuccess : exitFailure;
}

const CommandRegistration registration{
    "recommend", 30, [](CLI::App& app) -> CommandRunner {
        auto options = std::make_shared<RecommendOptions>();
        auto* sub =
            app.add_subcommand("recommend", "Scan a folder and list what can be cleaned up");
        sub->add_option("path", options->path, "Folder to scan (default: the current folder)");
        sub->add_flag("--json", options->json, "Print the recommendations as JSON for scripts");
        sub->add_flag("--saved", options->saved,
                      "Use the folder's saved map instead of scanning it again");
        auto* script = sub->add_flag("--script", options->script,
                                     "Print the shell script of the selected recommendations");
        sub->add_option(
               "--select", options->select,
               "Only these recommendation ids (default: all); after PATH, or comma-separated")
            ->delimiter(',');
        script->excludes(sub->get_option("--json"));
        return [options] { return runRecommend(*options); };
    }};

}  // namespace

}  // namespace veldan::cli
