#pragma once
// Carries out "Safe to remove" recommendations: moves verified generated folders to the
// Trash, or runs a package tool's own cache cleanup after proving that the tool's active
// cache is the folder that was measured. Nothing is ever deleted directly, and nothing
// that fails a check is touched.
//
// Before a folder moves it must still be the folder that was scanned: the expected name,
// never "/" or the home folder, no symbolic link on its path, the project manifest beside
// it, and the device, inode and birth time recorded when the recommendation was built,
// checked once from the path and once more, with the check that nothing is mounted inside
// it, by the Trash right before it renames the folder relative to a parent opened without
// following links.
//
// Contract: stateless apart from its settings; one item after another on the caller's
// thread (a tool command blocks it for up to the time limit). Per-folder and per-item
// failures are values in the result; one failing item never stops the others. After an
// item moved folders (or ran a tool's cleanup) the affected paths go to `changedPaths`.

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "recommendations/CleanupReport.hpp"
#include "scan/ChangedPaths.hpp"
#include "scan/Recommendation.hpp"
#include "scan/ScanCancellation.hpp"

namespace veldan {

struct CleanupExecutorSettings {
    std::string home;                     // the user's home folder
    std::vector<std::string> searchPath;  // where tools are found; also their PATH
    std::chrono::milliseconds toolTimeLimit{180'000};
    std::chrono::milliseconds toolGrace{3'000};
    ChangedPathsSink changedPaths;
    // When cancelled, a running tool command is ended and no further item starts.
    const ScanCancellation* cancellation = nullptr;
    // Called for each folder after the checks against the scan and before the final
    // checks and the move; tests change the tree here to prove the final checks hold.
    std::function<void(const std::string& path)> beforeFinalCheck;

    // The current user's home folder and tool search path, the product's time limit.
    static CleanupExecutorSettings standard();
};

class CleanupExecutor {
public:
    explicit CleanupExecutor(CleanupExecutorSettings settings);

    CleanupItemResult runOne(const Recommendation& recommendation) const;

    // Runs every safe recommendation in order (review items are always excluded) and
    // collects the results under a fresh report id. `starting` is told about each item
    // before it runs.
    CleanupReport run(const std::vector<Recommendation>& recommendations,
                      const std::function<void(const Recommendation&)>& starting = {}) const;

    // "Move generated folders to Trash" or "Run the tool's own cache cleanup"; empty for
    // a recommendation Veldan cannot clean.
    static std::string actionDescription(const Recommendation& recommendation);

private:
    CleanupItemResult trash(const Recommendation& recommendation, const std::string& expectedName,
                            const std::string& requiredManifest) const;
    CleanupItemResult cleanCache(const Recommendation& recommendation, const std::string& tool,
                                 const std::vector<std::string>& locate,
                                 const std::string& expected,
                                 const std::vector<std::string>& cleanup) const;
    CleanupItemResult cleanPnpmStore(const Recommendation& recommendation) const;

    // The steps shared by the tool cleanups: prove the measured folders unchanged, find
    // the tool, ask it where its cache is, accept only the measured place reached
    // without links, then run its cleanup.
    struct ToolCleanup {
        std::string tool;
        std::vector<std::string> locate;
        std::vector<std::string> cleanup;
        std::optional<std::string> expected;  // the measured folders must lie inside it
        // Why the reported location is not the measured one; nothing when it is.
        std::function<std::optional<std::string>(const std::string& location)> outside;
        std::string throughLink;
        std::string finished;
    };
    CleanupItemResult runTool(const Recommendation& recommendation, const ToolCleanup& steps) const;

    CleanupExecutorSettings settings_;
};

}  // namespace veldan
