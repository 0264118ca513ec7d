#pragma once
// "Rescan This Folder": the map with one of its folders replaced by a fresh scan of just
// that folder. The folder's node, its discovered folders, largest files and unreadable
// samples are taken from the new scan; every parent's size moves by the difference and
// its children are ordered again. When the folder is not a node of the map (it is folded
// into "Other" or lies inside a folder measured whole) there is nothing to replace.
//
// The visit counts stay those of the whole scan (the earlier scan's share of them is not
// known per folder), and so does `finishedAt`, so a saved map marked outdated after it
// stays outdated.
//
// Contract: a pure function.

#include <optional>

#include "scan/ScanSnapshot.hpp"

namespace veldan {

std::optional<ScanSnapshot> replacingFolder(const ScanSnapshot& map, const ScanSnapshot& folder);

}  // namespace veldan
