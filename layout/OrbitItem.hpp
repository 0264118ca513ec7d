#pragma once
// One sector of the orbit ring: a child of the shown folder and the part of the turn it
// covers, as fractions from 0 at the top running clockwise.
//
// Contract: `node` points into the tree the items were computed from and is valid only
// while that tree lives unchanged.

#include "scan/DiskNode.hpp"

namespace veldan {

struct OrbitItem {
    const DiskNode* node = nullptr;
    double start = 0;
    double end = 0;  // at most 1
};

}  // namespace veldan
