#pragma once
// What `veldan recommend` and `veldan clean` share: a fresh scan of the folder with a
// progress line (or its saved map), the recommendations built from it, and the ones
// picked by id.
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
    std::vector<Recommendation> selected;  // in list order
};

// The recommendations named by `ids` (all of them when `ids` is empty) of a fresh scan of
// `path`, or of its saved map; or the exit status to end with, after the reason (an
// unusable folder, an unknown id, an interrupted scan) was printed.
std::variant<ScannedRecommendations, int> scanForRecommendations(
    const std::string& path, const std::vector<std::string>& ids, bool fromSavedMap = false);

}  // namespace veldan::cli
