#include "devcleanup/DevCleanupReport.hpp"

#include <algorithm>

namespace veldan {

int64_t DevCleanupReport::movedCount() const {
    return std::count_if(moves.begin(), moves.end(), [](const auto& move) { return move.moved; });
}

std::vector<std::string> DevCleanupReport::movedPaths() const {
    std::vector<std::string> paths;
    for (const auto& move : moves) {
        if (move.moved) paths.push_back(move.path);
    }
    return paths;
}

}  // namespace veldan
