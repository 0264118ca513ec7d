#include "cli/RecommendationText.hpp"

#include "recommendations/CleanupExecutor.hpp"
#include "recommendations/RecommendationBuilder.hpp"
#include "scan/SizeText.hpp"

namespace veldan::cli {

namespace {

constexpr int red = 31;
constexpr int green = 32;

std::vector<std::string> allPaths(const std::vector<Recommendation>& recommendations,
                                  bool safeOnly) {
    std::vector<std::string> paths;
    for (const auto& recommendation : recommendations) {
        if (safeOnly && recommendation.kind != RecommendationKind::safe) continue;
        paths.insert(paths.end(), recommendation.paths.begin(), recommendation.paths.end());
    }
    return paths;
}

int64_t total(const std::vector<Recommendation>& recommendations, const ScanSnapshot& snapshot,
              bool safeOnly) {
    return RecommendationBuilder::footprint(allPaths(recommendations, safeOnly), {},
                                            snapshot.discoveredDirectories);
}

void writeItem(std::ostream& out, const Recommendation& recommendation, const Style& style) {
    out << "  " << style.bold(recommendation.title) << " \u2014 "
        << SizeText::string(recommendation.bytes) << "  "
        << style.dim("[" + recommendation.id + "]") << '\n';
    out << "    " << recommendation.subtitle << '\n';
    for (const auto& path : recommendation.paths) {
        out << "    " << Terminal::display(path) << '\n';
    }
}

}  // namespace

void writeRecommendations(std::ostream& out, const std::string& root,
                          const std::vector<Recommendation>& recommendations,
                          const ScanSnapshot& snapshot, const Style& style) {
    if (recommendations.empty()) {
        out << "No cleanup recommendations for " << Terminal::display(root) << ".\n";
        return;
    }
    out << "Recommendations for " << Terminal::display(root) << '\n';
    for (const auto kind : {RecommendationKind::safe, RecommendationKind::review}) {
        bool header = false;
        for (const auto& recommendation : recommendations) {
            if (recommendation.kind != kind) continue;
            if (!header) {
                out << '\n' << style.bold(std::string(title(kind))) << '\n';
                header = true;
            }
            writeItem(out, recommendation, style);
        }
    }
    out << "\nTotal " << SizeText::string(total(recommendations, snapshot, false)) << ", of which "
        << SizeText::string(total(recommendations, snapshot, true)) << " safe to remove\n"
        << "Overlapping folders are counted once in the total above.\n";
}

Json recommendationsJson(const std::string& root,
                         const std::vector<Recommendation>& recommendations,
                         const ScanSnapshot& snapshot) {
    Json list = Json::array();
    for (const auto& recommendation : recommendations) {
        const std::string action = CleanupExecutor::actionDescription(recommendation);
        list.push_back({
            {"id", recommendation.id},
            {"kind", recommendation.kind == RecommendationKind::safe ? "safe" : "review"},
            {"title", recommendation.title},
            {"subtitle", recommendation.subtitle},
            {"bytes", recommendation.bytes},
            {"paths", recommendation.paths},
            {"action", action.empty() ? Json(nullptr) : Json(action)},
            {"command", recommendation.command},
        });
    }
    return Json{{"root", root},
                {"recommendations", list},
                {"totalBytes", total(recommendations, snapshot, false)},
                {"safeBytes", total(recommendations, snapshot, true)}};
}

void writeCleanupPlan(std::ostream& out, const std::string& root,
                      const std::vector<Recommendation>& safe,
                      const std::vector<Recommendation>& excluded, const Style& style) {
    out << "Cleaning in " << Terminal::display(root) << ":\n";
    for (const auto& recommendation : safe) {
        out << "  " << style.bold(recommendation.title) << " \u2014 "
            << SizeText::string(recommendation.bytes) << ": "
            << CleanupExecutor::actionDescription(recommendation) << '\n';
        for (const auto& path : recommendation.paths) {
            out << "    " << Terminal::display(path) << '\n';
        }
    }
    for (const auto& recommendation : excluded) {
        out << "  "
            << style.dim("Excluded: " + recommendation.title + " (" +
                         std::string(title(recommendation.kind)) + ")")
            << '\n';
    }
    out << "Review first items are always excluded.\n";
}

void writeCleanupReport(std::ostream& out, const CleanupReport& report, const Style& style) {
    bool movedAny = false;
    for (const auto& result : report.results) {
        const std::string label =
            result.succeeded ? style.color(green, "Succeeded") : style.color(red, "Failed");
        out << label << ": " << style.bold(result.title) << " \u2014 "
            << Terminal::display(result.detail) << '\n';
        for (const auto& failure : result.failedFolders) {
            out << "    Stayed: " << Terminal::display(failure.path) << " \u2014 "
                << Terminal::display(failure.reason) << '\n';
        }
        movedAny = movedAny || result.movedFolders > 0;
    }
    if (movedAny) out << "Space comes back only when the Trash is emptied.\n";
}

}  // namespace veldan::cli
