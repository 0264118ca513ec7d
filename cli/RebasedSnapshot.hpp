#pragma once
// A snapshot moved from one name of its folder to another: every path at or below `from`
// is named below `to` instead. Used to act on a folder that was measured through a
// symbolic link by its resolved path; the walk never follows links inside the folder, so
// each item keeps its place.

#include <string_view>

#include "scan/ScanSnapshot.hpp"

namespace veldan::cli {

ScanSnapshot rebasedSnapshot(ScanSnapshot snapshot, std::string_view from, std::string_view to);

}  // namespace veldan::cli
