#include "cli/RecommendationScan.hpp"

#include <iostream>
#include <set>

#include "app/ScanJob.hpp"
#include "cli/CommandRegistry.hpp"
#include "cli/CommandScan.hpp"
#include "cli/RebasedSnapshot.hpp"
#include "cli/SavedMap.hpp"
#include "cli/Terminal.hpp"
#include "platform/Paths.hpp"
#include "recommendations/RecommendationBuilder.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan::cli {

namespace {

std::optional<ScanSnapshot> snapshotOf(const std::string& root, bool fromSavedMap, int& status) {
    status = exitFailure;
    if (fromSavedMap) return loadSavedMap(root);
    if (reportRootProblem(root)) return std::nullopt;
    const auto outcome = scanForCommand(root, {});
    if (!outcome) {
        std::cerr << "Scan stopped before it finished; nothing was changed.\n";
        status = exitInterrupted;
        return std::nullopt;
    }
    return outcome->snapshot;
}

}  // namespace

std::variant<ScannedRecommendations, int> scanForRecommendations(
    const std::string& path, const std::vector<std::string>& ids, bool fromSavedMap) {
    // Measured and saved under the name given, like `veldan scan`; recommended and cleaned
    // under the resolved path, which is what the checks before each move compare.
    const std::string scope = commandScope(path);
    int status = exitFailure;
    auto snapshot = snapshotOf(scope, fromSavedMap, status);
    if (!snapshot) return status;
    const std::string root = commandRoot(scope);
    if (root != scope) *snapshot = rebasedSnapshot(std::move(*snapshot), scope, root);
    ScannedRecommendations scanned{root, std::move(*snapshot), {}};
    auto all = RecommendationBuilder::build(root, scanned.snapshot);
    if (ids.empty()) {
        scanned.selected = std::move(all);
        return scanned;
    }
    std::set<std::string> wanted(ids.begin(), ids.end());
    for (auto& recommendation : all) {
        if (wanted.erase(recommendation.id)) scanned.selected.push_back(std::move(recommendation));
    }
    if (!wanted.empty()) {
        std::cerr << "veldan: This scan has no recommendation \""
                  << Terminal::display(*wanted.begin())
                  << "\"; run \"veldan recommend\" to see the ids.\n";
        return exitFailure;
    }
    return scanned;
}

}  // namespace veldan::cli
