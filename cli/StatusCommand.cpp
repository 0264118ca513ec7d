// `veldan status`: the widget digest of the last map, for people (one line), scripts
// (--json) and status bars (--waybar).

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "activity/WidgetDigest.hpp"
#include "cli/ActivityJson.hpp"
#include "cli/CommandRegistry.hpp"
#include "cli/StatusText.hpp"

namespace veldan::cli {

namespace {

struct StatusOptions {
    bool json = false;
    bool waybar = false;
};

int runStatus(const StatusOptions& options) {
    const auto now = std::chrono::system_clock::now();
    const auto digest = WidgetDigest::load();
    if (options.waybar) {
        writeJson(std::cout, waybarJson(digest, now));
    } else if (options.json) {
        writeJson(std::cout, digest ? widgetDigestJson(*digest, now) : Json(nullptr));
    } else {
        std::cout << statusLine(digest, now);
    }
    std::cout << '\n';
    std::cout.flush();
    return std::cout.good() ? exitSuccess : exitFailure;
}

const CommandRegistration registration{
    "status", 70, [](CLI::App& app) -> CommandRunner {
        auto options = std::make_shared<StatusOptions>();
        auto* sub = app.add_subcommand("status", "Show the state of the last map in one line");
        auto* json = sub->add_flag("--json", options->json, "Print the whole digest as JSON");
        sub->add_flag("--waybar", options->waybar,
                      "Print the object status bars such as waybar read")
            ->excludes(json);
        return [options] { return runStatus(*options); };
    }};

}  // namespace

}  // namespace veldan::cli
