#pragma once
// The recent files of the Downloads folder, and moving one of them to the Trash.
//
// The folder is the XDG Downloads folder with symbolic links resolved (people move it to a
// larger disk with a link), so every listed path names the folder it really lies in. Only
// its top level is read; only regular files count (links, folders, FIFOs and sockets are
// not downloads), and hidden ones (".~lock…", ".directory") are left out as the file
// manager leaves them out. A file counts when it was added (born, or else its status
// changed) or modified in the last 30 days.
//
// Contract: stateless, thread-safe; blocks the caller for one listing or one move.
// Failures are values: a missing or unreadable folder lists nothing, a refused move says
// why in one sentence.

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "activity/TrackedDownload.hpp"

namespace veldan {

struct DownloadMoveOutcome {
    static constexpr const char* errorDomain = "VeldanTracker";
    bool moved = false;
    std::string trashedPath;  // where the file lies now, when moved
    std::string reason;       // why it stayed, when not moved
};

class DownloadInventory {
public:
    using Clock = std::chrono::system_clock;
    static constexpr std::chrono::seconds window{2'592'000};  // 30 days
    static constexpr size_t maximumCount = 80;

    static constexpr const char* notInsideReason =
        "This item is no longer directly inside Downloads.";
    static constexpr const char* changedReason =
        "This download changed. Refresh the list before moving it.";

    // The Downloads folder now, links resolved.
    static std::string folder();

    // The files of `downloads` (default: folder()) added or modified since `now` less 30
    // days, the most recent first (by the later of the two dates, then by path), at most 80.
    static std::vector<TrackedDownload> collect(Clock::time_point now,
                                                const std::string& downloads = {});

    // Moves `download` to the Trash after proving that it still lies directly inside the
    // Downloads folder and is the very file listed (device, inode, birth time, size and
    // modification time, read without following a link).
    static DownloadMoveOutcome moveToTrash(const TrackedDownload& download);
};

}  // namespace veldan
