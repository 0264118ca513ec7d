#include "cli/RecommendationScan.hpp"

#include <iostream>
#include <set>

#include "app/ScanJob.hpp"
#include "cli/CommandRegistry.hpp"
#include "cli/SavedMap.hpp"
#include "cli/CommandScan.hpp"
#include "cli/Terminal.hpp"
#include "platform/Paths.hpp"
#include "recommendations/RecommendationBuilder.hpp"
#include "scan/DiskScanner.hpp"

namespace veldan::cli {

std::variant<ScannedRecommendations, int> scanForRecommendations(const std::string& path,
                                                                 bool fromSavedMap) {
    const std::string root = platform::absolutePath(path);
    if (fromSavedMap) {
        auto snapshot = loadSavedMap(root);
        if (!snapshot) return exitFailure;
        ScannedRecommendations saved{root, std::move(*snapshot), {}};
        saved.recommendations = RecommendationBuilder::build(root, saved.snapshot);
        return saved;
    }
    if (auto problem = DiskScanner::rootProblem(root)) {
        std::cerr << "veldan: " << Terminal::display(*problem) << '\n';
        return exitFailure;
    }
    const auto outcome = scanForCommand(root, {});
    if (!outcome) {
        std::cerr << "Scan stopped before it finished; nothing was changed.\n";
        return exitInterrupted;
    }
    ScannedRecommendations scanned{root, outcome->snapshot, {}};
    scanned.recommendations = RecommendationBuilder::build(root, scanned.snapshot);
    return scanned;
}

std::variant<std::vector<Recommendation>, std::string> selectRecommendations(
    const std::vector<Recommendation>& recommendations, const std::vector<std::string>& ids) {
    if (ids.empty()) return recommendations;
    std::set<std::string> wanted(ids.begin(), ids.end());
    std::vector<Recommendation> selected;
    for (const auto& recommendation : recommendations) {
        if (wanted.erase(recommendation.id)) selected.push_back(recommendation);
    }
    if (!wanted.empty()) {
        return "This scan has no recommendation \"" + Terminal::display(*wanted.begin()) +
               "\"; run \"veldan recommend\" to see the ids.";
    }
    return selected;
}

}  // namespace veldan::cli
