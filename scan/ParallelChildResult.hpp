#pragma once
// What one worker hands back for one top-level entry of the scanned folder. Issues and
// largest files go straight to the scan's shared collectors.

#include <cstdint>
#include <optional>

#include "scan/DiskNode.hpp"

namespace veldan {

struct ParallelChildResult {
    std::optional<DiskNode> node;  // empty when the entry was not entered (other device, seen)
    int64_t bytes = 0;
    int64_t folders = 0;
    int64_t files = 0;
};

}  // namespace veldan
