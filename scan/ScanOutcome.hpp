#pragma once
// A finished scan: the tree, the volume's space (when it could be read) and the snapshot
// built from both.

#include <optional>

#include "scan/DiskNode.hpp"
#include "scan/ScanSnapshot.hpp"
#include "scan/VolumeSpace.hpp"

namespace veldan {

struct ScanOutcome {
    DiskNode root;
    std::optional<VolumeSpace> volume;
    ScanSnapshot snapshot;
};

}  // namespace veldan
