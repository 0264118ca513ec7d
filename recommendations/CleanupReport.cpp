#include "recommendations/CleanupReport.hpp"

#include <algorithm>

namespace veldan {

int64_t CleanupReport::succeededCount() const {
    return std::count_if(results.begin(), results.end(),
                         [](const CleanupItemResult& result) { return result.succeeded; });
}

int64_t CleanupReport::partialCount() const {
    return std::count_if(results.begin(), results.end(), [](const CleanupItemResult& result) {
        return !result.succeeded && result.movedFolders > 0;
    });
}

std::vector<std::string> CleanupReport::movedPaths() const {
    std::vector<std::string> paths;
    for (const auto& result : results) {
        paths.insert(paths.end(), result.movedPaths.begin(), result.movedPaths.end());
    }
    return paths;
}

int64_t CleanupReport::completedToolCount() const {
    return std::count_if(results.begin(), results.end(), [](const CleanupItemResult& result) {
        return result.succeeded && result.totalFolders == 0;
    });
}

}  // namespace veldan
