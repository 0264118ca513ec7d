#include "cli/RecommendationScan.hpp"

#include <iostream>
#include <set>

#include "app/ScanJob.hpp"
#include "cli/CommandRegistry.hpp"
#include "cli/CommandScan.hpp"
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
    const std::string root = commandRoot(path);
    int status = exitFailure;
    auto snapshot = snapshotOf(root, fromSavedMap, status);
    if (!snapshot) return status;
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
