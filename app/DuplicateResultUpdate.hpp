#pragma once
// A duplicate result after some of its copies went to the Trash: the moved files leave
// their groups, groups left with a single copy disappear, and the totals and revision are
// new so that filters and views notice. Groups keep the result's order (most extra bytes
// first, then by id); everything else stays as it was.
//
// Contract: a pure function.

#include <set>
#include <string>

#include "duplicates/DuplicateGroup.hpp"

namespace veldan {

DuplicateScanResult withoutMovedCopies(const DuplicateScanResult& result,
                                       const std::set<std::string>& movedPaths);

}  // namespace veldan
