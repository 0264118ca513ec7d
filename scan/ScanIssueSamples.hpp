#pragma once
// The sampling rule for unreadable paths: at most 20 paths with a reason each, where
// a full sample still shows one example of every reason the user can act on.

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace veldan {

class ScanIssueSamples {
public:
    static constexpr size_t limit = 20;

    static bool isActionable(std::string_view reason);

    // Adds `path` with `reason` to the caller's containers: appended while there is room;
    // when full, an actionable reason not yet shown replaces the first sample whose reason
    // is not actionable. A path already sampled is left alone.
    static void add(const std::string& path, std::string_view reason,
                    std::vector<std::string>& paths, std::map<std::string, std::string>& reasons);
};

}  // namespace veldan
