#include "recommendations/CleanupExecutor.hpp"

#include <optional>

#include "platform/FileStatus.hpp"
#include "platform/Paths.hpp"
#include "platform/Trash.hpp"
#include "platform/TrashFolder.hpp"
#include "platform/UserFolders.hpp"
#include "platform/Uuid.hpp"
#include "recommendations/ToolCommand.hpp"
#include "recommendations/ToolSearchPath.hpp"

namespace veldan {

namespace {

constexpr const char* cannotClean = "This recommendation cannot be cleaned in Veldan.";

CleanupItemResult itemResult(const Recommendation& recommendation, std::string detail,
                             bool succeeded = false) {
    CleanupItemResult result;
    result.id = recommendation.id;
    result.title = recommendation.title;
    result.succeeded = succeeded;
    result.detail = std::move(detail);
    return result;
}

std::string direct(const std::string& path) {
    return platform::standardizePath(platform::resolveSymlinks(path));
}

std::optional<ScanFolderIdentity> recordedIdentity(const Recommendation& recommendation,
                                                   const std::string& path,
                                                   const std::string& standardized) {
    auto found = recommendation.folderIdentities.find(path);
    if (found == recommendation.folderIdentities.end()) {
        found = recommendation.folderIdentities.find(standardized);
    }
    if (found == recommendation.folderIdentities.end()) return std::nullopt;
    return found->second;
}

// What the Trash's last checks found, in this executor's words: a folder that changed or
// went elsewhere between the checks above and the move is one reason, whichever check saw
// it; anything else (a mount inside it, no usable Trash) is said as the Trash says it.
std::string finalCheckReason(const platform::TrashOutcome& outcome) {
    using platform::TrashRefusal;
    switch (outcome.refusal) {
        case TrashRefusal::redirected:
        case TrashRefusal::missing:
        case TrashRefusal::changed:
            return "Changed during cleanup preparation";
        default:
            return outcome.reason;
    }
}

std::string trashDetail(size_t moved, size_t total, bool anyFailed) {
    if (moved == 0) return "No folders moved to Trash.";
    std::string detail =
        "Moved " + std::to_string(moved) + " of " + std::to_string(total) + " folder(s) to Trash.";
    if (!anyFailed) detail += " Empty Trash when you're ready to reclaim their space.";
    return detail;
}

// Every measured cache folder must still be the direct, unchanged folder of the scan,
// and, with an expected location, lie inside it.
std::optional<CleanupError> validateScannedCachePaths(const Recommendation& recommendation,
                                                      const std::string& tool,
                                                      const std::optional<std::string>& expected) {
    for (const auto& path : recommendation.paths) {
        const std::string standardized = platform::standardizePath(path);
        auto identity = recordedIdentity(recommendation, path, standardized);
        auto status = platform::statPath(standardized, false);
        if (direct(standardized) != standardized || !identity || !status ||
            !identity->isSameFolder(*status)) {
            return CleanupError{"The measured cache folder changed since the scan: " + path +
                                ". Scan again before cleaning."};
        }
    }
    if (expected) {
        const std::string folder = platform::standardizePath(*expected);
        for (const auto& path : recommendation.paths) {
            if (!platform::isSameOrUnder(platform::standardizePath(path), folder)) {
                return CleanupError{"The scanned cache location no longer matches the expected " +
                                    tool + " cache."};
            }
        }
    }
    return std::nullopt;
}

// A tool's answer naming a folder: one non-empty line once trimmed.
std::optional<std::string> singleLine(const std::string& output) {
    const auto first = output.find_first_not_of(" \t\r\n\v\f");
    if (first == std::string::npos) return std::nullopt;
    const auto last = output.find_last_not_of(" \t\r\n\v\f");
    std::string line = output.substr(first, last - first + 1);
    if (line.find_first_of("\r\n") != std::string::npos) return std::nullopt;
    return line;
}

}  // namespace

CleanupExecutorSettings CleanupExecutorSettings::standard() {
    CleanupExecutorSettings settings;
    settings.home = platform::standardizePath(platform::homeFolder());
    settings.searchPath = ToolSearchPath::current();
    return settings;
}

CleanupExecutor::CleanupExecutor(CleanupExecutorSettings settings)
    : settings_(std::move(settings)) {
    settings_.home = platform::standardizePath(settings_.home);
}

std::string CleanupExecutor::actionDescription(const Recommendation& recommendation) {
    const std::string& id = recommendation.id;
    if (id == "playwright" || id == "next" || id == "swiftpm" || id == "xcode") {
        return "Move generated folders to Trash";
    }
    if (id == "npm" || id == "uv" || id == "go" || id == "pnpm") {
        return "Run the tool's own cache cleanup";
    }
    return {};
}

CleanupItemResult CleanupExecutor::runOne(const Recommendation& recommendation) const {
    if (recommendation.kind != RecommendationKind::safe)
        return itemResult(recommendation, cannotClean);
    const std::string& id = recommendation.id;
    const std::string& home = settings_.home;
    if (id == "playwright") return trash(recommendation, "ms-playwright", {});
    if (id == "next") return trash(recommendation, ".next", "package.json");
    if (id == "swiftpm") return trash(recommendation, ".build", "Package.swift");
    if (id == "xcode") {
        const std::string standard =
            platform::joinPath(home, "Library/Developer/Xcode/DerivedData");
        for (const auto& path : recommendation.paths) {
            if (platform::standardizePath(path) != standard) {
                return itemResult(
                    recommendation,
                    "This is not Xcode\u2019s standard DerivedData folder. Review it in "
                    "Finder.");
            }
        }
        return trash(recommendation, "DerivedData", {});
    }
    if (id == "npm") {
        return cleanCache(recommendation, "npm", {"config", "get", "cache"},
                          platform::joinPath(home, ".npm"), {"cache", "clean", "--force"});
    }
    if (id == "uv") {
        return cleanCache(recommendation, "uv", {"cache", "dir"},
                          platform::joinPath(home, ".cache/uv"), {"cache", "prune"});
    }
    if (id == "go") {
        return cleanCache(recommendation, "go", {"env", "GOMODCACHE"},
                          platform::joinPath(home, "go/pkg/mod"), {"clean", "-modcache"});
    }
    if (id == "pnpm") return cleanPnpmStore(recommendation);
    return itemResult(recommendation, cannotClean);
}

CleanupItemResult CleanupExecutor::trash(const Recommendation& recommendation,
                                         const std::string& expectedName,
                                         const std::string& requiredManifest) const {
    if (recommendation.paths.empty()) {
        return itemResult(recommendation, "No scanned folders are available.");
    }
    CleanupItemResult result = itemResult(recommendation, {});
    result.totalFolders = static_cast<int64_t>(recommendation.paths.size());
    const std::string& home = settings_.home;
    const auto homeTrashes = platform::homeTrashPaths();
    for (const auto& original : recommendation.paths) {
        const std::string path = platform::standardizePath(original);
        auto refuse = [&](std::string reason) {
            result.failedFolders.push_back({path, std::move(reason)});
        };
        const std::string name(platform::lastPathComponent(path));
        const std::string parent = platform::parentPath(path);
        if (name != expectedName || path == "/" || path == home || direct(path) != path ||
            platform::isInsideTrash(path, homeTrashes)) {
            refuse("Unexpected folder");
            continue;
        }
        if (!requiredManifest.empty()) {
            auto manifest = platform::statPath(platform::joinPath(parent, requiredManifest), true);
            if (!manifest || !manifest->isRegularFile()) {
                refuse("Project manifest is missing");
                continue;
            }
        }
        auto identity = recordedIdentity(recommendation, original, path);
        auto scanned = platform::statPath(path, false);
        if (!identity || !scanned || !identity->isSameFolder(*scanned)) {
            refuse("Changed since the scan");
            continue;
        }
        if (settings_.beforeFinalCheck) settings_.beforeFinalCheck(path);

        // The final look, through a parent opened without following any link, and the
        // mount check are the Trash's, right before it renames relative to that parent.
        const auto moved = platform::Trash::moveItem(path, {identity->item()});
        if (!moved.moved) {
            refuse(finalCheckReason(moved));
            continue;
        }
        ++result.movedFolders;
        result.movedPaths.push_back(path);
    }
    if (!result.movedPaths.empty() && settings_.changedPaths)
        settings_.changedPaths(result.movedPaths);
    result.succeeded = result.failedFolders.empty();
    result.detail = trashDetail(result.movedPaths.size(), recommendation.paths.size(),
                                !result.failedFolders.empty());
    return result;
}

CleanupItemResult CleanupExecutor::cleanCache(const Recommendation& recommendation,
                                              const std::string& tool,
                                              const std::vector<std::string>& locate,
                                              const std::string& expected,
                                              const std::vector<std::string>& cleanup) const {
    // Without a measured folder there is nothing to prove the tool's cache against.
    if (recommendation.paths.empty()) {
        return itemResult(recommendation, "No scanned folders are available.");
    }
    const std::string expectedFolder = platform::standardizePath(expected);
    ToolCleanup steps;
    steps.tool = tool;
    steps.locate = locate;
    steps.cleanup = cleanup;
    steps.expected = expected;
    steps.outside = [&](const std::string& location) -> std::optional<std::string> {
        if (location == expectedFolder) return std::nullopt;
        return "The active " + tool + " cache is at " + location +
               ", outside the location Veldan measured.";
    };
    steps.throughLink =
        "The " + tool +
        " cache path now points through a symbolic link. Scan again before cleaning.";
    steps.finished =
        tool + " finished its cache cleanup. Space saved may be less than the scanned size.";
    return runTool(recommendation, steps);
}

CleanupItemResult CleanupExecutor::cleanPnpmStore(const Recommendation& recommendation) const {
    if (recommendation.paths.empty()) {
        return itemResult(recommendation, "No scanned pnpm store is available.");
    }
    ToolCleanup steps;
    steps.tool = "pnpm";
    steps.locate = {"store", "path"};
    steps.cleanup = {"store", "prune"};
    // The store may be reported inside a measured folder (its version folder, say).
    steps.outside = [&](const std::string& store) -> std::optional<std::string> {
        for (const auto& path : recommendation.paths) {
            if (platform::isSameOrUnder(store, platform::standardizePath(path)))
                return std::nullopt;
        }
        return "The active pnpm store is outside the location Veldan measured.";
    };
    steps.throughLink =
        "The active pnpm store now points through a symbolic link. Scan again before cleaning.";
    steps.finished =
        "pnpm pruned unreferenced packages. Space saved may be less than the scanned size.";
    return runTool(recommendation, steps);
}

CleanupItemResult CleanupExecutor::runTool(const Recommendation& recommendation,
                                           const ToolCleanup& steps) const {
    const std::string& tool = steps.tool;
    if (auto problem = validateScannedCachePaths(recommendation, tool, steps.expected)) {
        return itemResult(recommendation, problem->message);
    }
    const std::string executable = ToolSearchPath::find(tool, settings_.searchPath);
    if (executable.empty()) {
        return itemResult(recommendation,
                          tool + " is unavailable. The other selected items can still be cleaned.");
    }
    ToolCommandSettings run{settings_.searchPath, settings_.toolTimeLimit, settings_.toolGrace, {}};
    if (settings_.cancellation) {
        run.stopRequested = [cancellation = settings_.cancellation] {
            return cancellation->cancelled();
        };
    }
    const auto answer = ToolCommand::run(tool, executable, steps.locate, true, false, run);
    if (answer.error) return itemResult(recommendation, answer.error->message);
    const auto line = singleLine(answer.output);
    if (!line) return itemResult(recommendation, tool + " returned an unexpected cache location.");
    const std::string location = platform::standardizePath(*line);
    if (auto outside = steps.outside(location)) return itemResult(recommendation, *outside);
    if (direct(location) != location) return itemResult(recommendation, steps.throughLink);

    const auto cleaned = ToolCommand::run(tool, executable, steps.cleanup, false, true, run);
    // Whatever the outcome, the tool may have removed entries the map still shows.
    if (settings_.changedPaths) settings_.changedPaths(recommendation.paths);
    if (cleaned.error) return itemResult(recommendation, cleaned.error->message);
    return itemResult(recommendation, steps.finished, true);
}

CleanupReport CleanupExecutor::run(
    const std::vector<Recommendation>& recommendations,
    const std::function<void(const Recommendation&)>& starting) const {
    CleanupReport report;
    report.id = platform::randomUuid();
    for (const auto& recommendation : recommendations) {
        if (recommendation.kind != RecommendationKind::safe) continue;
        if (settings_.cancellation && settings_.cancellation->cancelled()) break;
        if (starting) starting(recommendation);
        report.results.push_back(runOne(recommendation));
    }
    return report;
}

}  // namespace veldan
