#pragma once
// How the command line shows recommendations, a cleanup plan and a cleanup report.
// Names and paths go through Terminal::display, so a hostile folder name can neither
// break a line nor move the cursor.

#include <ostream>
#include <string>
#include <vector>

#include "cli/JsonText.hpp"
#include "cli/Terminal.hpp"
#include "recommendations/CleanupReport.hpp"
#include "scan/Recommendation.hpp"
#include "scan/ScanSnapshot.hpp"

namespace veldan::cli {

// Safe items, then review items, each with id, title, size, subtitle and folders, then
// the combined size counting overlapping folders once.
void writeRecommendations(std::ostream& out, const std::string& root,
                          const std::vector<Recommendation>& recommendations,
                          const ScanSnapshot& snapshot, const Style& style);

Json recommendationsJson(const std::string& root,
                         const std::vector<Recommendation>& recommendations,
                         const ScanSnapshot& snapshot);

// What `veldan clean` is about to do: each item with its action and folders.
void writeCleanupPlan(std::ostream& out, const std::string& root,
                      const std::vector<Recommendation>& safe,
                      const std::vector<Recommendation>& excluded, const Style& style);

// Each item succeeded or not with its detail, and the folders that stayed with reasons.
void writeCleanupReport(std::ostream& out, const CleanupReport& report, const Style& style);

}  // namespace veldan::cli
