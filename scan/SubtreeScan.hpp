#pragma once
// One folder measured by itself (the explore action on a folder of the map).

#include <cstdint>

#include "scan/DiskNode.hpp"

namespace veldan {

struct SubtreeScan {
    DiskNode node;
    int64_t folders = 0;
    int64_t files = 0;
};

}  // namespace veldan
