#pragma once
// A measured generated folder: the candidate's identity plus what measuring found.

#include <cstdint>

#include "devcleanup/DevCandidate.hpp"
#include "scan/FileTreeFingerprint.hpp"

namespace veldan {

struct DevCleanupItem : DevCandidate {
    int64_t bytes = 0;            // allocated bytes of everything inside, links counted once
    int64_t unreadableItems = 0;  // entries inside that could not be read or measured
    // Every entry inside as it was measured; the move to Trash walks the folder again and
    // compares, so a folder whose contents changed since is never moved.
    FileTreeFingerprint contentsFingerprint;

    friend bool operator==(const DevCleanupItem&, const DevCleanupItem&) = default;
};

}  // namespace veldan
