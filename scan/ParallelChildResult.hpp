#pragma once
// What a worker hands back for one subfolder of the scanned folder. Counts, issues and
// largest files go straight to the scan's shared collectors.

#include <cstdint>
#include <optional>

#include "scan/DiskNode.hpp"

namespace veldan {

struct ParallelChildResult {
    std::optional<DiskNode> node;  // empty when the entry was not entered (other device, seen)
    int64_t bytes = 0;
};

}  // namespace veldan
