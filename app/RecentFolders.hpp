#pragma once
// The folders offered under "Open Recent": newest first, each once, never the startup
// disk (it has its own command), at most five.
//
// Contract: pure functions.

#include <cstddef>
#include <string>
#include <vector>

namespace veldan {

class RecentFolders {
public:
    static constexpr size_t limit = 5;
    static constexpr const char* preferenceKey = "recentScanFolders";

    // `list` with `path` moved to the front (exact text comparison), cut to the limit;
    // `list` unchanged for "/".
    static std::vector<std::string> remembering(const std::vector<std::string>& list,
                                                const std::string& path);
};

}  // namespace veldan
