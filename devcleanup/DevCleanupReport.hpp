#pragma once
// What a move of generated folders to the Trash did, folder by folder.

#include <cstdint>
#include <string>
#include <vector>

namespace veldan {

// What is happening to the folder at hand, reported with the progress.
enum class DevCleanupMovePhase {
    checking = 0,
    moving = 1,
    finished = 2,
};

struct DevCleanupMove {
    std::string path;
    bool moved = false;
    std::string detail;  // "Moved to Trash", or the one-sentence reason the folder stayed
};

struct DevCleanupReport {
    std::string id;                     // fresh per run
    std::vector<DevCleanupMove> moves;  // one per selected folder, in processing order
    int64_t bytesMoved = 0;             // measured bytes of the moved folders, saturating

    int64_t movedCount() const;
    std::vector<std::string> movedPaths() const;
};

}  // namespace veldan
