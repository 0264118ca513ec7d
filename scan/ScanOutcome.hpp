#pragma once
// A finished scan: the snapshot (which holds the tree) and the volume's space when it
// could be read. The tree is kept once, inside the snapshot: it can be large.

#include <optional>

#include "scan/DiskNode.hpp"
#include "scan/ScanSnapshot.hpp"
#include "scan/VolumeSpace.hpp"

namespace veldan {

struct ScanOutcome {
    ScanSnapshot snapshot;
    std::optional<VolumeSpace> volume;

    const DiskNode& root() const { return snapshot.root; }
};

}  // namespace veldan
