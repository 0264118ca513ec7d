#pragma once
// What a move of duplicate copies to Trash did, file by file.

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace veldan {

struct DuplicateTrashOutcome {
    std::string path;
    bool moved = false;
    std::string detail;  // "Moved to Trash", or the one-sentence reason the file stayed
};

struct DuplicateTrashReport {
    std::string id;                               // fresh per run
    std::vector<DuplicateTrashOutcome> outcomes;  // in processing order
    int64_t logicalBytesMoved = 0;                // logical sizes of the moved files, saturating

    int64_t movedCount() const;
    std::set<std::string> movedPaths() const;
    // "Copies moved to Trash" when every outcome moved, otherwise "Some copies stayed put".
    std::string title() const;
};

}  // namespace veldan
