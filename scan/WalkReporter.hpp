#pragma once
// Where a subtree walk sends its throttled counts and partial nodes.
//
// Contract: called on the walking worker's thread, never under the walker's locks.

#include <cstdint>
#include <string>

#include "scan/DiskNode.hpp"

namespace veldan {

class WalkReporter {
public:
    virtual ~WalkReporter() = default;
    virtual bool wantsPartials() const = 0;
    // Counts so far of the entry under way, and the folder being listed.
    virtual void counts(int64_t folders, int64_t files, const std::string& currentItem) = 0;
    // The latest partial node of the entry under way.
    virtual void partial(DiskNode node) = 0;
};

}  // namespace veldan
