#pragma once
// What `veldan recommend` and `veldan clean` share: a fresh scan of the folder with a
// progress line, the recommendations built from it, and picking recommendations by id.
//
// Contract: runs on the caller's thread; problems are printed to standard error as one
// sentence and come back as the exit status.

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "scan/Recommendation.hpp"
#include "scan/ScanCancellation.hpp"
#include "scan/ScanSnapshot.hpp"

namespace veldan::cli {

struct ScannedRecommendations {
    std::string root;  // absolute, standardized
    ScanSnapshot snapshot;
    std::vector<Recommendation> recommendations;
};

// The recommendations of a fresh scan of `path` (or of its saved map), or the exit status
// to end with (after the reason was printed).
std::variant<ScannedRecommendations, int> scanForRecommendations(const std::string& path,
                                                                 bool fromSavedMap = false);

// The recommendations named by `ids`, in list order; all of them when `ids` is empty.
// An unknown id comes back as the sentence to show.
std::variant<std::vector<Recommendation>, std::string> selectRecommendations(
    const std::vector<Recommendation>& recommendations, const std::vector<std::string>& ids);

}  // namespace veldan::cli
