#pragma once
// What a move of AI caches and logs to the Trash did, location by location, and the
// texts the report is shown with.

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace veldan {

enum class AIStorageCleanupPhase { checking, moving, finished };

struct AIStorageCleanupMove {
    std::string path;  // identifies the line
    std::string label;
    bool moved = false;
    std::string detail;  // "Moved to Trash", or the one-sentence reason it stayed
    int64_t bytes = 0;   // the location's measured size
};

struct AIStorageCleanupReport {
    static constexpr const char* refreshPrompt =
        "Refresh AI storage for current sizes. The disk map will show changes after its next "
        "scan.";

    std::string id;                           // fresh per run
    std::vector<AIStorageCleanupMove> moves;  // in the order processed

    int64_t movedCount() const;
    std::set<std::string> movedPaths() const;
    int64_t logicalBytesMoved() const;  // measured sizes of the moved locations, saturating
    // "Caches & logs moved to Trash" when every location moved, else "Some locations stayed
    // put".
    std::string title() const;
    // One sentence under the title: how many locations moved and their measured size.
    std::string detail() const;
};

}  // namespace veldan
