// `veldan activity`: the local record of free space, recent downloads and cleanups, and
// its daily check.
//   veldan activity                         the history
//   veldan activity check [--force]         the daily check, when due
//   veldan activity daily on|off            turn the daily check on or off
//   veldan activity trash-download PATH     move one listed download to the Trash

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "activity/ActivityTracker.hpp"
#include "app/CleanupAftermath.hpp"
#include "app/DailyCheck.hpp"
#include "cli/ActivityJson.hpp"
#include "cli/ActivityText.hpp"
#include "cli/CommandRegistry.hpp"
#include "cli/Confirmation.hpp"
#include "cli/DailyTimer.hpp"
#include "cli/Interrupt.hpp"
#include "cli/ProgressLine.hpp"
#include "cli/Terminal.hpp"
#include "platform/BackgroundWorkActivity.hpp"
#include "platform/LocaleFormat.hpp"
#include "platform/Paths.hpp"
#include "platform/Preferences.hpp"
#include "scan/SizeText.hpp"

namespace veldan::cli {

namespace {

using Clock = std::chrono::system_clock;

struct ActivityOptions {
    bool json = false;
    bool force = false;
    bool yes = false;
    std::string daily;
    std::string path;
};

int finish(bool ok = true) {
    // Whatever was recorded must be on disk before the process ends.
    CleanupAftermath::finishWriting();
    std::cout.flush();
    return ok && std::cout.good() ? exitSuccess : exitFailure;
}

int printJson(const Json& json, bool ok = true) {
    writeJson(std::cout, json);
    std::cout << '\n';
    return finish(ok);
}

int showHistory(const ActivityOptions& options) {
    auto& tracker = ActivityTracker::shared();
    const auto now = Clock::now();
    const auto history = tracker.history();
    const bool enabled = tracker.dailyEnabled();
    const bool due = tracker.isDailyCheckDue(now);
    if (options.json) return printJson(activityJson(history, now, enabled, due));
    ActivityTextOptions text{enabled, due, now, Terminal::width(stdout)};
    writeActivityText(std::cout, history, text, Style(Terminal::wantsColor(stdout)));
    return finish();
}

const char* outcomeName(DailyCheckResult::Outcome outcome) {
    switch (outcome) {
        case DailyCheckResult::Outcome::checked:
            return "checked";
        case DailyCheckResult::Outcome::off:
            return "off";
        case DailyCheckResult::Outcome::notDue:
            return "notDue";
        case DailyCheckResult::Outcome::running:
            return "running";
        case DailyCheckResult::Outcome::stopped:
            return "stopped";
        case DailyCheckResult::Outcome::unreadable:
            return "unreadable";
    }
    return "stopped";
}

// Why the check did nothing, or what it found.
std::string checkText(const DailyCheckResult& result, const ActivityArchive& history) {
    const auto locale = platform::LocaleFormat::system();
    switch (result.outcome) {
        case DailyCheckResult::Outcome::off:
            return "The daily check is off, so nothing was checked. Turn it on with veldan "
                   "activity daily on, or check now with veldan activity check --force.";
        case DailyCheckResult::Outcome::notDue:
            return "Nothing to do: the last check was " +
                   locale.abbreviatedDateTime(*history.lastDailyCheckAt) +
                   ", and the next is due a day after it. Check now with veldan activity check "
                   "--force.";
        case DailyCheckResult::Outcome::running:
            return "A check is already running.";
        case DailyCheckResult::Outcome::stopped:
            return "The check stopped before it finished; nothing was recorded.";
        case DailyCheckResult::Outcome::unreadable:
            return "The startup disk cannot be read, so nothing was recorded.";
        case DailyCheckResult::Outcome::checked:
            break;
    }
    std::string text =
        "Checked the startup disk: " + SizeText::string(result.snapshot->freeBytes) + " free.";
    if (auto change = history.latestChangeInFreeSpace()) {
        text += " " + freeSpaceChangeText(*change) + ".";
    }
    text += " " + std::to_string(result.downloads) +
            (result.downloads == 1 ? " recent download" : " recent downloads") + " listed.";
    return text;
}

int runCheck(const ActivityOptions& options) {
    auto& tracker = ActivityTracker::shared();
    DailyCheckResult result;
    {
        ScanCancellation cancellation;
        InterruptScope interrupt(cancellation);
        platform::BackgroundWorkActivity busy;
        busy.update(true);
        ProgressLine progressLine;
        ScanProgress progress;
        if (progressLine.active()) {
            progress = [&](const std::string& item, int64_t folders, int64_t files) {
                progressLine.show(ProgressLine::scanText(item, folders, files));
            };
        }
        result = DailyCheck::run(tracker, cancellation, options.force, progress);
        progressLine.clear();
        tracker.drain();
    }
    const auto history = tracker.history();
    const bool failed = result.outcome == DailyCheckResult::Outcome::stopped ||
                        result.outcome == DailyCheckResult::Outcome::unreadable;
    if (options.json) {
        const auto change = history.latestChangeInFreeSpace();
        const int status =
            printJson(Json{{"outcome", outcomeName(result.outcome)},
                           {"snapshot", result.snapshot ? activitySnapshotJson(*result.snapshot)
                                                        : Json(nullptr)},
                           {"downloads", result.downloads},
                           {"latestChangeInFreeSpace",
                            result.snapshot && change ? Json(*change) : Json(nullptr)},
                           {"message", checkText(result, history)}},
                      !failed);
        return result.outcome == DailyCheckResult::Outcome::stopped ? exitInterrupted : status;
    }
    (failed ? std::cerr : std::cout)
        << (failed ? "veldan: " : "") << checkText(result, history) << '\n';
    if (result.outcome == DailyCheckResult::Outcome::stopped) {
        finish();
        return exitInterrupted;
    }
    return finish(!failed);
}

// Offers the systemd timer after the check was turned on; what happened, in one sentence.
std::string offerTimer(bool yes, std::string& state) {
    if (!DailyTimer::available()) {
        state = "unavailable";
        return "No systemd user session answers, so the check runs when Veldan opens or when "
               "you run veldan activity check.";
    }
    if (DailyTimer::isEnabled()) {
        state = "enabled";
        return std::string("The systemd timer ") + DailyTimer::timerName +
               " runs the check while Veldan is closed.";
    }
    const bool interactive = Terminal::isTerminal(stdin) && Terminal::isTerminal(stderr);
    if (!yes && !(interactive &&
                  askYesNo("Also run the check once a day with systemd while Veldan is closed?"))) {
        state = "notEnabled";
        return std::string("To check while Veldan is closed: systemctl --user enable --now ") +
               DailyTimer::timerName;
    }
    if (auto problem = DailyTimer::enable()) {
        state = "notEnabled";
        return *problem;
    }
    state = "enabled";
    return std::string("The systemd timer ") + DailyTimer::timerName +
           " now runs the check while Veldan is closed.";
}

int runDaily(const ActivityOptions& options) {
    const bool on = options.daily == "on";
    auto& tracker = ActivityTracker::shared();
    if (!tracker.setDailyEnabled(on)) {
        std::cerr << "veldan: The setting could not be saved in "
                  << Terminal::display(platform::Preferences::filePath()) << ".\n";
        return exitFailure;
    }
    std::string timerState = "unavailable";
    std::string timerText;
    if (on) {
        timerText = offerTimer(options.yes, timerState);
    } else if (DailyTimer::available() && DailyTimer::isEnabled()) {
        auto problem = DailyTimer::disable();
        timerState = problem ? "enabled" : "notEnabled";
        timerText =
            problem ? *problem
                    : std::string("The systemd timer ") + DailyTimer::timerName + " is disabled.";
    }
    if (options.json) {
        return printJson(Json{{"dailyEnabled", on}, {"timer", timerState}, {"message", timerText}});
    }
    std::cout << (on ? "The daily check is on: Veldan checks the startup disk and Downloads once "
                       "a day, and catches up on a missed day at the next check."
                     : "The daily check is off.")
              << '\n';
    if (!timerText.empty()) std::cout << timerText << '\n';
    return finish();
}

Json moveJson(const std::string& path, const DownloadMoveOutcome& outcome, int64_t bytes) {
    if (outcome.moved) {
        return Json{{"moved", true},
                    {"path", path},
                    {"trashedPath", outcome.trashedPath},
                    {"bytes", bytes}};
    }
    return Json{{"moved", false},
                {"path", path},
                {"error", Json{{"domain", DownloadMoveOutcome::errorDomain},
                               {"title", "Couldn\u2019t move download"},
                               {"message", outcome.reason},
                               {"hint", "Try refreshing Downloads."}}}};
}

int runTrashDownload(const ActivityOptions& options) {
    // The listed paths name the Downloads folder with links resolved; so does this one.
    const std::string given = platform::absolutePath(options.path);
    const std::string path = platform::joinPath(
        platform::resolveSymlinks(platform::parentPath(given)), platform::lastPathComponent(given));
    auto& tracker = ActivityTracker::shared();
    const auto history = tracker.history();
    const TrackedDownload* listed = nullptr;
    for (const auto& download : history.downloads) {
        if (download.path == path) listed = &download;
    }
    std::optional<DownloadMoveOutcome> refusal;
    if (platform::parentPath(path) != DownloadInventory::folder()) {
        refusal = DownloadMoveOutcome{false, {}, DownloadInventory::notInsideReason};
    } else if (!listed) {
        refusal = DownloadMoveOutcome{
            false,
            {},
            "This file is not in the list of recent downloads; list Downloads again with veldan "
            "activity check --force."};
    } else if (!options.yes && !(Terminal::isTerminal(stdin) && Terminal::isTerminal(stderr))) {
        std::cerr << "veldan: Moving a download needs a confirmation on a terminal; add --yes to "
                     "move it without asking.\n";
        return exitFailure;
    }
    if (!refusal && !options.yes) {
        std::cerr << Terminal::display(platform::lastPathComponent(path)) << " \u2014 "
                  << SizeText::string(listed->bytes) << '\n';
        if (!askYesNo("Move this download to Trash?")) {
            std::cerr << "Nothing was moved.\n";
            return exitFailure;
        }
    }
    const DownloadMoveOutcome outcome =
        refusal ? *refusal
                : tracker.moveDownloadToTrash(*listed, CleanupAftermath::changedPathsSink());
    const int64_t bytes = listed ? listed->bytes : 0;
    if (options.json) return printJson(moveJson(path, outcome, bytes), outcome.moved);
    if (!outcome.moved) {
        std::cerr << "veldan: " << Terminal::display(outcome.reason) << '\n';
        finish();
        return exitFailure;
    }
    std::cout << "Moved " << Terminal::display(platform::lastPathComponent(path)) << " ("
              << SizeText::string(bytes)
              << ") to Trash. Files moved to Trash still use space until Trash is emptied.\n";
    return finish();
}

const CommandRegistration registration{
    "activity", 60, [](CLI::App& app) -> CommandRunner {
        auto options = std::make_shared<ActivityOptions>();
        auto* sub = app.add_subcommand(
            "activity", "Show the local record of free space, recent downloads and cleanups");
        sub->add_flag("--json", options->json, "Print the history as JSON for scripts");
        auto* check = sub->add_subcommand(
            "check", "Check the startup disk and Downloads when the daily check is due");
        check->add_flag("--force", options->force, "Check now, even when not due or turned off");
        check->add_flag("--json", options->json, "Print the result as JSON");
        auto* daily = sub->add_subcommand("daily", "Turn the daily check on or off");
        daily->add_option("state", options->daily, "on or off")
            ->required()
            ->check(CLI::IsMember({"on", "off"}));
        daily->add_flag("--yes", options->yes,
                        "With on: also enable the systemd timer without asking");
        daily->add_flag("--json", options->json, "Print the result as JSON");
        auto* trash =
            sub->add_subcommand("trash-download", "Move one of the recent downloads to the Trash");
        trash->add_option("path", options->path, "The download, as listed")->required();
        trash->add_flag("--yes", options->yes, "Move without asking for confirmation");
        trash->add_flag("--json", options->json, "Print the result as JSON");
        sub->require_subcommand(0, 1);
        return [options, check, daily, trash] {
            if (check->parsed()) return runCheck(*options);
            if (daily->parsed()) return runDaily(*options);
            if (trash->parsed()) return runTrashDownload(*options);
            return showHistory(*options);
        };
    }};

}  // namespace

}  // namespace veldan::cli
