#pragma once
// One cleanup recommendation built from a finished scan. A shared value type: the
// recommendation builder makes them, the cleanup executor acts on the safe ones, and
// reports and digests list them.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "scan/RecommendationKind.hpp"
#include "scan/ScanFolderIdentity.hpp"

namespace veldan {

struct Recommendation {
    std::string id;  // stable rule identifier ("npm", "next", ...)
    std::string title;
    std::string subtitle;
    int64_t bytes = 0;  // allocated bytes covered (sum over paths)
    RecommendationKind kind = RecommendationKind::review;
    std::vector<std::string> paths;  // absolute folder paths covered
    std::string command;             // shell text; see the builder for its guards
    std::map<std::string, ScanFolderIdentity> folderIdentities;  // read when built

    friend bool operator==(const Recommendation&, const Recommendation&) = default;
};

}  // namespace veldan
